#include "bench/box/linepacer.h"

namespace bench {

LinePacer::LinePacer(int baudRate, const Clock &clock, QObject *parent)
    : QObject(parent)
    , mClock(clock)
    , mBytesPerSecond(baudRate / 10)
{
    mTick.setTimerType(Qt::PreciseTimer);
    mTick.setInterval(2);
    connect(&mTick, &QTimer::timeout, this, &LinePacer::tick);
}

void LinePacer::send(const QByteArray &bytes)
{
    mWaiting += bytes;
    if (mTick.isActive() || mWaiting.isEmpty())
        return;
    mSent = 0;
    mBegin = mClock.nanoseconds();
    mTick.start();
}

void LinePacer::clear()
{
    mWaiting.clear();
    mTick.stop();
}

void LinePacer::tick()
{
    const qint64 due = (mClock.nanoseconds() - mBegin) * mBytesPerSecond / 1'000'000'000;
    while (mSent < due && !mWaiting.isEmpty()) {
        const int size = static_cast<int>(qMin<qint64>(due - mSent, mWaiting.size()));
        const QByteArray bytes = mWaiting.left(size);
        mWaiting.remove(0, size);
        mSent += size;
        emit chunk(bytes);
        if (mWaiting.isEmpty())
            emit drained();
    }
    if (mWaiting.isEmpty())
        mTick.stop();
}

} // namespace bench
