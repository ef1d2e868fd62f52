#include "bench/headunit/pluginfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPluginLoader>

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <iterator>

namespace bench {

namespace {

constexpr char kPluginId[] = "com.quendal.CanServicePlugin";

struct Machine
{
    int code;
    const char *name;
};

constexpr Machine kMachines[] = {
    {EM_X86_64, "x86-64"},  {EM_386, "32-bit x86"}, {EM_AARCH64, "64-bit ARM"},
    {EM_ARM, "32-bit ARM"}, {EM_RISCV, "RISC-V"},
};

QString machineName(int code)
{
    const auto *machine = std::find_if(std::begin(kMachines), std::end(kMachines),
                                       [code](const Machine &row) { return row.code == code; });
    return machine == std::end(kMachines) ? QStringLiteral("machine %1").arg(code)
                                          : QLatin1String(machine->name);
}

// The part of an ELF header that both word sizes share.
struct Header
{
    bool isElf = false;
    bool isShared = false;
    int machine = 0;
};

Header readHeader(const QString &path)
{
    QFile file(path);
    Elf32_Ehdr start;
    const QByteArray bytes =
        file.open(QIODevice::ReadOnly) ? file.read(sizeof start) : QByteArray();
    if (bytes.size() < static_cast<int>(sizeof start) || !bytes.startsWith(ELFMAG))
        return {};
    std::memcpy(&start, bytes.constData(), sizeof start);
    return {true, start.e_type == ET_DYN, start.e_machine};
}

QString libraryProblem(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("there is no such file");
    if (!info.isFile())
        return QStringLiteral("it is not a file");
    if (!info.isReadable())
        return QStringLiteral("you may not read it");
    const Header header = readHeader(path);
    if (!header.isElf)
        return QStringLiteral("it is not a library (no ELF file)");
    const Header own = readHeader(QStringLiteral("/proc/self/exe"));
    if (own.isElf && header.machine != own.machine)
        return QStringLiteral("it is built for %1, and this program runs on %2")
            .arg(machineName(header.machine), machineName(own.machine));
    if (!header.isShared)
        return QStringLiteral("it is not a shared library (some other kind of ELF file)");
    return {};
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

QString loadProblem(const QString &error)
{
    if (error.contains(QLatin1String("undefined symbol")))
        return QStringLiteral("a symbol that it needs is missing, so it was built against another "
                              "host library: ") +
               error;
    if (error.contains(QLatin1String("cannot open shared object file")))
        return QStringLiteral("a library that it needs is not found; see LD_LIBRARY_PATH: ") +
               error;
    return error;
}

} // namespace

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
    result.path = QFileInfo(file).absoluteFilePath();
    result.problem = libraryProblem(result.path);
    if (!result.problem.isEmpty())
        return result;

    QPluginLoader loader(result.path);
    result.metaData = loader.metaData();
    result.problem = metaDataProblem(result.metaData);
    if (!result.problem.isEmpty())
        return result;

    // All symbols at once: a missing one shall show here, not at its first call.
    loader.setLoadHints(loader.loadHints() | QLibrary::ResolveAllSymbolsHint);
    if (!loader.load())
        result.problem = loadProblem(loader.errorString());
    loader.unload(); // Or the host's own loader could not destroy its service.
    return result;
}

} // namespace bench
