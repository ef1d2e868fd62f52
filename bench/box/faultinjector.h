// Puts faults on the line of a box.
#pragma once

#include "bench/wire/linefaults.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QVector>

#include <functional>

namespace bench {

class BoxEnd;

/// Faults of the virtual box, its line and its cable. The bytes depend on the frames, the plan and
/// the seed alone.
class FaultInjector : public QObject
{
    Q_OBJECT

public:
    FaultInjector(BoxEnd *end, quint32 seed, QObject *parent = nullptr);

    void setPlan(const FaultPlan &plan);
    const FaultPlan &plan() const { return mPlan; }
    /// One fault of the given kind, with the next frame of the box.
    void inject(Fault fault);

    /// Whether any fault was ever asked for.
    bool wasUsed() const { return mUsed; }
    /// Bytes that have left the box, damaged or not.
    qint64 bytesPassed() const { return mPassed; }
    /// Whether a fault is going on that ends by itself.
    bool isBusy() const { return mOngoing > 0; }
    /// Whether a fault is still to come.
    bool isExpected() const;

    qint64 count(Fault fault) const { return mCounts[static_cast<std::size_t>(fault)]; }
    /// The kinds of fault that happened, and how often.
    QVector<QPair<QString, qint64>> summary() const { return summaryOf(mCounts); }

    /// The host has written.
    void onWrite();

private:
    QByteArray onFrame(const QByteArray &frame);
    QByteArray onChunk(const QByteArray &bytes);
    bool isDue(Fault fault);
    void act(Fault fault, int frameSize);
    void silence(int milliseconds);
    void endLater(int milliseconds, std::function<void()> end);
    void pullCable();

    BoxEnd *const mEnd;
    FaultRandom mRandom;
    FaultPlan mPlan;
    bool mUsed = false;
    QList<Fault> mDemanded;
    FaultCounts mCounts{};

    qint64 mPassed = 0; ///< Bytes that have left the box.
    qint64 mSplitAt = -1;
    qint64 mPullAt = -1;
    bool mPullAtWrite = false;
    bool mHolding = false;
    QByteArray mHeld;
    int mOngoing = 0;
    int mSilences = 0;
};

} // namespace bench
