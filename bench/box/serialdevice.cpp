#include "bench/box/serialdevice.h"

#include <QFile>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr int kRetry = 250; // ms

} // namespace

SerialDevice::SerialDevice(const QString &path, QObject *parent)
    : SerialLine(parent)
    , mPath(path)
{
    mRetryTmr.setInterval(kRetry);
    connect(&mRetryTmr, &QTimer::timeout, this, &SerialDevice::plug);
}

SerialDevice::~SerialDevice()
{
    blockSignals(true); // Nobody is to look at what is half gone.
    SerialDevice::unplug();
}

bool SerialDevice::plug()
{
    if (isPlugged())
        return true;
    clearError();
    const int device =
        open(QFile::encodeName(mPath).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (device < 0)
        return fail(QStringLiteral("cannot open %1").arg(mPath));
    termios settings;
    bool isSetUp = tcgetattr(device, &settings) == 0;
    if (isSetUp) {
        cfmakeraw(&settings);
        settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS);
        settings.c_cflag |= CLOCAL | CREAD;
        cfsetspeed(&settings, B38400);
        isSetUp = ioctl(device, TIOCEXCL) == 0 && tcsetattr(device, TCSANOW, &settings) == 0;
    }
    if (!isSetUp) {
        fail(QStringLiteral("cannot use %1 as a serial device").arg(mPath));
        close(device);
        return false;
    }
    tcflush(device, TCIOFLUSH);
    mRetryTmr.stop();
    attach(device);
    return true;
}

void SerialDevice::unplug()
{
    mRetryTmr.stop();
    if (isPlugged())
        ioctl(descriptor(), TIOCNXCL); // Else a pseudo terminal would stay locked.
    SerialLine::unplug();
}

void SerialDevice::onGone()
{
    unplug();
    mRetryTmr.start();
}

} // namespace bench
