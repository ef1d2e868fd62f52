// The decoder box in front of the virtual car.
#pragma once

#include "bench/box/linepacer.h"
#include "bench/car/virtualcar.h"
#include "bench/wire/linecutter.h"

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
    VirtualBox(VirtualCar *car, const Clock &clock, QObject *parent = nullptr);

    /// Bytes from the host, in any pieces.
    void receive(const QByteArray &bytes);

    /// Whether the host has started the box: a stopped box answers requests, but reports nothing by
    /// itself.
    bool isStarted() const { return mStarted; }
    /// The car that the host has selected, 0 to 255; -1 before.
    int carIndex() const { return mCarIndex; }
    /// Nothing waits to be sent, is being sent or waits for its receipt.
    bool isQuiet();

    /// The text that a version request is answered with.
    void setVersion(const QString &version) { mVersion = version; }
    /// 38400 on a real line; more to pass the traffic of an hour in minutes.
    void setBaudRate(int baudRate) { mPacer.setBaudRate(baudRate); }
    /// A silent box hears everything and sends nothing. When it speaks again it awaits the host;
    /// if the silence has cut a frame, it reports the whole car once more when the host has given
    /// that frame up.
    void setSilent(bool on);
    bool isSilent() const { return mSilent; }

    /// The host is away, for example because the line is unplugged: with its next frame, the whole
    /// car is reported if the box is started.
    void awaitHost() { mAwaitsHost = true; }
    bool awaitsHost() const { return mAwaitsHost; }
    /// The line was interrupted, perhaps within a frame: the host may still wait for the rest of
    /// it, so the whole car is reported twice when it is back.
    void cutLine();

    /// Reports what the car has for \p type, started or not.
    void report(Inbound type);
    /// Reports the whole car, as on every start.
    void reportAll();
    /// Sends a frame that the car knows nothing of.
    void sendFrame(Inbound type, const QByteArray &payload);
    /// Whether such a frame was the latest of its type.
    bool isForeign(Inbound type) const { return mForeign.count(type) > 0; }
    /// Puts bytes on the line that are no frame of the box's.
    void sendRaw(const QByteArray &bytes);

    /// Alters what goes out, for the injection of faults: a frame when its turn comes, before it is
    /// cut into chunks, or a chunk when it is due. An empty result sends nothing.
    using Filter = std::function<QByteArray(const QByteArray &)>;
    void setFrameFilter(Filter filter) { mFrameFilter = std::move(filter); }
    void setChunkFilter(Filter filter) { mChunkFilter = std::move(filter); }

    const LineCounts &received() const { return mReader.counts(); }
    qint64 receivedBytes() const { return mReceivedBytes; }
    const QMap<quint8, qint64> &sent() const { return mSent; } ///< Frames by data type.
    qint64 resent() const { return mResent; }
    /// What a frame from the host says to box or car; empty for what they do not know.
    static QString meaning(Outbound command, const QByteArray &payload);
    qint64 misunderstood() const { return mMisunderstood; } ///< Good frames of no known meaning.

signals:
    void transmit(const QByteArray &bytes);
    /// A frame was put on the line; as it was before any filter saw it.
    void frameSent(canbox::Inbound type, const QByteArray &payload);
    /// What the host sent, cut; before anything comes of it.
    void heard(const bench::LineItem &item);
    /// A good frame from the host has no meaning to box and car.
    void puzzled(canbox::Outbound command, const QByteArray &payload);

private:
    struct Outgoing
    {
        Inbound type;
        QByteArray payload;
        bool resent = false;
        qint64 time = 0; ///< ms, when it was put on the line.
    };

    void onItem(const LineItem &item);
    void onFrame(Outbound command, const QByteArray &payload);
    void onReceipt(bool good);
    void onReportChanged(Inbound type);
    void enqueue(Inbound type);
    void enqueue(Inbound type, const QByteArray &payload);
    void enqueueChange();
    void sendNext();
    void forgetOldFrames();
    bool setStarted(const QByteArray &payload);
    bool answer(const QByteArray &payload);
    bool selectCar(const QByteArray &payload);

    VirtualCar *const mCar;
    const Clock &mClock;
    LineCutter mReader{LineCutter::Box};
    LinePacer mPacer;

    bool mStarted = false;
    bool mSilent = false;
    bool mCutFrame = false; ///< A silence began within a frame.
    bool mSentRaw = false;  ///< The latest bytes may be the beginning of a frame.
    bool mAwaitsHost = false;
    int mCarIndex = -1;
    QString mVersion = QStringLiteral("VBOX-1.0");

    QList<Outgoing> mQueue;
    std::set<Inbound> mChanged;      ///< Reports to make when the line is free, after the queue.
    Inbound mLastChange = Inbound{}; ///< The latest of them.
    std::set<Inbound> mForeign;
    QTimer mTurnTmr;           ///< Changes of one turn of the event loop are one report.
    QTimer mRecoverTmr;        ///< After a silence.
    QList<Outgoing> mAwaiting; ///< Sent, and without a receipt so far.
    Filter mFrameFilter;
    Filter mChunkFilter;

    QMap<quint8, qint64> mSent;
    qint64 mReceivedBytes = 0;
    qint64 mResent = 0;
    qint64 mMisunderstood = 0;
};

} // namespace bench
