#include "bench/box/pseudoterminal.h"

#include <QFile>

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
    : SerialLine(parent)
    , mDoor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    , mClosedDoor(fcntl(mDoor, F_DUPFD_CLOEXEC, 0))
{
    PseudoTerminal::plug();
}

PseudoTerminal::~PseudoTerminal()
{
    blockSignals(true); // Nobody is to look at what is half gone.
    PseudoTerminal::unplug();
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
    clearError();
    return open();
}

bool PseudoTerminal::open()
{
    char name[128];
    int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    const auto fails = [this, &master](const char *what) {
        fail(QLatin1String(what));
        closeDescriptor(&master);
        return false;
    };
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, name, sizeof name) != 0)
        return fails("cannot make a pseudo terminal");
    closeDescriptor(&mSlave);
    mSlave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (mSlave < 0)
        return fails("cannot open the pseudo terminal");

    termios settings;
    if (tcgetattr(mSlave, &settings) != 0)
        return fails("cannot read the pseudo terminal's settings");
    cfmakeraw(&settings);
    cfsetspeed(&settings, B38400);
    if (tcsetattr(mSlave, TCSANOW, &settings) != 0)
        return fails("cannot set up the pseudo terminal");
    if (mClosedDoor < 0 || dup3(mSlave, mDoor, O_CLOEXEC) < 0)
        return fails("cannot link the pseudo terminal");
    mDevice = QFile::decodeName(name);
    attach(master);
    return true;
}

void PseudoTerminal::unplug()
{
    dup3(mClosedDoor, mDoor, O_CLOEXEC);
    SerialLine::unplug();
}

int PseudoTerminal::otherSpeed() const
{
    constexpr struct
    {
        speed_t code;
        int baud;
    } kSpeeds[] = {{B1200, 1200},     {B2400, 2400},     {B4800, 4800},    {B9600, 9600},
                   {B19200, 19200},   {B38400, 38400},   {B57600, 57600},  {B115200, 115200},
                   {B230400, 230400}, {B460800, 460800}, {B921600, 921600}};
    termios settings; // Of the slave side, asked at the master.
    if (tcgetattr(descriptor(), &settings) != 0)
        return SerialLine::otherSpeed();
    const speed_t code = cfgetospeed(&settings);
    for (const auto &speed : kSpeeds)
        if (speed.code == code)
            return speed.baud;
    return 0;
}

} // namespace bench
