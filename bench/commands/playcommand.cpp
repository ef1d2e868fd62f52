#include "bench/commands/performance.h"
#include "bench/commands/scenariofile.h"
#include "bench/language/parser.h"

#include <QLoggingCategory>

#include <algorithm>

namespace bench {

namespace {

void addOptions(CommandLine *line)
{
    line->addPositionalArgument("FILE", "The scenario; - is the standard input.");
    addSessionOptions(line);
    line->addOptions({
        {"speed",
         "Play waits and ramps X times as fast, 0.001 to 1000 (default 1). The times of presses "
         "and expectations stay: the service's timers do, too.",
         "X"},
        {"report", "Write a page of plots of what happened to FILE.", "FILE"},
        {"check", "Only read the scenario and say what is wrong with it."},
        {"syntax", "List the forms of the steps."},
    });
}

bool expectsAnything(const Scenario &scenario)
{
    return std::any_of(scenario.steps.begin(), scenario.steps.end(),
                       [](const Step &step) { return isExpectation(step.action); });
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
    RunOptions options = readSessionOptions(&line);
    if (line.isSet("report") && line.value("report").isEmpty())
        line.complain("--report needs the name of a file");
    options.report = line.value("report");
    const double speed = line.factor("speed", 1, 0.001, 1000);
    if (line.isWrong())
        return WrongUsage;
    if (line.positionalArguments().isEmpty())
        return line.complain("a scenario file is needed");

    const QString file = line.positionalArguments().constFirst();
    QByteArray text;
    const QString problem = readScenarioFile(file, &text);
    if (!problem.isEmpty())
        return fail(problem);
    const Scenario scenario = parseScenario(text, file, readScenarioFile);
    if (!scenario.mistakes.isEmpty())
        return complainAbout(file, scenario.mistakes);
    if (!expectsAnything(scenario))
        fail(QStringLiteral("'%1' expects nothing, so it shows nothing to be right").arg(file));
    // On a bad line the service's errors would bury what is told about the scenario.
    QLoggingCategory::setFilterRules(line.isSet("log") ? "default.debug=true" : "default=false");
    options.inputs = QStringList(file);
    return line.isSet("check") ? int(Done) : perform(scenario, file, speed, options);
}

} // namespace bench
