// The decoder box in front of the virtual car.
#pragma once

#include "framereader.h"
#include "linepacer.h"
#include "virtualcar.h"

#include <QElapsedTimer>

#include <functional>
#include <set>

namespace bench {

/// Speaks the box's side of the line: answers requests, follows start and stop, passes commands on
/// to the car and reports by itself what changed there. The line is whatever carries the bytes of
/// transmit() to the host and the host's bytes to receive().
class VirtualBox : public QObject
{
    Q_OBJECT

public:
    explicit VirtualBox(VirtualCar *car, QObject *parent = nullptr);

    /// Bytes from the host, in any pieces.
    void receive(const QByteArray &bytes);

    /// Whether the host has started the box: a stopped box answers requests, but reports nothing by
    /// itself.
    bool isStarted() const { return mStarted; }
    /// The car that the host has selected, 0 to 255; -1 before.
    int carIndex() const { return mCarIndex; }

    /// The text that a version request is answered with.
    void setVersion(const QString &version) { mVersion = version; }
    /// 38400 on a real line; more to pass the traffic of an hour in minutes.
    void setBaudRate(int baudRate) { mPacer.setBaudRate(baudRate); }
    /// A silent box hears everything and sends nothing.
    void setSilent(bool on);

    /// The host is away, for example because the line is unplugged: with its next frame, the whole
    /// car is reported if the box is started.
    void awaitHost() { mAwaitsHost = true; }

    /// Reports what the car has for \p dataType, started or not.
    void report(quint8 dataType);
    /// Reports the whole car, as on every start.
    void reportAll();
    /// Sends a frame that the car knows nothing of.
    void sendFrame(quint8 dataType, const QByteArray &payload);
    /// Puts bytes on the line that are no frame of the box's.
    void sendRaw(const QByteArray &bytes);

    /// Alters what goes out, for the injection of faults: a frame when its turn comes, before it is
    /// cut into chunks, or a chunk when it is due. An empty result sends nothing.
    using Filter = std::function<QByteArray(const QByteArray &)>;
    void setFrameFilter(Filter filter) { mFrameFilter = std::move(filter); }
    void setChunkFilter(Filter filter) { mChunkFilter = std::move(filter); }

    const LineCounts &received() const { return mReader.counts(); }
    const QMap<quint8, qint64> &sent() const { return mSent; } ///< Frames by data type.
    qint64 resent() const { return mResent; }
    qint64 misunderstood() const { return mMisunderstood; } ///< Good frames of no known meaning.

signals:
    void transmit(const QByteArray &bytes);
    /// A frame was put on the line; as it was before any filter saw it.
    void frameSent(quint8 dataType, const QByteArray &frame);

private:
    struct Outgoing
    {
        quint8 dataType;
        QByteArray frame;
        bool resent = false;
        qint64 time = 0; ///< On mClock, when it was put on the line.
    };

    void onFrame(quint8 dataType, const QByteArray &payload);
    void onReceipt(bool good);
    void onReportChanged(quint8 dataType);
    void enqueue(quint8 dataType);
    void enqueue(quint8 dataType, const QByteArray &payload);
    void enqueueChange();
    void sendNext();
    void forgetOldFrames();
    bool setStarted(const QByteArray &payload);
    bool answer(const QByteArray &payload);
    bool selectCar(const QByteArray &payload);

    VirtualCar *const mCar;
    FrameReader mReader;
    LinePacer mPacer;
    QElapsedTimer mClock;
    qint64 mLastByteTime = 0;

    bool mStarted = false;
    bool mSilent = false;
    bool mAwaitsHost = false;
    int mCarIndex = -1;
    QString mVersion = QStringLiteral("VBOX-1.0");

    QList<Outgoing> mQueue;
    std::set<quint8> mChanged; ///< Reports to make when the line is free, after the queue.
    quint8 mLastChange = 0;    ///< The latest of them.
    QTimer mTurnTmr;           ///< Changes of one turn of the event loop are one report.
    QList<Outgoing> mAwaiting; ///< Sent, and without a receipt so far.
    Filter mFrameFilter;
    Filter mChunkFilter;

    QMap<quint8, qint64> mSent;
    qint64 mResent = 0;
    qint64 mMisunderstood = 0;
};

} // namespace bench
