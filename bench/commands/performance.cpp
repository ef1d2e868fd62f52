#include "bench/commands/performance.h"

#include "bench/language/runner.h"
#include "bench/recording/pagerecorder.h"
#include "bench/screen/output.h"

#include <QElapsedTimer>

#include <unistd.h>
#include <utility>

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

/// Divides a performance at its `say` steps.
class Reporter
{
public:
    Reporter(const Runner &runner, const QString &name)
        : mRunner(runner)
    {
        mSuite.name = name;
        mClock.start();
    }

    void onSaid(const QString &text)
    {
        endPart();
        mName = text;
    }

    ReportSuite finish(Runner::Result result, int code, const QString &failure,
                       const QVector<Step> &steps)
    {
        endPart();
        ReportCase &last = mSuite.cases.last();
        if (result == Runner::Passed && code == Done)
            return mSuite;
        last.outcome = result == Runner::Unmet ? ReportCase::Unmet : ReportCase::Broken;
        last.message = result == Runner::Passed
                           ? QStringLiteral("the host does not show what the car is")
                           : failure;
        if (result == Runner::Unmet)
            last.detail = QStringLiteral("%1:%2: expected %3, but %4")
                              .arg(mSuite.name)
                              .arg(mRunner.line())
                              .arg(mRunner.expected(), mRunner.actual());
        for (const Step &step : steps)
            if (const auto *say = std::get_if<steps::Say>(&step.action))
                if (result != Runner::Passed && step.line > mRunner.line())
                    mSuite.cases.append({say->text, 0, 0, ReportCase::NotReached, {}, {}});
        return mSuite;
    }

private:
    void endPart()
    {
        const double seconds = static_cast<double>(mClock.restart()) / 1000;
        const int met = mRunner.expectationsMet() - std::exchange(mMet, mRunner.expectationsMet());
        mSuite.cases.append({mName, seconds, met, ReportCase::Passed, {}, {}});
    }

    const Runner &mRunner;
    ReportSuite mSuite;
    QString mName = QStringLiteral("before the first heading");
    QElapsedTimer mClock;
    int mMet = 0;
};

} // namespace

int perform(const Scenario &scenario, const QString &name, double speed, RunOptions options,
            std::unique_ptr<LineInput> *person, ReportSuite *report)
{
    options.session.carModel = scenario.carModel;
    options.session.carIndex = scenario.carIndex;
    options.terse = true;
    SessionRun run(options);
    Session &session = run.session();
    QObject::connect(&session, &Session::happened,
                     [&](const Event &event) { run.printer().print(event, session.state()); });
    Runner runner(Stage(session), speed);
    Reporter reporter(runner, name);
    QString silence; // Why nobody answers.
    const auto leave = [&] {
        silence = QStringLiteral("the standard input has ended, and nobody is there to act; "
                                 "--unattended tells the lines");
        runner.abort();
    };
    QObject::connect(&runner, &Runner::asked, [&, isKnown = false](const QString &text) mutable {
        standardError().line(text); // Standard output may be for a program.
        if (!*person)
            *person = std::make_unique<LineInput>(STDIN_FILENO, 4096);
        LineInput *lines = person->get();
        if (!std::exchange(isKnown, true)) {
            QObject::connect(lines, &LineInput::line, &runner, [&runner, lines] {
                // In a file or a pipe, each line is for the next prompt, and the end is none yet.
                // What is typed ahead is for nothing.
                lines->setPaused(!isatty(STDIN_FILENO));
                runner.answer();
            });
            QObject::connect(lines, &LineInput::ended, &runner, leave);
        }
        if (lines->hasEnded())
            leave();
        lines->setPaused(false);
    });
    QObject::connect(&runner, &Runner::said, [&](const QString &text) {
        reporter.onSaid(text);
        run.printer().heading(text, session.seconds());
    });
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
    int code = run.finish(!silence.isEmpty()          ? int(Failed)
                          : result == Runner::Aborted ? SignalBase + run.unixSignals().latest()
                          : result == Runner::Passed  ? int(Done)
                          : result == Runner::Unmet   ? int(ExpectationFailed)
                                                      : int(Failed));
    problem = page ? page->finish() : QString();
    if (!problem.isEmpty()) {
        fail(problem);
        code = code == Done ? int(Failed) : code;
    }
    if (result == Runner::Aborted && silence.isEmpty())
        return code;
    const QString failure = silence.isEmpty() ? runner.failure() : silence;
    if (report)
        *report = reporter.finish(result, code, failure, scenario.steps);
    const QString file = runner.file().isEmpty() ? name : runner.file();
    const QString outcome = code == Done ? QStringLiteral("passed") : QStringLiteral("failed");
    Members members{
        {"scenario", name}, {"result", outcome}, {"expectationsMet", runner.expectationsMet()}};
    if (result != Runner::Passed)
        members += {{"file", file},
                    {"line", runner.line()},
                    {"expected", runner.expected()},
                    {"actual", runner.actual()},
                    {"failure", failure}};
    if (run.printer().format() == Printer::Text)
        run.printer().outcome({}, {});
    run.printer().outcome(QStringLiteral("%1 %2, expectations met: %3")
                              .arg(name, outcome)
                              .arg(runner.expectationsMet()),
                          members);
    if (result != Runner::Passed)
        standardError().line(QStringLiteral("%1:%2: %3").arg(file).arg(runner.line()).arg(failure));
    return code;
}

} // namespace bench
