// Makes recordings of the serial line.
#pragma once

#include "bench/recording/outputfile.h"
#include "bench/recording/trace.h"

#include <QElapsedTimer>
#include <QObject>

namespace bench {

/// Makes a recording while it happens. Each line reaches the file at once, so that a kill loses
/// none.
class TraceRecorder : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// \param port the name for the lines; blanks in it become underscores.
    /// \returns an empty text, or why \p target cannot be written.
    QString start(const OutputTarget &target, const QString &port, const TraceCar &car);
    /// From now on, records what the serial ports of this process read and write.
    void watchPorts();
    /// A chunk that passes now; nothing before start(). One that is too long for a line becomes
    /// several of the same time.
    void record(bool fromBox, const QByteArray &bytes);
    void comment(const QString &text);
    /// Why the recording ended early, such as a full disk; empty while it goes on.
    QString problem() const { return mProblem; }

private:
    void put(const QByteArray &bytes);

    OutputFile mFile;
    QString mProblem;
    QByteArray mPort;  ///< Empty before the start.
    qint64 mStart = 0; ///< Microseconds since 1970; from there on the monotonic clock counts.
    QElapsedTimer mClock;
};

} // namespace bench
