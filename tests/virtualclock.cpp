#include "virtualclock.h"

#include <QCoreApplication>

#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr long kSecond = 1000000000; // ns

// Of this thread: the test's watchdog has a clock of its own.
thread_local bool sStopped = false;
thread_local long long sNow = 0;   // ns, while the clock stands
thread_local long long sAhead = 0; // ns, of the true time otherwise

long long trueTime()
{
    timespec time{};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1LL * kSecond + time.tv_nsec;
}

} // namespace

// Stands before the C library's own for the whole process.
extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    if (clock != CLOCK_MONOTONIC)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    const long long now = sStopped ? sNow : trueTime() + sAhead;
    time->tv_sec = static_cast<time_t>(now / kSecond);
    time->tv_nsec = static_cast<long>(now % kSecond);
    return 0;
}

VirtualClock::VirtualClock()
{
    sNow = ((trueTime() + sAhead) / kSecond + 1) * kSecond;
    sStopped = true;
}

VirtualClock::~VirtualClock()
{
    sAhead = sNow - trueTime();
    sStopped = false;
}

void VirtualClock::pass(int milliseconds)
{
    for (; milliseconds > 0; --milliseconds) {
        skip(1);
        QCoreApplication::processEvents();
    }
}

void VirtualClock::skip(int milliseconds) { sNow += milliseconds * 1000000LL; }
