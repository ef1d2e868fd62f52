#include "bench/headunit/session.h"

#include <canbusmanager.h>
#include <serialport.h>

#include <QEventLoop>

namespace bench {

using canservice::SerialMonitor;
using canservice::SerialPort;

namespace {

// The bench's own events.
const struct
{
    QString name;
    QStringList arguments;
} kBenchEvents[] = {
    {"device", {"open", "message"}},
    {"cluster", {"source", "line1", "line2", "clock"}},
};

} // namespace

bool Event::isLink() const { return name == interfaceSignals().at(linkSignal()).name; }

QStringList eventArguments(const QString &event)
{
    for (const auto &row : kBenchEvents)
        if (row.name == event)
            return row.arguments;
    const int signal = findSignal(event);
    return signal < 0 ? QStringList() : interfaceSignals().at(signal).arguments;
}

QStringList eventNames()
{
    QStringList names;
    for (const auto &row : kBenchEvents)
        names += row.name;
    for (const SignalInfo &row : interfaceSignals())
        names += row.name;
    return names;
}

Session::Session(const SessionOptions &options, QObject *parent)
    : QObject(parent)
    , mOptions(options)
{
    connect(&mHost, &PluginHost::event, this, [this](int signal, const QVector<Value> &arguments) {
        onEvent(interfaceSignals().at(signal).name, arguments, signal);
    });
    connect(&mFromBox, &LineCutter::item, this, &Session::received);

    const SerialMonitor *monitor = SerialMonitor::instance();
    connect(monitor, &SerialMonitor::received, this, &Session::onReceived);
    connect(monitor, &SerialMonitor::written, this,
            [this](const QByteArray &bytes, bool, bool delivered) { onWritten(bytes, delivered); });
    connect(monitor, &SerialMonitor::connectionChanged, this,
            [this](bool open, const QString &message) {
                mFromBox.reset();
                mDeviceOpen = open;
                mBytesIn = mBoxBytes; // What was on the line is gone.
                mBytesOut = mBoxEnd ? mBoxEnd->box().receivedBytes() : 0;
                onEvent(QStringLiteral("device"), {open, message});
            });
    mAroundTmr.setSingleShot(true);
    mAroundTmr.setInterval(0);
    connect(&mAroundTmr, &QTimer::timeout, this, &Session::lookAround);
    if (!mOptions.device.isEmpty())
        return;
    mBoxEnd = std::make_unique<BoxEnd>(mClock, mOptions.seed);
    mBoxEnd->car().setTwoCodesPerSensor(hasTwoCodesPerSensor(mOptions.carModel));
    connect(&mBoxEnd->box(), &VirtualBox::transmit, this,
            [this](const QByteArray &bytes) { mBoxBytes += bytes.size(); });
    connect(&mBoxEnd->car(), &VirtualCar::clusterChanged, this, [this] {
        const Cluster &shown = mBoxEnd->car().cluster();
        onEvent(QStringLiteral("cluster"),
                {shown.source, shown.lines[0], shown.lines[1], shown.clock});
    });
}

Session::~Session()
{
    if (mStarted)
        service().stop();
    mState.end();
    mHost.unload(); // While what listens to its last words is still there.
}

QString Session::open()
{
    QString device = mOptions.device;
    if (mBoxEnd) {
        const QString problem = mBoxEnd->open();
        if (!problem.isEmpty())
            return problem;
        device = mBoxEnd->terminal().path();
    }
    SerialPort::setDefaultDevice(device);
    CanBusManager::instance()->setCarModelId(mOptions.carModel);
    CanBusManager::instance()->setHwdCarModelIndex(mOptions.carIndex);
    return mHost.load(mOptions.plugin);
}

void Session::start()
{
    mStarted = true;
    service().start();
    mState.begin(&service());
}

void Session::halt()
{
    mStarted = false;
    service().stop();
}

void Session::stop()
{
    if (!mStarted)
        return;
    halt();
    QEventLoop loop;
    QTimer::singleShot(50, &loop, &QEventLoop::quit);
    loop.exec();
}

void Session::onEvent(const QString &name, const QVector<Value> &arguments, int signal)
{
    ++mSummary.events[name];
    if (signal >= 0 && signal == linkSignal())
        mLinkCode = std::get<int>(arguments.first());
    emit happened(
        {seconds(), name, arguments, signal >= 0 ? mState.changesWith(signal) : QVector<Change>()});
}

void Session::lookAround()
{
    const QVector<Change> changes = mState.lookAround();
    if (!changes.isEmpty())
        emit happened({seconds(), QStringLiteral("state"), {}, changes});
}

void Session::onReceived(const QByteArray &bytes)
{
    mBytesIn += bytes.size();
    mLastByte = seconds();
    mAroundTmr.start();
    emit carried(true, bytes);
    mFromBox.feed(bytes, mClock.microseconds());
}

void Session::onWritten(const QByteArray &bytes, bool delivered)
{
    if (!delivered) {
        ++mSummary.droppedWrites;
        return;
    }
    mBytesOut += bytes.size();
    emit carried(false, bytes);
    mToBox.feed(bytes, mClock.microseconds());
}

bool Session::isQuiet()
{
    if (!mBoxEnd || !mBoxEnd->isPlugged())
        return true;
    return mBoxEnd->isQuiet() && mBoxEnd->box().receivedBytes() == mBytesOut &&
           mBytesIn == mBoxBytes;
}

const Summary &Session::summary()
{
    mSummary.fromBox = mFromBox.counts();
    mSummary.toBox = mToBox.counts();
    return mSummary;
}

} // namespace bench
