// Puts faults on the line of a session, and watches what the host makes of them.
#pragma once

#include "faults.h"
#include "session.h"

#include <QHash>
#include <QQueue>

namespace bench {

/// Faults of the embedded box, its line and its cable. The bytes depend on the frames, the plan and
/// the seed alone. To be made after Session::open().
///
/// It also keeps the truth: every good frame that reaches the host is looked up among those that
/// the box sent. A checksum that is a sum cannot see all damage, swapped bytes for example; what
/// gets through for that reason is counted.
class FaultInjector : public QObject
{
    Q_OBJECT

public:
    FaultInjector(Session *session, quint32 seed, QObject *parent = nullptr);
    ~FaultInjector() override;

    void setPlan(const FaultPlan &plan) { mPlan = plan; }
    const FaultPlan &plan() const { return mPlan; }
    /// One fault of the given kind, with the next frame of the box.
    void inject(Fault fault) { mDemanded.append(fault); }

    /// Bytes that have left the box, damaged or not.
    qint64 bytesPassed() const { return mPassed; }
    /// Whether a fault is going on that ends by itself.
    bool isBusy() const { return mOngoing > 0; }

    qint64 count(Fault fault) const { return mCounts[static_cast<std::size_t>(fault)]; }
    /// Good frames of a known type and length that reached the host.
    qint64 checkedFrames() const { return mChecked; }
    /// Those of them that the box never sent.
    qint64 unseenDamage() const { return mUnseen; }
    /// What happened and how often: the kinds of fault, and what the host took.
    QVector<QPair<QString, qint64>> summary() const;

private:
    QByteArray onFrame(const QByteArray &frame);
    QByteArray onChunk(const QByteArray &bytes);
    bool isDue(Fault fault);
    void remember(const QByteArray &frame);
    void act(Fault fault, int frameSize);
    void silence(int milliseconds);
    void endLater(int milliseconds, std::function<void()> end);
    void pullCable();
    void onReceived(const QByteArray &bytes);
    void check(quint8 dataType, const QByteArray &payload);

    Session *const mSession;
    FaultRandom mRandom;
    FaultPlan mPlan;
    QList<Fault> mDemanded;
    std::array<qint64, kFaultCount> mCounts{};

    qint64 mPassed = 0; ///< Bytes that have left the box.
    qint64 mSplitAt = -1;
    qint64 mPullAt = -1;
    bool mPullAtWrite = false;
    bool mHolding = false;
    QByteArray mHeld;
    int mOngoing = 0;
    int mSilences = 0;

    FrameReader mReader;   ///< Of what reaches the host.
    double mGiveUpAt = -1; ///< When the host gives up an open frame, in seconds; -1 for no frame.
    bool mSwallowing = false;          ///< After a frame of length 0, until the host gives it up.
    QQueue<QByteArray> mSent;          ///< The latest frames of the box.
    QHash<QByteArray, int> mTimesSent; ///< How often each is among them.
    qint64 mChecked = 0;
    qint64 mUnseen = 0;
};

} // namespace bench
