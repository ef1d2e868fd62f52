#include "bench/box/pseudoterminal.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace bench {

namespace {

void closeDescriptor(int *descriptor)
{
    if (*descriptor >= 0)
        close(*descriptor);
    *descriptor = -1;
}

} // namespace

PseudoTerminal::PseudoTerminal(QObject *parent)
    : QObject(parent)
    , mDoor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , mClosedDoor(fcntl(mDoor, F_DUPFD_CLOEXEC, 0))
{
    plug();
}

PseudoTerminal::~PseudoTerminal()
{
    unplug();
    closeDescriptor(&mSlave);
    closeDescriptor(&mClosedDoor);
    closeDescriptor(&mDoor);
}

QString PseudoTerminal::path() const
{
    return QStringLiteral("/proc/%1/fd/%2").arg(getpid()).arg(mDoor);
}

bool PseudoTerminal::plug()
{
    if (isPlugged())
        return true;
    mError.clear();
    if (open())
        return true;
    unplug();
    return false;
}

bool PseudoTerminal::open()
{
    char name[128];
    mMaster = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (mMaster < 0 || grantpt(mMaster) != 0 || unlockpt(mMaster) != 0 ||
        ptsname_r(mMaster, name, sizeof name) != 0)
        return fail("cannot make a pseudo terminal");
    closeDescriptor(&mSlave);
    mSlave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (mSlave < 0)
        return fail("cannot open the pseudo terminal");

    termios settings;
    if (tcgetattr(mSlave, &settings) != 0)
        return fail("cannot read the pseudo terminal's settings");
    cfmakeraw(&settings);
    cfsetspeed(&settings, B38400);
    if (tcsetattr(mSlave, TCSANOW, &settings) != 0)
        return fail("cannot set up the pseudo terminal");
    if (mClosedDoor < 0 || dup3(mSlave, mDoor, O_CLOEXEC) < 0)
        return fail("cannot link the pseudo terminal");

    mNotifier = new QSocketNotifier(mMaster, QSocketNotifier::Read, this);
    mNotifier->setEnabled(mReading);
    connect(mNotifier, &QSocketNotifier::activated, this, [this] { onReadable(); });
    return true;
}

bool PseudoTerminal::fail(const char *what)
{
    mError = QStringLiteral("%1: %2").arg(QLatin1String(what), qt_error_string(errno));
    return false;
}

void PseudoTerminal::unplug()
{
    if (mNotifier) {
        // Later: unplug() may be called while this notifier reports bytes.
        mNotifier->setEnabled(false);
        mNotifier->deleteLater();
        mNotifier = nullptr;
    }
    dup3(mClosedDoor, mDoor, O_CLOEXEC);
    closeDescriptor(&mMaster);
}

void PseudoTerminal::write(const QByteArray &bytes)
{
    if (!isPlugged())
        return;
    const ssize_t written = ::write(mMaster, bytes.constData(), static_cast<size_t>(bytes.size()));
    mLostBytes += bytes.size() - qMax<ssize_t>(written, 0);
}

void PseudoTerminal::setReading(bool on)
{
    mReading = on;
    if (mNotifier)
        mNotifier->setEnabled(on);
}

void PseudoTerminal::onReadable()
{
    char buffer[4096];
    const ssize_t size = read(mMaster, buffer, sizeof buffer);
    if (size > 0)
        emit received(QByteArray(buffer, static_cast<int>(size)));
    else if (size == 0 || (errno != EAGAIN && errno != EINTR))
        unplug();
}

} // namespace bench
