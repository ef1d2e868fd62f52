// Ctrl-C and SIGTERM as an event.
#pragma once

#include <QObject>

namespace bench {

/// Takes SIGINT, SIGTERM and SIGHUP out of the process's hands, from construction on: they arrive
/// in the event loop. To be made before any thread.
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    explicit UnixSignals(QObject *parent = nullptr);
    ~UnixSignals() override;

    /// The latest that was caught; 0 for none.
    int latest() const { return mLatest; }

signals:
    /// \param number as in <csignal>; the exit code of a program that ends on it is 128 + number.
    void caught(int number);

private:
    void onReadable();

    int mDescriptor = -1;
    int mLatest = 0;
};

} // namespace bench
