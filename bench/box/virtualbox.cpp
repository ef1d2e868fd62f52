#include "bench/box/virtualbox.h"

#include <utility>

namespace bench {

namespace {

constexpr qint64 kReceiptTimeoutMs = 1000; // A receipt that comes later belongs to another frame.
constexpr int kRecoverMs = 600; // The host gives up an open frame 500 ms after new bytes.

bool isStartOrStop(const QByteArray &payload)
{
    return payload.size() == 1 && canbox::byteAt(payload, 0) <= 1;
}

bool isRequest(const QByteArray &payload) { return payload.size() == 2; }
bool isSelection(const QByteArray &payload) { return payload.size() == 1; }

} // namespace

VirtualBox::VirtualBox(VirtualCar *car, const Clock &clock, QObject *parent)
    : QObject(parent)
    , mCar(car)
    , mClock(clock)
    , mPacer(canbox::kBaudRate, clock)
{
    mTurnTmr.setSingleShot(true);
    mRecoverTmr.setSingleShot(true);
    connect(&mTurnTmr, &QTimer::timeout, this, &VirtualBox::sendNext);
    connect(&mRecoverTmr, &QTimer::timeout, this, &VirtualBox::reportAll);
    connect(&mReader, &LineCutter::item, this, &VirtualBox::onItem);
    connect(mCar, &VirtualCar::reportChanged, this, &VirtualBox::onReportChanged);
    connect(&mPacer, &LinePacer::drained, this, &VirtualBox::sendNext);
    connect(&mPacer, &LinePacer::chunk, this, [this](const QByteArray &bytes) {
        const QByteArray filtered = mChunkFilter ? mChunkFilter(bytes) : bytes;
        if (!filtered.isEmpty())
            emit transmit(filtered);
    });
}

void VirtualBox::receive(const QByteArray &bytes)
{
    mReceivedBytes += bytes.size();
    mReader.feed(bytes, mClock.microseconds());
}

void VirtualBox::onItem(const LineItem &item)
{
    emit heard(item);
    switch (item.kind) {
    case LineItem::Frame:
        onFrame(Outbound{item.dataType}, item.bytes);
        break;
    case LineItem::GoodReceipt:
    case LineItem::BadReceipt:
        onReceipt(item.kind == LineItem::GoodReceipt);
        break;
    default:
        break;
    }
}

void VirtualBox::onFrame(Outbound command, const QByteArray &payload)
{
    bool understood = false;
    switch (command) {
    case Outbound::StartStop:
        understood = setStarted(payload);
        break;
    case Outbound::Request:
        understood = answer(payload);
        break;
    case Outbound::CarSelect:
        understood = selectCar(payload);
        break;
    default:
        understood = mCar->obey(command, payload);
    }
    if (mAwaitsHost && mStarted && !mSilent) {
        mAwaitsHost = false;
        reportAll();
        // A host whose frame was cut takes these for the rest of it.
        if (std::exchange(mCutFrame, false))
            mRecoverTmr.start(kRecoverMs);
    }
    if (understood)
        return;
    ++mMisunderstood;
    emit puzzled(command, payload);
}

QString VirtualBox::meaning(Outbound command, const QByteArray &payload)
{
    switch (command) {
    case Outbound::StartStop:
        if (isStartOrStop(payload))
            return QLatin1String(canbox::byteAt(payload, 0) == 1 ? "start" : "stop");
        break;
    case Outbound::Request:
        if (isRequest(payload))
            return frameName(true, canbox::byteAt(payload, 0));
        break;
    case Outbound::CarSelect:
        if (isSelection(payload))
            return QStringLiteral("index %1").arg(canbox::byteAt(payload, 0));
        break;
    default:
        return VirtualCar::meaning(command, payload);
    }
    return {};
}

bool VirtualBox::setStarted(const QByteArray &payload)
{
    if (!isStartOrStop(payload))
        return false;
    const bool started = canbox::byteAt(payload, 0) == 1;
    if (started == mStarted)
        return true;
    mStarted = started;
    mQueue.clear();
    mChanged.clear();
    mRecoverTmr.stop();
    mAwaitsHost = mStarted; // Here it is.
    return true;
}

bool VirtualBox::answer(const QByteArray &payload)
{
    if (!isRequest(payload))
        return false;
    const Inbound type{canbox::byteAt(payload, 0)};
    if (type != Inbound::Version && mCar->report(type).isEmpty())
        return false;
    report(type);
    return true;
}

bool VirtualBox::selectCar(const QByteArray &payload)
{
    if (!isSelection(payload))
        return false;
    mCarIndex = canbox::byteAt(payload, 0);
    return true;
}

bool VirtualBox::isQuiet()
{
    forgetOldFrames();
    return mQueue.isEmpty() && mChanged.empty() && mAwaiting.isEmpty() && mPacer.isIdle() &&
           !mRecoverTmr.isActive();
}

void VirtualBox::onReportChanged(Inbound type)
{
    if (!mStarted || mSilent)
        return;
    if (findReport(type)->strokes) {
        report(type);
        return;
    }
    mChanged.insert(type);
    if (mPacer.isIdle() && !mTurnTmr.isActive())
        mTurnTmr.start(0);
}

void VirtualBox::report(Inbound type)
{
    enqueue(type);
    sendNext();
}

void VirtualBox::enqueue(Inbound type)
{
    mForeign.erase(type);
    if (type == Inbound::Version)
        enqueue(type, mVersion.toUtf8());
    for (const QByteArray &payload : mCar->report(type))
        enqueue(type, payload);
}

void VirtualBox::reportAll()
{
    for (const Report &row : kReports)
        if (row.atStart)
            report(row.type);
}

void VirtualBox::sendFrame(Inbound type, const QByteArray &payload)
{
    mForeign.insert(type);
    enqueue(type, payload);
    sendNext();
}

void VirtualBox::enqueue(Inbound type, const QByteArray &payload)
{
    if (!mSilent)
        mQueue.append({type, payload});
}

// A report is made when its turn comes, so that none is outdated. The turns go round.
void VirtualBox::enqueueChange()
{
    if (mChanged.empty())
        return;
    auto next = mChanged.upper_bound(mLastChange);
    if (next == mChanged.end())
        next = mChanged.begin();
    mLastChange = *next;
    mChanged.erase(next);
    enqueue(mLastChange);
}

void VirtualBox::sendRaw(const QByteArray &bytes)
{
    if (mSilent)
        return;
    mPacer.send(bytes);
    mSentRaw = true;
}

void VirtualBox::sendNext()
{
    if (!mPacer.isIdle())
        return;
    if (mQueue.isEmpty())
        enqueueChange();
    if (mQueue.isEmpty())
        return;
    Outgoing next = mQueue.takeFirst();
    next.time = mClock.milliseconds();
    forgetOldFrames();
    const auto dataType = static_cast<quint8>(next.type);
    const QByteArray frame = canbox::buildFrame(dataType, next.payload);
    ++mSent[dataType];
    mAwaiting.append(next);
    mSentRaw = false;
    mPacer.send(mFrameFilter ? mFrameFilter(frame) : frame);
    emit frameSent(next.type, next.payload);
    if (mPacer.isIdle()) // A filter has taken the frame.
        mTurnTmr.start(0);
}

void VirtualBox::onReceipt(bool good)
{
    forgetOldFrames();
    if (mAwaiting.isEmpty())
        return;
    Outgoing frame = mAwaiting.takeFirst();
    if (good || frame.resent || mSilent)
        return;
    frame.resent = true;
    ++mResent;
    mQueue.prepend(frame);
    sendNext();
}

void VirtualBox::forgetOldFrames()
{
    const qint64 oldest = mClock.milliseconds() - kReceiptTimeoutMs;
    while (!mAwaiting.isEmpty() && mAwaiting.first().time < oldest)
        mAwaiting.removeFirst();
}

void VirtualBox::cutLine() { mCutFrame = mCutFrame || !mPacer.isIdle() || mSentRaw; }

void VirtualBox::setSilent(bool on)
{
    if (on == mSilent)
        return;
    mSilent = on;
    mRecoverTmr.stop();
    if (!on) {
        awaitHost();
        return;
    }
    cutLine();
    mQueue.clear();
    mChanged.clear();
    mAwaiting.clear();
    mPacer.clear();
}

} // namespace bench
