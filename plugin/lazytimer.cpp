#include "plugin/lazytimer.h"

#include <QTimerEvent>

void LazyTimer::start()
{
    mDue = Clock::now() + std::chrono::milliseconds(interval());
    mRunning = true;
    // A wake-up on its way may be for a longer interval than the present one.
    if (!mWakeUp.isActive() || mDue < mWakesAt)
        wakeUpIn(interval());
}

void LazyTimer::start(int interval)
{
    setInterval(interval);
    start();
}

int LazyTimer::remainingTime() const
{
    using namespace std::chrono;
    return mRunning
               ? qMax(0, static_cast<int>(duration_cast<milliseconds>(mDue - Clock::now()).count()))
               : -1;
}

void LazyTimer::timerEvent(QTimerEvent *)
{
    mWakeUp.stop();
    if (!mRunning)
        return;

    // Coarse timers run out up to 5 % early; going to sleep again for that rest would gain nothing.
    const int rest = remainingTime();
    if (rest > interval() / 20) {
        wakeUpIn(rest);
        return;
    }

    if (isSingleShot())
        stop();
    else
        start();
    // QTimer alone may emit timeout(): it does for an event with its own id. Last, because a slot
    // may delete the timer.
    QTimerEvent due(timerId());
    QTimer::timerEvent(&due);
}

void LazyTimer::wakeUpIn(int milliseconds)
{
    mWakesAt = Clock::now() + std::chrono::milliseconds(milliseconds);
    mWakeUp.start(milliseconds, this);
}
