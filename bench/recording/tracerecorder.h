// Makes recordings of the serial line.
#pragma once

#include "bench/recording/outputfile.h"
#include "bench/recording/trace.h"

#include <QElapsedTimer>
#include <QObject>

namespace bench {

/// Writes a recording. Each line reaches the file at once, so that a kill loses none.
class TraceWriter
{
public:
    /// \returns an empty text, or what is wrong.
    QString open(const OutputTarget &target);
    /// A chunk that is too long for a line becomes several of the same time.
    void write(const TraceLine &line);
    void comment(const QString &text);
    /// Why the recording ended early, such as a full disk; empty while it goes on.
    QString problem() const { return mProblem; }

private:
    void put(const QByteArray &bytes);

    OutputFile mFile;
    QString mProblem;
};

/// Records what the serial ports of this process read and write.
class TraceRecorder : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// \param port the name for the lines; blanks in it become underscores.
    /// \returns an empty text, or why \p target cannot be written.
    QString start(const OutputTarget &target, const QString &port, const TraceCar &car);
    QString problem() const { return mWriter.problem(); }

private:
    void record(bool fromBox, const QByteArray &bytes);

    TraceWriter mWriter;
    QByteArray mPort;
    qint64 mStart = 0; ///< Microseconds since 1970; from there on the monotonic clock counts.
    QElapsedTimer mClock;
};

} // namespace bench
