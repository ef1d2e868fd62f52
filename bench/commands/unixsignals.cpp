#include "unixsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace bench {

UnixSignals::UnixSignals(QObject *parent)
    : QObject(parent)
{
    sigset_t caughtSignals;
    sigemptyset(&caughtSignals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&caughtSignals, number);
    mDescriptor = signalfd(-1, &caughtSignals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (mDescriptor < 0)
        return; // The signals end the program at once, as by default.
    pthread_sigmask(SIG_BLOCK, &caughtSignals, nullptr);
    auto *notifier = new QSocketNotifier(mDescriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { onReadable(); });
}

UnixSignals::~UnixSignals()
{
    if (mDescriptor >= 0)
        close(mDescriptor);
}

void UnixSignals::onReadable()
{
    signalfd_siginfo info;
    if (read(mDescriptor, &info, sizeof info) != sizeof info)
        return;
    mLatest = static_cast<int>(info.ssi_signo);
    emit caught(mLatest);
}

} // namespace bench
