#include "commandline.h"
#include "eventprinter.h"
#include "pluginfile.h"
#include "scenarioplayer.h"
#include "tracerecorder.h"
#include "unixsignals.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>

#include <cstdio>

namespace bench {

namespace {

void addOptions(CommandLine *line)
{
    line->addPositionalArgument("FILE", "The scenario; - is the standard input.");
    line->addOptions({
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"speed",
         "Play waits and ramps X times as fast (default 1). The times of presses and "
         "expectations stay: the service's timers do, too.",
         "X"},
        {"seed", "The same seed gives the same faults (default 1).", "N"},
        {"trace", "Record the serial line to FILE.", "FILE"},
        {"force", "Replace FILE of --trace if it exists."},
        {"check", "Only read the scenario and say what is wrong with it."},
        {"syntax", "List the forms of the steps."},
        {"json", "One JSON object a line."},
        {"log", "Show the service's own log on standard error."},
    });
}

bool readSpeed(const QString &text, double *speed)
{
    bool isNumber = false;
    *speed = text.toDouble(&isNumber);
    return isNumber && *speed >= 0.001 && *speed <= 1000;
}

// \returns an empty text, or why the file cannot be read.
QString readScenario(const QString &name, QByteArray *text)
{
    constexpr qint64 kLargest = 1024 * 1024;
    QFile file(name);
    const bool isOpen =
        name == "-" ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        return QStringLiteral("cannot read '%1': %2").arg(name, file.errorString());
    *text = file.read(kLargest + 1);
    if (file.error() != QFileDevice::NoError)
        return QStringLiteral("cannot read '%1': %2").arg(name, file.errorString());
    if (text->size() > kLargest)
        return QStringLiteral("'%1' is larger than 1 MiB; that is no scenario").arg(name);
    return {};
}

int complainAbout(const QString &file, const QVector<Mistake> &mistakes)
{
    constexpr int kShown = 20;
    for (const Mistake &mistake : mistakes.mid(0, kShown))
        std::fprintf(stderr, "%s:%d:%d: %s\n", qUtf8Printable(file), mistake.line, mistake.column,
                     qUtf8Printable(mistake.text));
    if (mistakes.size() > kShown)
        fail(QStringLiteral("%1 more mistakes in '%2'").arg(mistakes.size() - kShown).arg(file));
    return WrongUsage;
}

void printResult(bool json, const QString &file, bool passed, int met)
{
    const QString result = passed ? QStringLiteral("passed") : QStringLiteral("failed");
    if (json)
        say(QString::fromUtf8(
            QJsonDocument(
                QJsonObject{{"scenario", file}, {"result", result}, {"expectationsMet", met}})
                .toJson(QJsonDocument::Compact)));
    else
        say(QStringLiteral("\n%1 %2, expectations met: %3").arg(file, result).arg(met));
}

struct PlaySettings
{
    double speed = 1;
    quint32 seed = 1;
};

int play(const CommandLine &line, const PlaySettings &settings, const QString &file,
         const Scenario &scenario)
{
    const bool json = line.isSet("json");
    UnixSignals unixSignals;
    SessionOptions options;
    options.plugin = line.value("plugin");
    options.carModel = scenario.carModel;
    options.carIndex = scenario.carIndex;
    Session session(options);
    EventPrinter printer(json ? EventPrinter::Json : EventPrinter::Text);
    printer.setTerse(true);
    QObject::connect(&session, &Session::happened,
                     [&](const Event &event) { printer.print(event, session.state()); });

    ScenarioPlayer player(&session, settings.speed, settings.seed);
    QObject::connect(&player, &ScenarioPlayer::said,
                     [&](const QString &text) { printer.heading(text); });
    QObject::connect(&unixSignals, &UnixSignals::caught, [&player] { player.abort(); });

    TraceRecorder recorder;
    if (line.isSet("trace")) {
        const QString plugin = options.plugin.isEmpty() ? defaultPluginFile() : options.plugin;
        const QString problem =
            recorder.start({line.value("trace"), {file, plugin}, line.isSet("force")}, "canbox");
        if (!problem.isEmpty())
            return fail(problem);
    }
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    const QVector<Mistake> mistakes = checkExpectations(scenario, session.readState());
    if (!mistakes.isEmpty())
        return complainAbout(file, mistakes);
    const ScenarioPlayer::Result result = player.play(scenario);
    session.stop();
    printer.print(session.summary(), session.seconds());
    if (player.faults())
        printer.print(QStringLiteral("faults"), player.faults()->summary());
    if (!recorder.problem().isEmpty())
        fail(recorder.problem());
    if (result == ScenarioPlayer::Aborted)
        return SignalBase + unixSignals.latest();
    printResult(json, file, result == ScenarioPlayer::Passed, player.expectationsMet());
    if (result == ScenarioPlayer::Passed)
        return recorder.problem().isEmpty() ? Done : Failed;
    std::fprintf(stderr, "%s:%d: %s\n", qUtf8Printable(file), player.line(),
                 qUtf8Printable(player.failure()));
    return result == ScenarioPlayer::Unmet ? ExpectationFailed : Failed;
}

} // namespace

int playCommand(const QStringList &arguments)
{
    CommandLine line(
        "play", "[options] FILE",
        "Plays a scenario: the steps of a text file, one a line, on the embedded car, its\n"
        "box and the host, with expectations of what the service tells. Mistakes in the\n"
        "file are told before anything runs. Exit code 3: an expectation was not met.",
        "canbench play bench/scenarios/parking.scenario\n"
        "canbench play --speed 10 bench/scenarios/parking.scenario\n"
        "canbench play --check my.scenario");
    addOptions(&line);
    if (const auto code = line.read(arguments, 1))
        return *code;
    if (line.isSet("syntax")) {
        say(scenarioSyntax().trimmed());
        return Done;
    }
    PlaySettings settings;
    settings.seed = static_cast<quint32>(line.number("seed", 1, 0, 0x7FFFFFFF));
    if (line.isWrong())
        return WrongUsage;
    if (line.isSet("speed") && !readSpeed(line.value("speed"), &settings.speed))
        return line.complain(QStringLiteral("--speed needs a number from 0.001 to 1000, not '%1'")
                                 .arg(line.value("speed")));
    if (line.positionalArguments().isEmpty())
        return line.complain(QStringLiteral("a scenario file is needed"));

    const QString file = line.positionalArguments().constFirst();
    QByteArray text;
    const QString problem = readScenario(file, &text);
    if (!problem.isEmpty())
        return fail(problem);
    const Scenario scenario = parseScenario(text);
    if (!scenario.mistakes.isEmpty())
        return complainAbout(file, scenario.mistakes);
    // On a bad line the service's errors would bury what is told about the scenario.
    QLoggingCategory::setFilterRules(line.isSet("log") ? "default.debug=true" : "default=false");
    return line.isSet("check") ? Done : play(line, settings, file, scenario);
}

} // namespace bench
