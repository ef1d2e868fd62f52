// canbench: try, test and watch the CAN service without a car.
#include "bench/commands/commandline.h"
#include "bench/language/closestname.h"
#include "bench/screen/output.h"
#include "bench/wire/tables.h"

#include <QCoreApplication>

namespace {

constexpr bench::Subcommand kCommands[] = {
    {"run", "run the plug-in on the embedded box or on a device and print what happens",
     bench::runCommand},
    {"play", "play a scenario with expectations on the embedded car", bench::playCommand},
    {"decode", "show what a trace holds and what the plug-in makes of it", bench::decodeCommand},
    {"box", "be the box and its car on a pseudo terminal or a device, for any host",
     bench::boxCommand},
    {"diff", "tell what the hosts of two traces saw differently", bench::diffCommand},
    {"tap", "sit between a head unit and its box and show what passes", bench::tapCommand},
    {"send", "send steps to a 'run', 'box' or 'tap' that has a --control channel",
     bench::sendCommand},
    {"replay", "send a trace to the plug-in or to a device, in its own time", bench::replayCommand},
    {"export", "write a trace for the CAN tools or for a packet analyser", bench::exportCommand},
    {"tour", "a guided run of 15 s through what the plug-in does", bench::tourCommand},
    {"soak", "hours of traffic with all faults, and a look at memory, descriptors and state",
     bench::soakCommand},
    {"names", "list the values, getters, signals and events by name", bench::namesCommand},
    {"doctor", "say whether a file can be loaded as the plug-in, and why not",
     bench::doctorCommand},
};

QString overview()
{
    QString text = QStringLiteral("Usage: canbench COMMAND [options]\n\nCommands:\n");
    for (const bench::Subcommand &command : kCommands)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -8)
                    .arg(QLatin1String(command.summary));
    return text + QStringLiteral("\n'canbench help COMMAND' tells more, with examples.");
}

int runProgram(const QStringList &arguments)
{
    const QString name = arguments.value(1);
    if (const auto *command = bench::findNamed(kCommands, name))
        return command->run(arguments.mid(2));

    const bool isHelp = name == QLatin1String("help");
    if (isHelp && arguments.size() > 2)
        return runProgram({arguments.first(), arguments.at(2), QStringLiteral("--help")});
    if (isHelp || name == QLatin1String("--help") || name == QLatin1String("-h")) {
        bench::say(overview());
        return bench::Done;
    }
    if (name == QLatin1String("--version")) {
        bench::say(QStringLiteral("canbench ") + QCoreApplication::applicationVersion());
        return bench::Done;
    }
    bench::fail(name.isEmpty() ? QStringLiteral("a command is needed")
                : name.startsWith('-')
                    ? QStringLiteral("there is no option '%1' before a command").arg(name)
                    : QStringLiteral("there is no command '%1'%2")
                          .arg(name, bench::didYouMean(name, bench::namesOf(kCommands))));
    bench::standardError().line(QStringLiteral("Try 'canbench --help'."));
    return bench::WrongUsage;
}

} // namespace

int main(int argc, char **argv)
{
    bench::prepareStandardStreams();
    // Qt's own event loop: a decoder runs it for each line of a recording, and it is the quicker
    // one.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("canbench"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CANBENCH_VERSION));
    return bench::finishStandardStreams(runProgram(QCoreApplication::arguments()));
}
