#include "bench/box/faultinjector.h"

#include "bench/box/boxend.h"

#include <QTimer>

#include <algorithm>

namespace bench {

namespace {

constexpr int kSplitPause = 200; // ms
constexpr int kSilent = 3000;    // ms
constexpr int kNoAnswer = 35000; // ms: longer than the service waits before it gives up
constexpr int kStall = 1000;     // ms
constexpr int kUnplugged = 1000; // ms

} // namespace

FaultInjector::FaultInjector(BoxEnd *end, quint32 seed, QObject *parent)
    : QObject(parent)
    , mEnd(end)
    , mRandom(seed)
{
    VirtualBox &box = mEnd->box();
    box.setFrameFilter([this](const QByteArray &frame) { return onFrame(frame); });
    box.setChunkFilter([this](const QByteArray &bytes) { return onChunk(bytes); });
}

void FaultInjector::setPlan(const FaultPlan &plan)
{
    mPlan = plan;
    mUsed = true;
}

void FaultInjector::inject(Fault fault)
{
    mDemanded.append(fault);
    mUsed = true;
}

bool FaultInjector::isExpected() const
{
    return !mDemanded.isEmpty() || std::any_of(mPlan.rates.begin(), mPlan.rates.end(),
                                               [](double rate) { return rate > 0; });
}

void FaultInjector::onWrite()
{
    if (mPullAtWrite)
        pullCable();
    mPullAtWrite = false;
}

bool FaultInjector::isDue(Fault fault)
{
    return mDemanded.removeOne(fault) || mRandom.happens(mPlan.rate(fault));
}

// The line is idle when a frame begins, so the frame's first byte is the next to pass.
QByteArray FaultInjector::onFrame(const QByteArray &frame)
{
    QByteArray before;
    QByteArray damaged = frame;
    for (int i = 0; i < kFaultCount; ++i) {
        const Fault fault = faultInfo(i).fault;
        if (!isDue(fault))
            continue;
        ++mCounts[static_cast<std::size_t>(i)];
        damaged = damage(fault, damaged, mRandom);
        before += intrusion(fault, mRandom);
        act(fault, before.size() + damaged.size());
    }
    return mSilences > 0 ? QByteArray() : before + damaged;
}

void FaultInjector::act(Fault fault, int frameSize)
{
    switch (fault) {
    case Fault::SplitWrite:
        mSplitAt = mPassed + frameSize / 2;
        break;
    case Fault::Silence:
        silence(kSilent);
        break;
    case Fault::NoAnswer:
        silence(kNoAnswer);
        break;
    case Fault::StalledRead:
        mEnd->terminal().setReading(false);
        endLater(kStall, [this] { mEnd->terminal().setReading(true); });
        break;
    case Fault::Unplug:
        pullCable();
        break;
    case Fault::UnplugMidFrame:
        mPullAt = mPassed + frameSize / 2;
        break;
    case Fault::UnplugMidWrite:
        mPullAtWrite = true;
        break;
    default:
        break;
    }
}

void FaultInjector::silence(int milliseconds)
{
    ++mSilences;
    mEnd->box().setSilent(true);
    endLater(milliseconds, [this] {
        if (--mSilences == 0)
            mEnd->box().setSilent(false);
    });
}

void FaultInjector::endLater(int milliseconds, std::function<void()> end)
{
    ++mOngoing;
    QTimer::singleShot(milliseconds, this, [this, end = std::move(end)] {
        --mOngoing;
        end();
    });
}

// From the event loop, because what asks for it is in the middle of sending or receiving.
void FaultInjector::pullCable()
{
    QTimer::singleShot(0, this, [this] {
        if (!mEnd->terminal().isPlugged())
            return;
        mEnd->unplug();
        endLater(kUnplugged, [this] { mEnd->plug(); });
    });
}

QByteArray FaultInjector::onChunk(const QByteArray &bytes)
{
    const qint64 begin = mPassed;
    mPassed += bytes.size();
    if (mHolding) {
        mHeld += bytes;
        return {};
    }
    if (mPullAt >= begin && mPullAt < mPassed) {
        const int kept = static_cast<int>(mPullAt - begin);
        mPullAt = -1;
        pullCable();
        return bytes.left(kept);
    }
    if (mSplitAt >= begin && mSplitAt < mPassed) {
        const int kept = static_cast<int>(mSplitAt - begin);
        mSplitAt = -1;
        mHolding = true;
        mHeld = bytes.mid(kept);
        endLater(kSplitPause, [this] {
            mHolding = false;
            emit mEnd->box().transmit(mHeld);
            mHeld.clear();
        });
        return bytes.left(kept);
    }
    return bytes;
}

} // namespace bench
