#include "faultinjector.h"

#include <serialport.h>

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

using canbox::Inbound;
using canservice::SerialMonitor;

constexpr int kSplitPause = 200;       // ms
constexpr int kSilence = 3000;         // ms
constexpr int kNoAnswer = 35000;       // ms: longer than the service waits before it gives up
constexpr int kStall = 1000;           // ms
constexpr int kUnplugged = 1000;       // ms
constexpr double kOpenFrameTime = 0.5; // s that the host waits for the rest of a frame

// Frames that may be on their way at once at the highest speed, with room to spare.
constexpr int kRememberedFrames = 4096;

struct ReportSize
{
    Inbound dataType;
    int size; // -1 for any
};
constexpr ReportSize kReportSizes[] = {
    {Inbound::SteeringWheelKey, 2}, {Inbound::Climate, 10},     {Inbound::RearRadar, 8},
    {Inbound::FrontRadar, 8},       {Inbound::Doors, 7},        {Inbound::UnitSettings, 2},
    {Inbound::Version, -1},         {Inbound::AmbientLight, 2}, {Inbound::VehicleInfo1, 18},
    {Inbound::VehicleInfo2, 5},
};

bool isReport(quint8 dataType, int size)
{
    return std::any_of(std::begin(kReportSizes), std::end(kReportSizes),
                       [=](const ReportSize &row) {
                           return static_cast<quint8>(row.dataType) == dataType &&
                                  (row.size == size || row.size < 0);
                       });
}

} // namespace

FaultInjector::FaultInjector(Session *session, quint32 seed, QObject *parent)
    : QObject(parent)
    , mSession(session)
    , mRandom(seed)
{
    VirtualBox &box = mSession->box();
    box.setFrameFilter([this](const QByteArray &frame) { return onFrame(frame); });
    box.setChunkFilter([this](const QByteArray &bytes) { return onChunk(bytes); });
    connect(&mSession->terminal(), &PseudoTerminal::received, this, [this] {
        if (mPullAtWrite)
            pullCable();
        mPullAtWrite = false;
    });
    connect(&mReader, &FrameReader::frame, this, &FaultInjector::check);
    connect(SerialMonitor::instance(), &SerialMonitor::received, this, &FaultInjector::onReceived);
}

FaultInjector::~FaultInjector()
{
    mSession->box().setFrameFilter({});
    mSession->box().setChunkFilter({});
}

QVector<QPair<QString, qint64>> FaultInjector::summary() const
{
    QVector<QPair<QString, qint64>> rows;
    for (int i = 0; i < kFaultCount; ++i)
        if (mCounts[static_cast<std::size_t>(i)] > 0)
            rows.append({QLatin1String(faultInfo(i).name), mCounts[static_cast<std::size_t>(i)]});
    rows.append({QStringLiteral("reports taken"), mChecked});
    rows.append({QStringLiteral("reports taken, never sent"), mUnseen});
    return rows;
}

bool FaultInjector::isDue(Fault fault)
{
    return mDemanded.removeOne(fault) || mRandom.happens(mPlan.rate(fault));
}

// The line is idle when a frame begins, so the frame's first byte is the next to pass.
QByteArray FaultInjector::onFrame(const QByteArray &frame)
{
    remember(frame);
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

void FaultInjector::remember(const QByteArray &frame)
{
    mSent.enqueue(frame);
    ++mTimesSent[frame];
    if (mSent.size() <= kRememberedFrames)
        return;
    const auto oldest = mTimesSent.find(mSent.dequeue());
    if (--*oldest == 0)
        mTimesSent.erase(oldest);
}

void FaultInjector::act(Fault fault, int frameSize)
{
    switch (fault) {
    case Fault::SplitWrite:
        mSplitAt = mPassed + frameSize / 2;
        break;
    case Fault::Silence:
        silence(kSilence);
        break;
    case Fault::NoAnswer:
        silence(kNoAnswer);
        break;
    case Fault::StalledRead:
        mSession->terminal().setReading(false);
        endLater(kStall, [this] { mSession->terminal().setReading(true); });
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
    mSession->box().setSilent(true);
    endLater(milliseconds, [this] {
        if (--mSilences == 0)
            mSession->box().setSilent(false);
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
        if (!mSession->terminal().isPlugged())
            return;
        mSession->unplug();
        endLater(kUnplugged, [this] { mSession->plug(); });
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
            mSession->terminal().write(mHeld);
            mHeld.clear();
        });
        return bytes.left(kept);
    }
    return bytes;
}

void FaultInjector::onReceived(const QByteArray &bytes)
{
    const double now = mSession->seconds();
    if (mGiveUpAt >= 0 && now >= mGiveUpAt) {
        mReader.reset();
        mSwallowing = false;
        mGiveUpAt = -1;
    }
    if (mGiveUpAt < 0 && (mSwallowing || mReader.isFrameOpen()))
        mGiveUpAt = now + kOpenFrameTime;
    if (!mSwallowing)
        mReader.feed(bytes);
}

void FaultInjector::check(quint8 dataType, const QByteArray &payload)
{
    // The host takes what follows a frame of length 0 for its payload.
    if (payload.isEmpty()) {
        mSwallowing = true;
        return;
    }
    mGiveUpAt = -1;
    if (!isReport(dataType, payload.size()))
        return;
    ++mChecked;
    if (!mTimesSent.contains(canbox::buildFrame(dataType, payload)))
        ++mUnseen;
}

} // namespace bench
