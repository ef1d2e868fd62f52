#include "session.h"

#include "pluginfile.h"

#include <canbusmanager.h>
#include <serialport.h>

#include <QEventLoop>

namespace bench {

using canservice::SerialMonitor;
using canservice::SerialPort;

Session::Session(const SessionOptions &options, QObject *parent)
    : QObject(parent)
    , mOptions(options)
{
    mClock.start();
    connect(&mHost, &PluginHost::event, this, &Session::onEvent);

    const SerialMonitor *monitor = SerialMonitor::instance();
    connect(monitor, &SerialMonitor::received, &mFromBox, &FrameReader::feed);
    connect(monitor, &SerialMonitor::written, this,
            [this](const QByteArray &bytes, bool, bool delivered) {
                if (delivered)
                    mToBox.feed(bytes);
                else
                    ++mSummary.droppedWrites;
            });
    connect(monitor, &SerialMonitor::connectionChanged, this,
            [this](bool open, const QString &message) {
                mFromBox.reset();
                onEvent(QStringLiteral("device"), {open, message});
            });
    connect(&mCar, &VirtualCar::clusterChanged, this, [this] {
        const Cluster &shown = mCar.cluster();
        onEvent(QStringLiteral("cluster"),
                {shown.source, shown.lines[0], shown.lines[1], shown.clock});
    });
}

Session::~Session()
{
    if (mStarted)
        service().stop();
    mHost.unload(); // While what listens to its last words is still there.
}

QString Session::open()
{
    QString device = mOptions.device;
    if (device.isEmpty()) {
        mTerminal = std::make_unique<PseudoTerminal>();
        if (!mTerminal->isPlugged())
            return mTerminal->errorString();
        connect(mTerminal.get(), &PseudoTerminal::received, &mBox, &VirtualBox::receive);
        connect(&mBox, &VirtualBox::transmit, mTerminal.get(), &PseudoTerminal::write);
        mCar.setTwoCodesPerSensor(VirtualCar::hasTwoCodesPerSensor(mOptions.carModel));
        device = mTerminal->path();
    }
    SerialPort::setDefaultDevice(device);
    CanBusManager::instance()->setCarModelId(mOptions.carModel);
    CanBusManager::instance()->setHwdCarModelIndex(mOptions.carIndex);
    return mHost.load(mOptions.plugin.isEmpty() ? defaultPluginFile() : mOptions.plugin);
}

void Session::start()
{
    mStarted = true;
    service().start();
    mState = readState();
}

void Session::stop()
{
    if (!mStarted)
        return;
    mStarted = false;
    service().stop();
    QEventLoop loop;
    QTimer::singleShot(50, &loop, &QEventLoop::quit);
    loop.exec();
}

void Session::onEvent(const QString &name, const QVariantList &arguments)
{
    ++mSummary.events[name];
    if (name == QLatin1String("notifyCanbusStatus"))
        mLinkCode = arguments.first().toInt();
    Event event{seconds(), name, arguments, {}};
    if (mStarted && mOptions.readsState) {
        const Snapshot now = readState();
        event.changes = now.changesSince(mState);
        mState = now;
    }
    emit happened(event);
}

const Summary &Session::summary()
{
    mSummary.fromBox = mFromBox.counts();
    mSummary.toBox = mToBox.counts();
    return mSummary;
}

void Session::unplug() { mTerminal->unplug(); }

bool Session::plug()
{
    mBox.awaitHost();
    return mTerminal->plug();
}

} // namespace bench
