#include "plugin/lazytimer.h"

#include <QTimerEvent>

namespace canservice {

void LazyTimer::start()
{
    mDue = Clock::now() + std::chrono::milliseconds(interval());
    mRunning = true;
    // A wake-up on its way may be for a longer interval than the present one.
    if (!mWakeUp.isActive() || mDue < mWakesAt)
        wakeUpIn(interval(), timerType());
}

void LazyTimer::start(int interval)
{
    setInterval(interval);
    start();
}

int LazyTimer::remainingTime() const
{
    using namespace std::chrono;
    return mRunning ? qMax(0, static_cast<int>(ceil<milliseconds>(mDue - Clock::now()).count()))
                    : -1;
}

void LazyTimer::timerEvent(QTimerEvent *)
{
    mWakeUp.stop();
    if (!mRunning)
        return;

    // A restart has moved the time-out, or a coarse timer ran out early.
    if (const int rest = remainingTime(); rest > 0) {
        wakeUpIn(rest, Qt::PreciseTimer);
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

void LazyTimer::wakeUpIn(int milliseconds, Qt::TimerType accuracy)
{
    mWakesAt = Clock::now() + std::chrono::milliseconds(milliseconds);
    mWakeUp.start(milliseconds, accuracy, this);
}

} // namespace canservice
