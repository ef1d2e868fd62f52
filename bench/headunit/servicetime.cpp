#include "bench/headunit/servicetime.h"

#include <QCoreApplication>

#include <ctime>
#include <dlfcn.h>
#include <poll.h>

namespace {

bool isVirtual = false;
timespec now;
qint64 passed = 0; // Nanoseconds since the construction.

constexpr qint64 kSecond = 1'000'000'000; // In nanoseconds, as the rest here.
constexpr qint64 kStep = 10'000'000;      // Finer than any timer of the service.

void pass(qint64 nanoseconds)
{
    passed += nanoseconds;
    const qint64 sum = now.tv_nsec + nanoseconds;
    now.tv_sec += static_cast<time_t>(sum / kSecond);
    now.tv_nsec = static_cast<long>(sum % kSecond);
}

} // namespace

// These stand before the system's for every library of the process. The system's clock needs no
// system call.
extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    if (isVirtual && clock == CLOCK_MONOTONIC) {
        *time = now;
        return 0;
    }
    using ClockGetTime = int (*)(clockid_t, timespec *);
    static const auto systems = reinterpret_cast<ClockGetTime>(dlsym(RTLD_NEXT, "clock_gettime"));
    return systems(clock, time);
}

// An event loop that does not wait asks whether something has come in. Nothing does on a
// recording's time, and asking the system costs as much as handling a frame.
extern "C" int ppoll(pollfd *files, nfds_t count, const timespec *timeout, const sigset_t *mask)
{
    if (isVirtual && timeout && timeout->tv_sec == 0 && timeout->tv_nsec == 0) {
        for (nfds_t i = 0; i < count; ++i)
            files[i].revents = 0;
        return 0;
    }
    using Poll = int (*)(pollfd *, nfds_t, const timespec *, const sigset_t *);
    static const auto systems = reinterpret_cast<Poll>(dlsym(RTLD_NEXT, "ppoll"));
    return systems(files, count, timeout, mask);
}

namespace bench {

ServiceTime::ServiceTime()
{
    clock_gettime(CLOCK_MONOTONIC, &now);
    // Coarse timers run out at certain parts of a second: always the same ones this way.
    ++now.tv_sec;
    now.tv_nsec = 0;
    passed = 0;
    isVirtual = true;
}

ServiceTime::~ServiceTime() { isVirtual = false; }

qint64 ServiceTime::nanoseconds() const { return passed; }

void ServiceTime::advance(qint64 microseconds)
{
    qint64 rest = microseconds * 1000;
    do {
        const qint64 step = qMin(rest, kStep);
        pass(step);
        QCoreApplication::processEvents();
        rest -= step;
    } while (rest > 0);
}

void ServiceTime::skip(qint64 microseconds) { pass(microseconds * 1000); }

} // namespace bench
