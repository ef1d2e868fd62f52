#include "bench/wire/linespoiler.h"

namespace bench {

namespace {

constexpr int kHeldMs = 500;

bool isOfBytes(Fault fault) { return fault <= Fault::Flood; }

} // namespace

LineSpoiler::LineSpoiler(quint32 seed, QObject *parent)
    : QObject(parent)
    , mRandom(seed)
{
    mHeldTmr.setSingleShot(true);
    mHeldTmr.setInterval(kHeldMs);
    connect(&mHeldTmr, &QTimer::timeout, &mCutter, &LineCutter::finish);
    connect(&mCutter, &LineCutter::item, this, &LineSpoiler::onItem);
}

QString LineSpoiler::setPlan(const FaultPlan &plan)
{
    for (int i = 0; i < kFaultCount; ++i)
        if (plan.rate(faultInfo(i).fault) > 0 && !isOfBytes(faultInfo(i).fault))
            return QLatin1String(faultInfo(i).name);
    mPlan = plan;
    return {};
}

void LineSpoiler::feed(const QByteArray &bytes, qint64 time)
{
    mHeldTmr.start();
    mCutter.feed(bytes, time);
}

void LineSpoiler::onItem(const LineItem &item)
{
    if (item.kind != LineItem::Frame && item.kind != LineItem::BadChecksum)
        return emit passed(item.bytes);
    QByteArray frame = canbox::buildFrame(item.dataType, item.bytes);
    if (item.kind == LineItem::BadChecksum)
        frame[frame.size() - 1] = static_cast<char>(item.received);
    emit passed(spoiled(frame));
}

QByteArray LineSpoiler::spoiled(const QByteArray &frame)
{
    QByteArray before, damaged = frame;
    for (int i = 0; i < kFaultCount; ++i) {
        const Fault fault = faultInfo(i).fault;
        if (!mRandom.happens(mPlan.rate(fault)))
            continue;
        ++mCounts[static_cast<std::size_t>(i)];
        damaged = damage(fault, damaged, mRandom);
        before += intrusion(fault, mRandom);
    }
    return before + damaged;
}

} // namespace bench
