#include "bench/screen/outlet.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

mode_t kindOf(int descriptor)
{
    struct stat found;
    return fstat(descriptor, &found) == 0 ? found.st_mode & S_IFMT : 0;
}

// The flag that keeps a write from waiting belongs to the open pipe or terminal, which the shell
// and other programs share; so it is opened once more.
int openAgain(int descriptor)
{
    const mode_t kind = kindOf(descriptor);
    if ((kind != S_IFIFO && kind != S_IFCHR) ||
        (fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDONLY)
        return -1;
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(descriptor);
    return open(path.constData(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

} // namespace

Outlet::Outlet(int descriptor, QObject *parent)
    : QObject(parent)
    , mDescriptor(descriptor)
    , mIsSocket(kindOf(descriptor) == S_IFSOCK)
    , mOwn(openAgain(descriptor))
    , mRoom(mOwn >= 0 ? mOwn : descriptor, QSocketNotifier::Write)
{
    mRoom.setEnabled(false);
    connect(&mRoom, &QSocketNotifier::activated, this, &Outlet::push);
}

Outlet::~Outlet()
{
    mRoom.setEnabled(false);
    if (mOwn >= 0)
        close(mOwn);
}

void Outlet::write(const QByteArray &bytes)
{
    mUnread += bytes;
    if (!mRoom.isEnabled())
        push();
}

QByteArray Outlet::takeUnread()
{
    mRoom.setEnabled(false);
    QByteArray bytes;
    bytes.swap(mUnread);
    return bytes;
}

void Outlet::push()
{
    while (!mUnread.isEmpty() && !mFailed) {
        const qint64 written = writeSome();
        if (written > 0)
            mUnread.remove(0, static_cast<int>(written));
        else if (errno == EAGAIN)
            return mRoom.setEnabled(true);
        else
            mFailed = errno != EINTR;
    }
    mRoom.setEnabled(false);
    if (mFailed)
        emit failed();
    else
        emit drained();
}

qint64 Outlet::writeSome() const
{
    const auto size = static_cast<size_t>(mUnread.size());
    if (mIsSocket)
        return ::send(mDescriptor, mUnread.constData(), size, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (mOwn >= 0)
        return ::write(mOwn, mUnread.constData(), size);
    // Where the system would not let us in a second time, a pipe that has room at all takes as much
    // as this without waiting; a file always has.
    pollfd room{mDescriptor, POLLOUT, 0};
    if (poll(&room, 1, 0) == 0) {
        errno = EAGAIN;
        return -1;
    }
    return ::write(mDescriptor, mUnread.constData(), std::min<size_t>(size, PIPE_BUF));
}

} // namespace bench
