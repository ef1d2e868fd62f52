#include "linepacer.h"

namespace bench {

LinePacer::LinePacer(int baudRate, QObject *parent)
    : QObject(parent)
    , mBytesPerSecond(baudRate / 10)
{
    mTick.setTimerType(Qt::PreciseTimer);
    mTick.setInterval(2);
    connect(&mTick, &QTimer::timeout, this, &LinePacer::onTick);
}

void LinePacer::send(const QByteArray &bytes)
{
    mWaiting += bytes;
    if (mTick.isActive() || mWaiting.isEmpty())
        return;
    mSent = 0;
    mClock.start();
    mTick.start();
}

void LinePacer::clear()
{
    mWaiting.clear();
    mTick.stop();
}

void LinePacer::onTick()
{
    const qint64 due = mClock.nsecsElapsed() * mBytesPerSecond / 1'000'000'000;
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
