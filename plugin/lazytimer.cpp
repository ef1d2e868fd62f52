#include "plugin/lazytimer.h"

#include <QTimerEvent>

void LazyTimer::start()
{
    mDue = Clock::now() + intervalAsDuration();
    mRunning = true;
    if (!mWakeUp.isActive())
        mWakeUp.start(interval(), this);
}

void LazyTimer::start(int interval)
{
    // A wake-up on its way for another interval might come too late for this one.
    if (interval != this->interval()) {
        mWakeUp.stop();
        setInterval(interval);
    }
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
        mWakeUp.start(rest, this);
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
