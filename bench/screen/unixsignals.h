// Signals of the system as events: Ctrl-C, the end of a session, a reader that is gone.
#pragma once

#include <QObject>

#include <csignal>
#include <initializer_list>

namespace bench {

/// Takes signals out of the process's hands, from construction to destruction: they arrive in the
/// event loop. To be made before any thread.
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    /// \param numbers as in <csignal>. The usual ones ask a program to end; SIGPIPE is among them
    /// because whoever read the output has gone.
    explicit UnixSignals(std::initializer_list<int> numbers = {SIGINT, SIGTERM, SIGHUP, SIGPIPE},
                         QObject *parent = nullptr);
    ~UnixSignals() override;

    /// The latest that was caught; 0 for none.
    int latest() const { return mLatest; }

signals:
    /// \param number as in <csignal>; the exit code of a program that ends on it is 128 + number.
    void caught(int number);

private:
    int next();
    void onReadable();

    int mDescriptor = -1;
    int mLatest = 0;
    sigset_t mBefore{};
};

} // namespace bench
