#include "bench/commands/performance.h"
#include "bench/commands/scenariofile.h"
#include "bench/language/parser.h"
#include "bench/language/prompts.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>

namespace bench {

namespace {

void addPlayOptions(CommandLine *line)
{
    line->addPositionalArgument(
        "FILE", "The scenario; - is the standard input, and a folder all of its *.scenario files.");
    addSessionOptions(line);
    line->addOptions({
        {"speed",
         "Play waits and ramps X times as fast, 0.001 to 1000 (default 1). The times of presses "
         "and expectations stay: the service's timers do, too.",
         "X"},
        {"report", "Write a page of plots of what happened to FILE.", "FILE"},
        {"device",
         "Play on the real box on the serial device DEV: what the car is to do becomes a prompt.",
         "DEV"},
        {"unattended", "With --device, tell the lines that need somebody at the car, and end."},
        {"junit", "Write a report for build servers to FILE, in the format of JUnit.", "FILE"},
        {"check", "Only read the scenario and say what is wrong with it."},
        {"syntax", "List the forms of the steps."},
    });
}

bool expectsAnything(const Scenario &scenario)
{
    return std::any_of(scenario.steps.begin(), scenario.steps.end(),
                       [](const Step &step) { return isExpectation(step.action); });
}

struct Play
{
    QString file;
    Scenario scenario;
};

// The files that an argument stands for. \returns an empty text, or what is wrong.
QString findFiles(const QString &argument, QStringList *files)
{
    if (!QFileInfo(argument).isDir()) {
        files->append(argument);
        return {};
    }
    const QDir folder(argument);
    const QStringList names = folder.entryList({"*.scenario"}, QDir::Files, QDir::Name);
    for (const QString &name : names)
        files->append(folder.filePath(name));
    return names.isEmpty() ? QStringLiteral("there is no *.scenario file in '%1'").arg(argument)
                           : QString();
}

// On a real box, what becomes of the steps of the virtual one.
QVector<Mistake> adaptToDevice(Scenario *scenario, bool isUnattended)
{
    const QVector<Step> prompts = makePrompts(&scenario->steps);
    QVector<Mistake> mistakes = findObstacles(scenario->steps, NeedsHost);
    if (isUnattended)
        for (const Step &step : prompts)
            mistakes.append({step.line, step.column,
                             QStringLiteral("'%1' needs somebody at the car").arg(step.text)});
    std::stable_sort(mistakes.begin(), mistakes.end(),
                     [](const Mistake &a, const Mistake &b) { return a.line < b.line; });
    return mistakes;
}

// Reads all of them, so that every mistake is told before anything runs.
int readScenarios(const CommandLine &line, QVector<Play> *plays)
{
    int code = Done;
    QStringList files;
    for (const QString &argument : line.positionalArguments()) {
        const QString problem = findFiles(argument, &files);
        if (!problem.isEmpty())
            return fail(problem);
    }
    for (const QString &file : qAsConst(files)) {
        QByteArray text;
        const QString problem = readScenarioFile(file, &text);
        if (!problem.isEmpty())
            return fail(problem);
        Scenario scenario = parseScenario(text, file, readScenarioFile);
        if (scenario.mistakes.isEmpty() && line.isSet("device"))
            scenario.mistakes = adaptToDevice(&scenario, line.isSet("unattended"));
        if (!scenario.mistakes.isEmpty())
            code = complainAbout(file, scenario.mistakes);
        else if (!expectsAnything(scenario))
            fail(QStringLiteral("'%1' expects nothing, so it shows nothing to be right").arg(file));
        plays->append({file, scenario});
    }
    return code;
}

// \returns the exit code of all: that of the first that did not pass, but an expectation that was
// not met before all else.
int playAll(const QVector<Play> &plays, double speed, const RunOptions &options,
            QVector<ReportSuite> *reports)
{
    int code = Done;
    QStringList failed;
    std::unique_ptr<LineInput> person;
    for (const Play &play : plays) {
        ReportSuite report;
        report.name = play.file;
        const int result = perform(play.scenario, play.file, speed, options, &person, &report);
        reports->append(report);
        if (result > SignalBase)
            return result;
        if (result != Done)
            failed += play.file;
        if (code == Done || result == ExpectationFailed)
            code = result != Done ? result : code;
    }
    if (plays.size() > 1)
        Printer(options.format)
            .outcome(
                QStringLiteral("%1 scenarios, %2 passed, %3 failed%4")
                    .arg(plays.size())
                    .arg(plays.size() - failed.size())
                    .arg(failed.size())
                    .arg(failed.isEmpty() ? QString() : QStringLiteral(": ") + failed.join(", ")),
                {{"scenarios", plays.size()},
                 {"passed", plays.size() - failed.size()},
                 {"failed", failed.size()}});
    return code;
}

} // namespace

int playCommand(const QStringList &arguments)
{
    CommandLine line(
        "play", "[options] FILE...",
        "Plays a scenario: the steps of a text file, one a line, on the embedded car, its\n"
        "box and the host, with expectations of what the service tells. Mistakes in the\n"
        "file are told before anything runs. With --device the box is a real one, and what\n"
        "the virtual car would do is asked of a person. Exit code 3: an expectation was not\n"
        "met.",
        "canbench play bench/scenarios/parking.scenario\n"
        "canbench play --speed 10 bench/scenarios/parking.scenario\n"
        "canbench play --check my.scenario\n"
        "canbench play --junit report.xml bench/scenarios\n"
        "canbench play --device /dev/ttyUSB0 my.scenario");
    addPlayOptions(&line);
    if (const auto code = line.read(arguments, 10000))
        return *code;
    if (line.isSet("syntax")) {
        say(scenarioSyntax().trimmed());
        return Done;
    }
    RunOptions options = readSessionOptions(&line);
    if (line.isSet("report") && line.value("report").isEmpty())
        line.complain("--report needs the name of a file");
    options.report = line.value("report");
    const double speed = line.factor("speed", 1, 0.001, 1000);
    if (line.isWrong())
        return WrongUsage;
    if (line.positionalArguments().isEmpty())
        return line.complain("a scenario file is needed");

    for (const char *option : {"device", "junit"})
        if (line.isSet(option) && line.value(option).isEmpty())
            return line.complain(QStringLiteral("--%1 needs a name").arg(option));
    if (line.isSet("unattended") && !line.isSet("device"))
        return line.complain("--unattended is for a --device");

    QVector<Play> plays;
    if (const int code = readScenarios(line, &plays))
        return code;
    for (const Play &play : qAsConst(plays))
        options.inputs += play.file;
    if (plays.size() > 1 && line.isSet("trace"))
        return line.complain("--trace records one scenario, not several");
    if (line.isSet("check"))
        return Done;
    OutputFile file;
    if (line.isSet("junit")) {
        const QString problem =
            file.open({line.value("junit"), options.inputs, options.force}, OutputFile::Whole);
        if (!problem.isEmpty())
            return fail(problem);
    }
    // On a bad line the service's errors would bury what is told about the scenario.
    QLoggingCategory::setFilterRules(line.isSet("log") ? "default.debug=true" : "default=false");
    options.session.device = line.value("device");
    QVector<ReportSuite> reports;
    const int code = playAll(plays, speed, options, &reports);
    if (!line.isSet("junit") || code > SignalBase)
        return code;
    QString problem = file.write(junitReport(reports));
    if (problem.isEmpty())
        problem = file.commit();
    if (!problem.isEmpty())
        fail(problem);
    return problem.isEmpty() || code != Done ? code : int(Failed);
}

} // namespace bench
