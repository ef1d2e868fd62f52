// Lines that come in while the program runs.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace bench {

/// Cuts what can be read from a descriptor into lines, in memory that does not grow with it.
class LineInput : public QObject
{
    Q_OBJECT

public:
    /// \param descriptor stays its owner's. \param longest of a line, in bytes.
    LineInput(int descriptor, int longest, QObject *parent = nullptr);

    /// A paused input tells no lines, and after a while its writer has to wait.
    void setPaused(bool on);
    /// Whether ended() was emitted.
    bool hasEnded() const { return mEnded; }

signals:
    /// Without the line end. Each of these may pause the input or, later, end it.
    void line(const QByteArray &line);
    void tooLong(); ///< In place of a line.
    /// No more bytes come; there may be lines to be told.
    void closed();
    /// The last line was told.
    void ended();

private:
    void onReadable();
    void deliver();

    const int mDescriptor;
    const int mLongest;
    QSocketNotifier mNotifier;
    QByteArray mBytes;
    bool mPaused = false;
    bool mTooLong = false; ///< The line that is coming in.
    bool mClosed = false;
    bool mEnded = false;
};

} // namespace bench
