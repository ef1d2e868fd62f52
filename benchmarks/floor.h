// The least that a receiver of these frames can do: the same connections, state machine, timers,
// receipt and signals as the service's, and nothing else.
#pragma once

#include "protocol/frame.h"

#include <serialport.h>

#include <QTimer>

/// The floor's connections. A class template cannot declare signals.
class FloorSignals : public QObject
{
    Q_OBJECT

signals:
    void notifyCanbusStatus(int status);
    void dataChanged();

protected slots:
    virtual void onDataReady(QByteArray buf) = 0;
};

/// \tparam RestartedTimer a QTimer, or what the service has in its place for the timers that each
///                        frame starts or stops.
template <typename RestartedTimer>
class Floor final : public FloorSignals
{
public:
    /// \p signalCount of each frame, the link code's among them.
    explicit Floor(int signalCount)
        : mSignalCount(signalCount)
    {
        connect(&mPort, SIGNAL(read(QByteArray)), this, SLOT(onDataReady(QByteArray)));
        mCheckConnectTmr.setInterval(30000);
        mParseOutTmr.setInterval(500);
        mParseOutTmr.setSingleShot(true);
        mPayload.reserve(canbox::kMaxPayload);
    }

    canservice::SerialPort &port() { return mPort; }

private:
    enum State { Idle, AwaitType, AwaitLength, Payload, AwaitChecksum };

    void onDataReady(QByteArray buf) override
    {
        if (mState != Idle && !mParseOutTmr.isActive())
            mParseOutTmr.start();
        const quint8 *const end = canbox::bytesOf(buf) + buf.size();
        for (const quint8 *byte = canbox::bytesOf(buf); byte != end; ++byte)
            takeByte(*byte);
    }

    void takeByte(quint8 byte)
    {
        switch (mState) {
        case Idle:
            if (byte == canbox::kHead)
                mState = AwaitType;
            break;
        case AwaitType:
            mSum = byte;
            mState = AwaitLength;
            break;
        case AwaitLength:
            mRemain = byte;
            mSum += byte;
            mPayload.resize(byte);
            mNext = mPayload.data();
            mState = Payload;
            break;
        case Payload:
            if (mRemain == 0)
                break;
            *mNext++ = static_cast<char>(byte);
            mSum += byte;
            if (--mRemain == 0)
                mState = AwaitChecksum;
            break;
        case AwaitChecksum:
            mState = Idle;
            if (byte == static_cast<quint8>(~mSum))
                acceptFrame();
            break;
        }
    }

    void acceptFrame()
    {
        mPort.writeData(mReceipt, true);
        mParseOutTmr.stop();
        mSendTmr.stop();
        mRequestConnectTmr.stop();
        mCheckConnectTmr.start();
        emit notifyCanbusStatus(3);
        for (int i = 1; i < mSignalCount; ++i)
            emit dataChanged();
    }

    const int mSignalCount;
    canservice::SerialPort mPort;
    RestartedTimer mCheckConnectTmr;
    RestartedTimer mParseOutTmr;
    QTimer mRequestConnectTmr;
    QTimer mSendTmr;
    const QByteArray mReceipt{1, static_cast<char>(canbox::kReceiptGood)};
    QByteArray mPayload;
    char *mNext = nullptr;
    State mState = Idle;
    int mRemain = 0;
    int mSum = 0;
};
