#include "bench/headunit/pluginfile.h"

#include "bench/wire/tables.h"
#include "frozencontract.h"

#include <QCborMap>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <elf.h>
#include <iterator>
#include <sys/stat.h>

namespace bench {

namespace {

constexpr char kPluginId[] = "com.quendal.CanServicePlugin";

// What Qt puts into the section: the mark, 4 bytes (0, major and minor version, kind of build) and
// a CBOR map with these keys.
constexpr char kMetaDataMark[] = "QTMETADATA !";
constexpr int kMetaDataHead = 16;
constexpr int kMajorVersion = 13;
constexpr int kMinorVersion = 14;
enum MetaDataKey { InterfaceIdKey = 2, ClassNameKey = 3 };

constexpr Word kMachines[] = {
    {EM_X86_64, "x86-64"},  {EM_386, "32-bit x86"}, {EM_AARCH64, "64-bit ARM"},
    {EM_ARM, "32-bit ARM"}, {EM_RISCV, "RISC-V"},
};

constexpr Word kFileErrors[] = {
    {ENOENT, "there is no such file"},
    {ENOTDIR, "there is no such file: a part of its path is no folder"},
    {ELOOP, "its links lead in a circle"},
    {EACCES, "you may not look into its folder"},
    {ENAMETOOLONG, "the name is too long for a file"},
};

QString fileProblem(const QString &path)
{
    struct stat info;
    const QByteArray name = QFile::encodeName(path);
    if (stat(name.constData(), &info) != 0) {
        const int error = errno;
        if (error == ENOENT && lstat(name.constData(), &info) == 0)
            return QStringLiteral("it is a link to a file that does not exist");
        const Word *known = wordOf(kFileErrors, error);
        return known ? QLatin1String(known->name) : qt_error_string(error);
    }
    if (S_ISDIR(info.st_mode))
        return QStringLiteral("it is a folder; name the file in it");
    if (!S_ISREG(info.st_mode))
        return QStringLiteral("it is not a file, but a device, pipe or socket");
    return {};
}

QString libraryProblem(const ElfFile &library)
{
    if (!library.problem.isEmpty())
        return library.problem;
    if (library.kind == ElfFile::Program)
        return QStringLiteral("it is a program, not a library");
    if (library.kind == ElfFile::Other)
        return QStringLiteral("it is not a shared library, but another kind of ELF file, such as "
                              "an object file");
    return {};
}

QString machineProblem(const ElfFile &library)
{
    const ElfFile own = readElf(QStringLiteral("/proc/self/exe"));
    if (!own.problem.isEmpty()) // Loading will tell.
        return {};
    if (library.machine == own.machine && library.bits == own.bits)
        return {};
    return QStringLiteral("it is built for %1, and this program runs on %2")
        .arg(machineName(library.machine), machineName(own.machine));
}

QJsonObject readMetaData(const QByteArray &section)
{
    if (!section.startsWith(kMetaDataMark) || section.size() < kMetaDataHead)
        return {};
    const QCborMap map = QCborValue::fromCbor(section.mid(kMetaDataHead)).toMap();
    const auto qt = QStringLiteral("%1.%2")
                        .arg(uchar(section.at(kMajorVersion)))
                        .arg(uchar(section.at(kMinorVersion)));
    return {{QStringLiteral("IID"), map.value(InterfaceIdKey).toString()},
            {QStringLiteral("className"), map.value(ClassNameKey).toString()},
            {QStringLiteral("qt"), qt}};
}

QString metaDataProblem(const QJsonObject &metaData)
{
    if (metaData.isEmpty())
        return QStringLiteral("it is a library, but no Qt plug-in (it has no Qt metadata)");
    const QString id = metaData.value(QLatin1String("IID")).toString();
    if (id != QLatin1String(kPluginId))
        return QStringLiteral("it is a Qt plug-in of another kind: its interface id is '%1', not "
                              "'%2'")
            .arg(id, QLatin1String(kPluginId));
    return {};
}

// The lines below a heading, up to a blank one.
QStringList frozenLines(const QString &heading)
{
    const QStringList lines = QString::fromUtf8(kFrozenContract).split(QLatin1Char('\n'));
    QStringList result;
    for (int i = lines.indexOf(heading) + 1; i < lines.size() && !lines.at(i).isEmpty(); ++i)
        result += lines.at(i);
    return result;
}

// What the first list has beyond the second.
QString beyond(const QStringList &list, const QStringList &other)
{
    constexpr int kShown = 8;
    QStringList rest;
    std::copy_if(list.begin(), list.end(), std::back_inserter(rest),
                 [&other](const QString &name) { return !other.contains(name); });
    const int more = rest.size() - kShown;
    return rest.mid(0, kShown).join(QStringLiteral(", ")) +
           (more > 0 ? QStringLiteral(" and %1 more").arg(more) : QString());
}

} // namespace

QString machineName(int machine)
{
    const Word *known = wordOf(kMachines, machine);
    return known ? QLatin1String(known->name) : QStringLiteral("machine %1").arg(machine);
}

QString defaultPluginFile()
{
    const QString directory = QCoreApplication::applicationDirPath();
    const QString name = QStringLiteral("libvarne_Ford.so.1");
    for (const char *place : {"/../lib/", "/../" CANBENCH_LIBDIR "/"}) {
        const QFileInfo file(directory + QLatin1String(place) + name);
        if (file.exists())
            return file.canonicalFilePath();
    }
    return QDir::cleanPath(directory + QStringLiteral("/../lib/") + name);
}

PluginFile examinePlugin(const QString &file)
{
    PluginFile result;
    if (file.isEmpty()) {
        result.problem = QStringLiteral("its name is empty; name a file");
        return result;
    }
    result.path = QFileInfo(file).absoluteFilePath();
    result.problem = fileProblem(result.path);
    if (!result.problem.isEmpty())
        return result;
    result.tables = readElf(result.path);
    result.metaData = readMetaData(result.tables.metaData);
    for (const QString &problem : {libraryProblem(result.tables), machineProblem(result.tables),
                                   metaDataProblem(result.metaData)})
        if (result.problem.isEmpty())
            result.problem = problem;
    if (result.problem.isEmpty())
        result.problem = tryLoading(result.path, &result.className);
    return result;
}

QStringList contractDifferences(const ElfFile &library)
{
    const QStringList imports =
        frozenLines(QStringLiteral("# Symbols imported from the host library"));
    const QStringList exports = frozenLines(QStringLiteral("# Exported symbols"));
    QStringList lines;
    const auto tell = [&lines](const char *what, const QString &names) {
        if (!names.isEmpty())
            lines += QLatin1String(what) + names;
    };
    tell("asks the host for what is not agreed: ", beyond(library.imports, imports));
    tell("does not ask the host for: ", beyond(imports, library.imports));
    tell("does not offer to the host: ", beyond(exports, library.exports));
    return lines;
}

} // namespace bench
