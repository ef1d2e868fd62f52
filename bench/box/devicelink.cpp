#include "bench/box/devicelink.h"

#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

// Where a link leads; empty for what is none.
QByteArray targetOf(const QByteArray &path)
{
    char target[256];
    const ssize_t size = readlink(path.constData(), target, sizeof target);
    return size > 0 ? QByteArray(target, static_cast<int>(size)) : QByteArray();
}

// A link as a bench makes it whose process has gone.
bool isStale(const QByteArray &path)
{
    static const QRegularExpression ours(QStringLiteral("^/proc/[0-9]+/fd/[0-9]+$"));
    struct stat found;
    return ours.match(QFile::decodeName(targetOf(path))).hasMatch() &&
           stat(path.constData(), &found) != 0 && errno == ENOENT;
}

} // namespace

QString DeviceLink::create(const QString &path, const QString &target)
{
    if (path.isEmpty())
        return QStringLiteral("the name of the link is empty");
    const QByteArray name = QFile::encodeName(path);
    if (isStale(name))
        unlink(name.constData());
    mTarget = QFile::encodeName(target);
    if (symlink(mTarget.constData(), name.constData()) == 0) {
        mPath = name;
        return {};
    }
    if (errno == EEXIST)
        return QStringLiteral("%1 exists; remove it or choose another name").arg(path);
    return QStringLiteral("cannot make the link %1: %2").arg(path, qt_error_string(errno));
}

DeviceLink::~DeviceLink()
{
    if (!mPath.isEmpty() && targetOf(mPath) == mTarget)
        unlink(mPath.constData());
}

} // namespace bench
