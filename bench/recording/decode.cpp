#include "decode.h"

#include <canbusmanager.h>
#include <serialport.h>

namespace bench {

using canservice::SerialMonitor;

namespace {

// Microseconds after which a silence has had all of its consequences.
constexpr qint64 kEventful = 60'000'000;

} // namespace

TraceDecoder::TraceDecoder(QObject *parent)
    : QObject(parent)
{
    connect(&mHost, &PluginHost::event, this, &TraceDecoder::onEvent);
    connect(&mFromBox, &LineCutter::item, this,
            [this](const LineItem &cut) { emit item(true, cut); });
    connect(&mToBox, &LineCutter::item, this,
            [this](const LineItem &cut) { emit item(false, cut); });
    // The receipt comes before what is signalled for its frame, and so does the frame here.
    connect(SerialMonitor::instance(), &SerialMonitor::written, &mFromBox,
            [this](const QByteArray &, bool isReceipt) {
                if (isReceipt)
                    mFromBox.cutFrame();
            });
}

TraceDecoder::~TraceDecoder()
{
    if (mHost.service())
        mHost.service()->stop();
    mHost.unload();
}

QString TraceDecoder::open(const QString &plugin, int carModel)
{
    canservice::SerialPort::setDefaultDevice(QString());
    CanBusManager::instance()->setCarModelId(carModel);
    const QString problem = mHost.load(plugin);
    if (!problem.isEmpty())
        return problem;
    mHost.service()->start();
    mState = Snapshot(*mHost.service());
    return {};
}

void TraceDecoder::feed(const TraceLine &line)
{
    if (!mBegun)
        mStart = mTime = line.time;
    mBegun = true;
    mSinceTime.start();
    mClock.advance(qBound<qint64>(0, line.time - mTime, kEventful));
    mTime = qMax(mTime, line.time);
    mSinceTime.start();

    LineCutter &cutter = line.fromBox ? mFromBox : mToBox;
    cutter.take(line.bytes, mTime);
    if (line.fromBox) {
        QMetaObject::invokeMethod(mHost.service(), "onDataReady", Q_ARG(QByteArray, line.bytes));
        const Snapshot now(*mHost.service());
        if (!now.changesSince(mState).isEmpty())
            onEvent(QStringLiteral("state"), {});
    }
    cutter.cutAll();
}

void TraceDecoder::finish()
{
    mFromBox.finish();
    mToBox.finish();
}

double TraceDecoder::seconds() const
{
    const qint64 sinceTime = mBegun ? mSinceTime.nsecsElapsed() / 1000 : 0;
    return static_cast<double>(mTime - mStart + sinceTime) / 1e6;
}

Summary TraceDecoder::summary() const
{
    Summary summary;
    summary.fromBox = mFromBox.counts();
    summary.toBox = mToBox.counts();
    summary.events = mEvents;
    return summary;
}

void TraceDecoder::onEvent(const QString &name, const QVariantList &arguments)
{
    ++mEvents[name];
    Event event{seconds(), name, arguments, {}};
    // The link code precedes the handling of a frame: what changes belongs to the signal after it.
    if (name != QLatin1String("notifyCanbusStatus")) {
        const Snapshot now(*mHost.service());
        event.changes = now.changesSince(mState);
        mState = now;
    }
    emit happened(event);
}

} // namespace bench
