// Lets bytes out at the speed of the serial line.
#pragma once

#include "bench/wire/clock.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

namespace bench {

/// A transmitter at a given speed, 10 bits a byte. While it is busy, each byte is due at a time
/// counted from the first byte, so that late timers do not add up.
class LinePacer : public QObject
{
    Q_OBJECT

public:
    LinePacer(int baudRate, const Clock &clock, QObject *parent = nullptr);

    /// To be set while the line is idle.
    void setBaudRate(int baudRate) { mBytesPerSecond = baudRate / 10; }
    /// Appends to what is waiting.
    void send(const QByteArray &bytes);
    /// Forgets what is waiting.
    void clear();
    bool isIdle() const { return mWaiting.isEmpty(); }
    /// Lets out what is due. A timer does so, too.
    void tick();

signals:
    void chunk(const QByteArray &bytes);
    /// The last byte has gone. What is sent now follows without a gap.
    void drained();

private:
    const Clock &mClock;
    int mBytesPerSecond;
    QTimer mTick;
    qint64 mBegin = 0; ///< When the line became busy.
    qint64 mSent = 0;  ///< Bytes since then.
    QByteArray mWaiting;
};

} // namespace bench
