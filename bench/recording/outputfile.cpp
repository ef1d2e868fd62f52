#include "bench/recording/outputfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

bool isStandardStream(const QString &name) { return name == QLatin1String("-"); }

// What a name leads to, or the descriptor of the standard stream for `-`.
bool find(const QString &name, int descriptor, struct stat *found)
{
    return (isStandardStream(name) ? fstat(descriptor, found)
                                   : stat(QFile::encodeName(name).constData(), found)) == 0;
}

// Two names of one file that keeps what is written to it. A terminal may be read and written.
bool isSame(const struct stat &one, const struct stat &other)
{
    return (S_ISREG(one.st_mode) || S_ISBLK(one.st_mode)) && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

bool isAmong(const QStringList &inputs, const struct stat &target)
{
    return std::any_of(inputs.begin(), inputs.end(), [&target](const QString &input) {
        struct stat found;
        return find(input, STDIN_FILENO, &found) && isSame(target, found);
    });
}

} // namespace

QString OutputFile::open(const OutputTarget &target, Way way)
{
    const bool isStandard = isStandardStream(target.name);
    mName = isStandard ? QStringLiteral("standard output") : target.name;
    if (target.name.isEmpty())
        return QStringLiteral("the name of the file to write is empty");
    if (isStandard && !target.standardOutput)
        return QStringLiteral("standard output has another use here; name a file");
    struct stat existing;
    const bool exists = find(target.name, STDOUT_FILENO, &existing);
    if (exists && isAmong(target.inputs, existing))
        return QStringLiteral("%1 is read by this command; write to another file").arg(mName);
    if (isStandard) {
        mDevice = target.standardOutput;
        return {};
    }
    // A link that leads nowhere is somebody's, too.
    const bool isTaken = exists ? S_ISREG(existing.st_mode) : QFileInfo(target.name).isSymLink();
    if (isTaken && !target.replace)
        return QStringLiteral("%1 exists; use --force to replace it").arg(mName);

    const bool isFile = !exists || S_ISREG(existing.st_mode);
    mIsNew = isFile && !isTaken;
    if (isFile && way == Whole) {
        auto whole = std::make_unique<QSaveFile>(target.name);
        whole->setDirectWriteFallback(isTaken); // In a folder that takes no other file.
        mFile = std::move(whole);
    } else {
        mFile = std::make_unique<QFile>(target.name);
    }
    mDevice = mFile.get();
    QIODevice::OpenMode mode = QIODevice::WriteOnly;
    if (way == Live)
        mode |= QIODevice::Unbuffered;
    if (way == Live && mIsNew)
        mode |= QIODevice::NewOnly;
    return mDevice->open(mode) ? QString() : problem();
}

QString OutputFile::write(const QByteArray &bytes)
{
    return mDevice->write(bytes) == bytes.size() ? QString() : problem();
}

QString OutputFile::commit()
{
    auto *whole = qobject_cast<QSaveFile *>(mDevice);
    if (whole != nullptr && mIsNew && QFileInfo::exists(whole->fileName())) {
        whole->cancelWriting();
        return QStringLiteral("%1 exists by now; use --force to replace it").arg(mName);
    }
    const bool isDone = whole != nullptr ? whole->commit() : !mFile || mFile->flush();
    return isDone ? QString() : problem();
}

QString OutputFile::problem() const
{
    return QStringLiteral("%1: %2").arg(mName, mDevice->errorString());
}

} // namespace bench
