#include "bench/commands/performance.h"

#include "bench/language/runner.h"
#include "bench/recording/pagerecorder.h"
#include "bench/screen/output.h"

namespace bench {

namespace {

QString startReport(PageRecorder *page, const QString &name, const RunOptions &options)
{
    QStringList others{pluginFile(options.session)};
    others += options.inputs;
    if (!options.trace.isEmpty())
        others += options.trace;
    return page->start({options.report, others, options.force}, name);
}

} // namespace

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

    std::unique_ptr<PageRecorder> page;
    QString problem;
    if (!options.report.isEmpty()) {
        page = std::make_unique<PageRecorder>(&session);
        problem = startReport(page.get(), name, options);
        QObject::connect(&runner, &Runner::said, page.get(), &PageRecorder::say);
    }
    if (problem.isEmpty())
        problem = run.open();
    if (!problem.isEmpty())
        return fail(problem);
    const Runner::Result result = runner.play(scenario.steps);
    if (page && result == Runner::Unmet)
        page->unmet(QStringLiteral("line %1: %2").arg(runner.line()).arg(runner.failure()));
    int code = run.finish(result == Runner::Aborted  ? SignalBase + run.unixSignals().latest()
                          : result == Runner::Passed ? int(Done)
                          : result == Runner::Unmet  ? int(ExpectationFailed)
                                                     : int(Failed));
    problem = page ? page->finish() : QString();
    if (!problem.isEmpty()) {
        fail(problem);
        code = code == Done ? int(Failed) : code;
    }
    if (result == Runner::Aborted)
        return code;
    const QString file = runner.file().isEmpty() ? name : runner.file();
    const QString outcome = code == Done ? QStringLiteral("passed") : QStringLiteral("failed");
    QVector<QPair<const char *, Value>> members{
        {"scenario", name}, {"result", outcome}, {"expectationsMet", runner.expectationsMet()}};
    if (result != Runner::Passed)
        members += {{"file", file},
                    {"line", runner.line()},
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
            QStringLiteral("%1:%2: %3").arg(file).arg(runner.line()).arg(runner.failure()));
    return code;
}

} // namespace bench
