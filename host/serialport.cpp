#include "serialport.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSerialPort>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace canservice {

namespace {

constexpr int kRetryInterval = 1000; // ms
constexpr qint64 kMaxPending = 4096; // bytes; about one second of line time at 38400 baud

struct Failure
{
    int error;
    const char *text;
};

constexpr char kNoSuchDevice[] = "no such device; plug it in or correct the name";
constexpr char kNoPermission[] =
    "no permission to open it; join its group (often dialout) or change its mode";
constexpr char kBusy[] = "busy; close the program that holds it";
constexpr char kNotSerial[] = "not a serial device; name one such as /dev/ttyUSB0";
constexpr char kHungUp[] = "it has hung up; plug it in again";

constexpr Failure kFailures[] = {
    {ENOENT, kNoSuchDevice}, {ENOTDIR, kNoSuchDevice}, {ELOOP, kNoSuchDevice},
    {ENODEV, kNoSuchDevice}, {ENXIO, kNoSuchDevice},   {EACCES, kNoPermission},
    {EPERM, kNoPermission},  {EBUSY, kBusy},           {EISDIR, kNotSerial},
    {ENOTTY, kNotSerial},    {EINVAL, kNotSerial},     {EIO, kHungUp},
};

// Why a device cannot be opened, as an error number: QSerialPort tells a busy device from a
// forbidden one as little as a file from a missing device. 0 for a terminal that does open.
int openError(const QString &path)
{
    const int device =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0)
        return errno;
    const int error = isatty(device) ? 0 : errno;
    ::close(device);
    return error;
}

// Why QSerialPort did not open the device at \p path, and what to do about it.
QString whyNotOpen(const QString &path, const QSerialPort &device)
{
    int error = openError(path);
    // The device itself opens: another program has its lock file.
    if (error == 0 && device.error() == QSerialPort::PermissionError)
        error = EBUSY;
    const auto *failure = std::find_if(std::begin(kFailures), std::end(kFailures),
                                       [error](const Failure &row) { return row.error == error; });
    if (failure != std::end(kFailures))
        return QString::fromLatin1(failure->text);
    return error == 0 ? device.errorString() : qt_error_string(error);
}

QString &theDefaultDevice()
{
    static QString device;
    return device;
}

} // namespace

// What a host's own port may take, as the README tells it.
static_assert(sizeof(SerialPort) == (sizeof(void *) == 8 ? 256 : 136));

SerialMonitor *SerialMonitor::instance()
{
    static SerialMonitor monitor;
    return &monitor;
}

SerialPort::SerialPort(QObject *parent)
    : QObject(parent)
    , mDevice(std::make_unique<QSerialPort>())
    , mProcess(getpid())
{
    mDevice->setDataBits(QSerialPort::Data8);
    mDevice->setParity(QSerialPort::NoParity);
    mDevice->setStopBits(QSerialPort::OneStop);
    mDevice->setFlowControl(QSerialPort::NoFlowControl);
    connect(mDevice.get(), &QSerialPort::readyRead, this, &SerialPort::onReadyRead);
    // Queued: most errors come out of a socket notifier that close() deletes.
    connect(mDevice.get(), &QSerialPort::errorOccurred, this, &SerialPort::onError,
            Qt::QueuedConnection);
    mRetryTmr.setInterval(kRetryInterval);
    connect(&mRetryTmr, &QTimer::timeout, this, &SerialPort::retry);
}

// A child that was forked would take the lock file with it, and the line's settings.
SerialPort::~SerialPort()
{
    if (mProcess != getpid())
        static_cast<void>(mDevice.release());
}

void SerialPort::setDefaultDevice(const QString &device) { theDefaultDevice() = device; }

QString SerialPort::defaultDevice() { return theDefaultDevice(); }

bool SerialPort::open(QString device, int baudRate)
{
    mRetryTmr.stop();
    mDevice->close();
    if (device.isEmpty())
        device = defaultDevice();
    if (device.isEmpty()) {
        qWarning("No serial device is named: name one, such as /dev/ttyUSB0, and start again.");
        return false;
    }
    mPath = QDir(QStringLiteral("/dev")).absoluteFilePath(device);
    if (baudRate <= 0) {
        qWarning("Serial device %s: %d baud is no speed; give a positive one, such as 38400.",
                 qUtf8Printable(mPath), baudRate);
        return false;
    }
    mDevice->setBaudRate(baudRate);
    if (tryOpen())
        return true;
    reportFailure(whyNotOpen(mPath, *mDevice));
    return false;
}

bool SerialPort::tryOpen()
{
    // The link may lead to another device by now, and the lock that serial programs agree on bears
    // the device's own name. A missing device ends here, before a lock file is made every second.
    const QString target = QFileInfo(mPath).canonicalFilePath();
    if (target.isEmpty())
        return false;
    mDevice->setPortName(target);
    if (!mDevice->open(QIODevice::ReadWrite))
        return false;
    mDevice->clear(QSerialPort::Input);
    mStalled = false;
    emit SerialMonitor::instance()->connectionChanged(
        true, QStringLiteral("Serial device %1 is open.").arg(mPath));
    return true;
}

void SerialPort::retry()
{
    if (!tryOpen())
        return;
    mRetryTmr.stop();
    qInfo("Serial device %s is back.", qUtf8Printable(mPath));
}

bool SerialPort::writeData(const QByteArray &bytes, bool flag)
{
    const qint64 pending = mDevice->bytesToWrite();
    bool stalled = pending + bytes.size() > kMaxPending;
    if (mDevice->isOpen() && !stalled) {
        // QSerialPort writes from the event loop, which a receipt need not wait for. It gets only
        // what the device does not take now, or all of it to find out what is wrong; but not what
        // the device takes none of without an error, which it would try for ever.
        qint64 taken = 0;
        qint64 now = pending == 0 ? 1 : -1;
        while (now > 0 && taken < bytes.size()) {
            now = ::write(mDevice->handle(), bytes.constData() + taken,
                          static_cast<size_t>(bytes.size() - taken));
            taken += std::max<qint64>(0, now);
        }
        stalled = now == 0;
        if (now < 0)
            mDevice->write(bytes.constData() + taken, bytes.size() - taken);
    }
    if (stalled && !mStalled)
        qWarning("Serial device %s takes no more bytes: dropping what is sent until it does.",
                 qUtf8Printable(mPath));
    mStalled = stalled || (mStalled && pending > 0);
    const bool delivered = mDevice->isOpen() && !stalled;
    emit SerialMonitor::instance()->written(bytes, flag, delivered);
    return delivered;
}

void SerialPort::onReadyRead()
{
    const QByteArray bytes = mDevice->readAll();
    emit SerialMonitor::instance()->received(bytes);
    emit read(bytes);
}

void SerialPort::onError()
{
    // A failed open() has been reported, and one error may be signalled more than once.
    if (!mDevice->isOpen() || mDevice->error() == QSerialPort::NoError)
        return;
    // A terminal that has hung up says so for ever: no event may reach it any more.
    mDevice->close();
    // What the system says of a read from a device that is gone would only mislead.
    reportFailure(QStringLiteral("disconnected; plug it in again"));
}

void SerialPort::reportFailure(const QString &reason)
{
    mRetryTmr.start();
    const QString message =
        QStringLiteral("Serial device %1: %2; trying again every second.").arg(mPath, reason);
    qWarning().noquote() << message;
    emit SerialMonitor::instance()->connectionChanged(false, message);
}

} // namespace canservice
