#include "bench/commands/performance.h"

#include "bench/language/runner.h"
#include "bench/screen/output.h"

namespace bench {

int perform(const Scenario &scenario, const QString &name, double speed, RunOptions options)
{
    options.session.carModel = scenario.carModel;
    options.session.carIndex = scenario.carIndex;
    options.terse = true;
    SessionRun run(options);
    Session &session = run.session();
    QObject::connect(&session, &Session::happened,
                     [&](const Event &event) { run.printer().print(event, session.state()); });
    Runner runner(Stage(session), speed);
    QObject::connect(&runner, &Runner::said,
                     [&](const QString &text) { run.printer().heading(text, session.seconds()); });
    QObject::connect(&run.unixSignals(), &UnixSignals::caught, [&runner] { runner.abort(); });

    const QString problem = run.open();
    if (!problem.isEmpty())
        return fail(problem);
    const Runner::Result result = runner.play(scenario.steps);
    if (result == Runner::Aborted)
        return run.finish(SignalBase + run.unixSignals().latest());
    const int code = run.finish(result == Runner::Passed  ? Done
                                : result == Runner::Unmet ? ExpectationFailed
                                                          : Failed);
    const QString outcome = code == Done ? QStringLiteral("passed") : QStringLiteral("failed");
    QVector<QPair<const char *, Value>> members{
        {"scenario", name}, {"result", outcome}, {"expectationsMet", runner.expectationsMet()}};
    if (result != Runner::Passed)
        members += {{"line", runner.line()},
                    {"expected", runner.expected()},
                    {"actual", runner.actual()},
                    {"failure", runner.failure()}};
    if (run.printer().format() == Printer::Text)
        run.printer().outcome({}, {});
    run.printer().outcome(QStringLiteral("%1 %2, expectations met: %3")
                              .arg(name, outcome)
                              .arg(runner.expectationsMet()),
                          members);
    if (result != Runner::Passed)
        standardError().line(
            QStringLiteral("%1:%2: %3").arg(name).arg(runner.line()).arg(runner.failure()));
    return code;
}

} // namespace bench
