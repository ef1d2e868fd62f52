#include "virtualbox.h"

namespace bench {

using canbox::Inbound;
using canbox::Outbound;

namespace {

constexpr qint64 kFrameTimeoutMs = 500;    // For the rest of a frame from the host.
constexpr qint64 kReceiptTimeoutMs = 1000; // A receipt that comes later belongs to another frame.

constexpr Inbound kAllReports[] = {
    Inbound::Climate,      Inbound::RearRadar,    Inbound::FrontRadar,   Inbound::Doors,
    Inbound::UnitSettings, Inbound::AmbientLight, Inbound::VehicleInfo1, Inbound::VehicleInfo2,
};

} // namespace

VirtualBox::VirtualBox(VirtualCar *car, QObject *parent)
    : QObject(parent)
    , mCar(car)
    , mPacer(canbox::kBaudRate)
{
    mClock.start();
    mTurnTmr.setSingleShot(true);
    connect(&mTurnTmr, &QTimer::timeout, this, &VirtualBox::sendNext);
    connect(&mReader, &FrameReader::frame, this, &VirtualBox::onFrame);
    connect(&mReader, &FrameReader::receipt, this, &VirtualBox::onReceipt);
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
    const qint64 now = mClock.elapsed();
    if (now - mLastByteTime > kFrameTimeoutMs)
        mReader.reset();
    mLastByteTime = now;
    mReader.feed(bytes);
}

void VirtualBox::onFrame(quint8 dataType, const QByteArray &payload)
{
    bool understood = false;
    switch (Outbound{dataType}) {
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
        understood = mCar->obey(dataType, payload);
    }
    if (mAwaitsHost) {
        mAwaitsHost = false;
        if (mStarted)
            reportAll();
    }
    if (!understood)
        ++mMisunderstood;
}

bool VirtualBox::setStarted(const QByteArray &payload)
{
    if (payload.size() != 1 || canbox::byteAt(payload, 0) > 1)
        return false;
    const bool started = canbox::byteAt(payload, 0) == 1;
    if (started == mStarted)
        return true;
    mStarted = started;
    mQueue.clear();
    mChanged.clear();
    if (mStarted)
        reportAll();
    return true;
}

bool VirtualBox::answer(const QByteArray &payload)
{
    if (payload.size() != 2)
        return false;
    const quint8 dataType = canbox::byteAt(payload, 0);
    if (Inbound{dataType} != Inbound::Version && mCar->report(dataType).isEmpty())
        return false;
    report(dataType);
    return true;
}

bool VirtualBox::selectCar(const QByteArray &payload)
{
    if (payload.size() != 1)
        return false;
    mCarIndex = canbox::byteAt(payload, 0);
    return true;
}

void VirtualBox::onReportChanged(quint8 dataType)
{
    if (!mStarted || mSilent)
        return;
    if (Inbound{dataType} == Inbound::SteeringWheelKey) {
        report(dataType); // Each press and each release counts.
        return;
    }
    mChanged.insert(dataType);
    if (mPacer.isIdle() && !mTurnTmr.isActive())
        mTurnTmr.start(0);
}

void VirtualBox::report(quint8 dataType)
{
    enqueue(dataType);
    sendNext();
}

void VirtualBox::enqueue(quint8 dataType)
{
    if (Inbound{dataType} == Inbound::Version)
        enqueue(dataType, mVersion.toUtf8());
    for (const QByteArray &payload : mCar->report(dataType))
        enqueue(dataType, payload);
}

void VirtualBox::reportAll()
{
    for (const Inbound dataType : kAllReports)
        report(static_cast<quint8>(dataType));
}

void VirtualBox::sendFrame(quint8 dataType, const QByteArray &payload)
{
    enqueue(dataType, payload);
    sendNext();
}

void VirtualBox::enqueue(quint8 dataType, const QByteArray &payload)
{
    if (!mSilent)
        mQueue.append({dataType, canbox::buildFrame(dataType, payload)});
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
    if (!mSilent)
        mPacer.send(bytes);
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
    next.time = mClock.elapsed();
    forgetOldFrames();
    ++mSent[next.dataType];
    mAwaiting.append(next);
    mPacer.send(mFrameFilter ? mFrameFilter(next.frame) : next.frame);
    emit frameSent(next.dataType, next.frame);
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
    const qint64 oldest = mClock.elapsed() - kReceiptTimeoutMs;
    while (!mAwaiting.isEmpty() && mAwaiting.first().time < oldest)
        mAwaiting.removeFirst();
}

void VirtualBox::setSilent(bool on)
{
    mSilent = on;
    if (!on)
        return;
    mQueue.clear();
    mChanged.clear();
    mAwaiting.clear();
    mPacer.clear();
}

} // namespace bench
