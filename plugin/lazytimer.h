#pragma once

#include <QBasicTimer>
#include <QTimer>

#include <chrono>

namespace canservice {

/// A QTimer that may be started and stopped with every frame.
///
/// QTimer leaves and enters the event loop's list of timers at each start(), which allocates. Here
/// start() and stop() note the time and leave the event loop alone; when its timer runs out, the
/// note says whether the time-out is due, moved, or off.
///
/// A time-out is never early, where a coarse QTimer may be, and late by what that may be late: 5 %
/// of the interval, from 20 s on half a second.
class LazyTimer : public QTimer
{
public:
    using QTimer::QTimer;

    /// Starts or restarts the timer with its interval.
    void start();
    /// Sets the interval, in milliseconds, and starts or restarts the timer.
    void start(int interval);
    void stop() { mRunning = false; }
    bool isActive() const { return mRunning; }
    /// Milliseconds until the time-out, 0 when overdue, -1 when the timer is stopped.
    int remainingTime() const;

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    using Clock = std::chrono::steady_clock;

    void wakeUpIn(int milliseconds, Qt::TimerType accuracy);

    Clock::time_point mDue;
    Clock::time_point mWakesAt; ///< Of a wake-up on its way.
    QBasicTimer mWakeUp;
    bool mRunning = false;
};

} // namespace canservice
