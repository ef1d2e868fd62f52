#include "bench/commands/commandline.h"
#include "bench/headunit/pluginfile.h"
#include "bench/headunit/pluginhost.h"

#include <QJsonDocument>
#include <QLoggingCategory>

namespace bench {

int doctorCommand(const QStringList &arguments)
{
    CommandLine line("doctor", "[options] [FILE]",
                     "Says whether FILE can be loaded as the CAN service plug-in and why not, and\n"
                     "shows its metadata. Without FILE: the plug-in of this build.",
                     "canbench doctor\n"
                     "canbench doctor /usr/lib/headunit/libvarne_Ford.so");
    if (const auto code = line.read(arguments, 1))
        return *code;

    const QString given = line.positionalArguments().value(0);
    const PluginFile plugin = examinePlugin(given.isEmpty() ? defaultPluginFile() : given);
    say(plugin.path);
    if (!plugin.metaData.isEmpty())
        say(QString::fromUtf8(QJsonDocument(plugin.metaData).toJson()).trimmed());

    QLoggingCategory::setFilterRules("default=false"); // It will miss a serial device.
    PluginHost host;
    QString problem = plugin.problem;
    if (problem.isEmpty())
        problem = host.load(plugin.path);
    if (!problem.isEmpty()) {
        say(QStringLiteral("Not loadable: ") + problem);
        return Failed;
    }
    say(QStringLiteral("Loadable: its service is a %1.")
            .arg(QLatin1String(host.service()->metaObject()->className())));
    return Done;
}

} // namespace bench
