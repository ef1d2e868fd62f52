#include "serialport.h"

#include <QDebug>

namespace canservice {

namespace {

QString &theDefaultDevice()
{
    static QString device;
    return device;
}

constexpr int kRetryInterval = 1000; // ms

// About a second of the line. A device that takes nothing for longer loses what comes after.
constexpr qint64 kMaxPending = 4096;

/// What is wrong and what to do about it, for a person.
QString explain(QSerialPort::SerialPortError error, const QString &systemText)
{
    switch (error) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("no such device; plug it in or check its name");
    case QSerialPort::PermissionError:
        return QStringLiteral("it is busy or may not be opened; close the other program, or join "
                              "the group that owns the device");
    case QSerialPort::UnsupportedOperationError:
    case QSerialPort::UnknownError:
        return QStringLiteral("it is no serial device (%1); choose another").arg(systemText);
    default:
        return QStringLiteral("it is gone or failed (%1); plug it in again").arg(systemText);
    }
}

} // namespace

SerialMonitor *SerialMonitor::instance()
{
    static SerialMonitor monitor;
    return &monitor;
}

SerialPort::SerialPort(QObject *parent)
    : QObject(parent)
{
    mRetryTmr.setInterval(kRetryInterval);
    mRetryTmr.setSingleShot(true);
    connect(&mRetryTmr, &QTimer::timeout, this, &SerialPort::tryOpen);
    connect(&mDevice, &QSerialPort::readyRead, this, &SerialPort::onReadyRead);
    connect(&mDevice, &QSerialPort::errorOccurred, this, &SerialPort::onError);
}

SerialPort::~SerialPort()
{
    // Closing reports nothing to a port that is on its way out.
    mDevice.disconnect(this);
}

void SerialPort::setDefaultDevice(const QString &device) { theDefaultDevice() = device; }

QString SerialPort::defaultDevice() { return theDefaultDevice(); }

bool SerialPort::open(QString device, int baudRate)
{
    mRetryTmr.stop();
    mDevice.close();
    mLossReported = false;
    const QString name = device.isEmpty() ? defaultDevice() : device;
    if (name.isEmpty()) {
        qWarning("No serial device is given: call SerialPort::setDefaultDevice() before the "
                 "service is made.");
        return false;
    }
    mDevice.setPortName(name);
    mDevice.setBaudRate(baudRate);
    return tryOpen();
}

bool SerialPort::tryOpen()
{
    // A failure comes through errorOccurred(), which arms the next try.
    if (!mDevice.open(QIODevice::ReadWrite))
        return false;
    mDevice.clear(QSerialPort::Input);
    mStalled = false;
    const QString message = QStringLiteral("Serial device %1 is open.").arg(mDevice.portName());
    if (mLossReported)
        qWarning().noquote() << message;
    mLossReported = false;
    emit SerialMonitor::instance()->connectionChanged(true, message);
    return true;
}

bool SerialPort::writeData(const QByteArray &bytes, bool flag)
{
    bool delivered = mDevice.isOpen();
    if (delivered && mDevice.bytesToWrite() + bytes.size() > kMaxPending) {
        if (!mStalled)
            qWarning().noquote() << QStringLiteral("Serial device %1 takes no bytes; what is "
                                                   "written is lost until it does.")
                                        .arg(mDevice.portName());
        mStalled = true;
        delivered = false;
    }
    if (delivered) {
        delivered = mDevice.write(bytes) == bytes.size();
        mStalled = false;
    }
    emit SerialMonitor::instance()->written(bytes, flag, delivered);
    return delivered;
}

void SerialPort::onReadyRead()
{
    const QByteArray bytes = mDevice.readAll();
    emit SerialMonitor::instance()->received(bytes);
    emit read(bytes);
}

void SerialPort::onError(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::NoError || mRetryTmr.isActive())
        return;
    mRetryTmr.start();
    const QString message = QStringLiteral("Serial device %1: %2. Trying again every second.")
                                .arg(mDevice.portName(), explain(error, mDevice.errorString()));
    if (!mLossReported)
        qWarning().noquote() << message;
    mLossReported = true;
    // The error may come out of the device's own notifiers, which close() deletes.
    QMetaObject::invokeMethod(this, &SerialPort::lose, Qt::QueuedConnection);
    emit SerialMonitor::instance()->connectionChanged(false, message);
}

void SerialPort::lose()
{
    if (mDevice.isOpen())
        mDevice.close();
}

} // namespace canservice
