// Where time comes from.
#pragma once

#include <QElapsedTimer>

namespace bench {

/// Whatever waits or stamps takes one of these, so that tests and recordings can set the time.
class Clock
{
public:
    virtual ~Clock() = default;
    /// Nanoseconds since any moment; never goes back.
    virtual qint64 nanoseconds() const = 0;

    qint64 microseconds() const { return nanoseconds() / 1000; }
    qint64 milliseconds() const { return nanoseconds() / 1'000'000; }
    double seconds() const { return static_cast<double>(nanoseconds()) / 1e9; }
};

/// The system's monotonic clock, from the clock's making on.
class SteadyClock : public Clock
{
public:
    SteadyClock() { mTimer.start(); }
    qint64 nanoseconds() const override { return mTimer.nsecsElapsed(); }

private:
    QElapsedTimer mTimer;
};

/// Time that is set by hand.
class ManualClock : public Clock
{
public:
    qint64 nanoseconds() const override { return mNow; }
    void advance(qint64 nanoseconds) { mNow += nanoseconds; }

private:
    qint64 mNow = 0;
};

} // namespace bench
