#include "bench/commands/commandline.h"
#include "bench/headunit/pluginfile.h"

#include <QJsonDocument>

namespace bench {

namespace {

void tell(const char *what, const QString &text)
{
    if (!text.isEmpty())
        say(QStringLiteral("  %1 %2").arg(QLatin1String(what), -10).arg(text));
}

void tellTables(const PluginFile &plugin)
{
    const ElfFile &tables = plugin.tables;
    const QLatin1String gap("  ");
    tell("built for", tables.machine == 0 ? QString() : machineName(tables.machine));
    tell("metadata",
         plugin.metaData.isEmpty()
             ? QString()
             : QString::fromUtf8(QJsonDocument(plugin.metaData).toJson(QJsonDocument::Compact)));
    tell("needs", tables.needed.join(gap));
    tell("versions", tables.versions.join(gap));
    if (plugin.metaData.isEmpty())
        return; // Whatever it is, it is not for this host.
    const QStringList differences = contractDifferences(tables);
    if (differences.isEmpty())
        tell("host",
             QStringLiteral("asks it for %1 symbols, as agreed").arg(tables.imports.size()));
    for (const QString &difference : differences)
        tell("host", difference);
}

} // namespace

int doctorCommand(const QStringList &arguments)
{
    CommandLine line("doctor", "[options] [FILE]",
                     "Says whether FILE can be loaded as the CAN service plug-in and why not, and\n"
                     "shows what it says of itself: machine, metadata, libraries and versions of\n"
                     "symbols that it needs, and whether it asks of the host what is agreed. A\n"
                     "file for another machine is read, too. Without FILE: the plug-in of this\n"
                     "build.",
                     "canbench doctor\n"
                     "canbench doctor /usr/lib/headunit/libvarne_Ford.so");
    if (const auto code = line.read(arguments, 1))
        return *code;

    const QStringList given = line.positionalArguments();
    const PluginFile plugin = examinePlugin(given.isEmpty() ? defaultPluginFile() : given.first());
    if (!plugin.path.isEmpty())
        say(plugin.path);
    tellTables(plugin);
    if (!plugin.problem.isEmpty()) {
        say(QStringLiteral("Not loadable: ") + plugin.problem);
        return Failed;
    }
    say(QStringLiteral("Loadable: its service is a %1.").arg(plugin.className));
    return Done;
}

} // namespace bench
