#include "bench/screen/unixsignals.h"

#include <QSocketNotifier>

#include <sys/signalfd.h>
#include <unistd.h>

namespace bench {

UnixSignals::UnixSignals(std::initializer_list<int> numbers, QObject *parent)
    : QObject(parent)
{
    sigset_t caughtSignals;
    sigemptyset(&caughtSignals);
    for (const int number : numbers)
        sigaddset(&caughtSignals, number);
    mDescriptor = signalfd(-1, &caughtSignals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (mDescriptor < 0)
        return; // The signals do what they do by default.
    pthread_sigmask(SIG_BLOCK, &caughtSignals, &mBefore);
    auto *notifier = new QSocketNotifier(mDescriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { onReadable(); });
}

UnixSignals::~UnixSignals()
{
    if (mDescriptor < 0)
        return;
    while (next() != 0) {
        // What came too late for the event loop shall not end the program now.
    }
    pthread_sigmask(SIG_SETMASK, &mBefore, nullptr);
    close(mDescriptor);
}

int UnixSignals::next()
{
    signalfd_siginfo info;
    return read(mDescriptor, &info, sizeof info) == sizeof info ? static_cast<int>(info.ssi_signo)
                                                                : 0;
}

void UnixSignals::onReadable()
{
    const int number = next();
    if (number == 0)
        return;
    mLatest = number;
    emit caught(number);
}

} // namespace bench
