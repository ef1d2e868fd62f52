#include "bench/recording/decoder.h"

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
    , mEvents(interfaceSignals().size())
{
    connect(&mHost, &PluginHost::event, this, &TraceDecoder::onSignal);
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
    mState.end();
    mHost.unload();
}

QString TraceDecoder::open(const QString &plugin, int carModel)
{
    canservice::SerialPort::setDefaultDevice(QString());
    CanBusManager::instance()->setCarModelId(carModel);
    const QString problem = mHost.load(plugin);
    if (!problem.isEmpty())
        return problem;
    const QMetaObject *meta = mHost.service()->metaObject();
    mOnDataReady = meta->method(meta->indexOfMethod("onDataReady(QByteArray)"));
    if (!mOnDataReady.isValid())
        return QStringLiteral("%1 has no slot onDataReady(QByteArray), which takes what comes from "
                              "the box; name another plug-in")
            .arg(plugin);
    mHost.service()->start();
    mState.begin(mHost.service());
    return {};
}

void TraceDecoder::feed(const TraceLine &line)
{
    if (!mBegun)
        mStart = mLatest = line.time;
    mBegun = true;
    const qint64 passed = qMax<qint64>(0, line.time - mLatest);
    mTime.advance(qMin(passed, kEventful));
    mLatest += passed;
    mMark = mTime.microseconds();

    LineCutter &cutter = line.fromBox ? mFromBox : mToBox;
    cutter.take(line.bytes, mLatest);
    if (line.fromBox) {
        mOnDataReady.invoke(mHost.service(), Qt::DirectConnection, Q_ARG(QByteArray, line.bytes));
        const QVector<Change> changes = mState.lookAround();
        if (!changes.isEmpty())
            emit happened({seconds(), QStringLiteral("state"), {}, changes});
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
    return static_cast<double>(mLatest - mStart + mTime.microseconds() - mMark) / 1e6;
}

Summary TraceDecoder::summary() const
{
    Summary summary;
    summary.fromBox = mFromBox.counts();
    summary.toBox = mToBox.counts();
    for (int signal = 0; signal < mEvents.size(); ++signal)
        if (mEvents.at(signal) > 0)
            summary.events[interfaceSignals().at(signal).name] = mEvents.at(signal);
    return summary;
}

void TraceDecoder::onSignal(int signal, const QVector<Value> &arguments)
{
    ++mEvents[signal];
    emit happened(
        {seconds(), interfaceSignals().at(signal).name, arguments, mState.changesWith(signal)});
}

} // namespace bench
