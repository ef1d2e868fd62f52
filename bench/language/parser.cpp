#include "scenario.h"

#include "scenariosteps.h"

#include <QTextCodec>

namespace bench {

namespace {

void readLine(const QString &text, int number, ScenarioContext &context)
{
    Scenario &scenario = *context.scenario;
    Mistake mistake{number, 0, {}};
    const QVector<Token> tokens = cutLine(text, &mistake);
    if (!mistake.text.isEmpty())
        return scenario.mistakes.append(mistake);
    if (tokens.isEmpty())
        return;
    const Token &last = tokens.last();
    const int firstStep = scenario.steps.size();
    LineReader line(tokens, number);
    if (!readStep(line, context))
        scenario.mistakes.append(line.mistake());
    const QString shown = text.left(last.endColumn - 1).trimmed();
    for (int i = firstStep; i < scenario.steps.size(); ++i) {
        scenario.steps[i].line = number;
        scenario.steps[i].text = shown;
    }
}

} // namespace

Scenario parseScenario(const QByteArray &text)
{
    Scenario scenario;
    ScenarioContext context{&scenario};
    int number = 0;
    for (const QByteArray &bytes : text.split('\n')) {
        ++number;
        QTextCodec::ConverterState state;
        const QString line =
            QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
        if (state.invalidChars > 0 || state.remainingChars > 0 || bytes.contains('\0')) {
            scenario.mistakes.append({number, 1, QStringLiteral("this line is not UTF-8 text")});
            break; // The rest of such a file is not worth a hundred mistakes.
        }
        readLine(line, number, context);
    }
    return scenario;
}

QVector<Mistake> checkExpectations(const Scenario &scenario, const Snapshot &state)
{
    QVector<Mistake> mistakes;
    for (const Step &step : scenario.steps) {
        const auto *expect = std::get_if<steps::Expect>(&step.action);
        if (!expect || findGetter(expect->expectation.name) < 0)
            continue;
        const QVariant sample = state.at(findGetter(expect->expectation.name)).value;
        const QString problem = expect->expectation.problemWith(sample);
        if (!problem.isEmpty())
            mistakes.append({step.line, expect->column, problem});
    }
    return mistakes;
}

} // namespace bench
