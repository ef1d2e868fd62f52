#include "bench/language/parser.h"

#include <QTextCodec>

namespace bench {

void parseLine(const QString &text, int number, ParseContext &context)
{
    Scenario &scenario = *context.scenario;
    Mistake mistake{number, 0, {}};
    const QVector<Token> tokens = cutLine(text, &mistake);
    if (!mistake.text.isEmpty())
        return scenario.mistakes.append(mistake);
    if (tokens.isEmpty())
        return;
    const int firstStep = scenario.steps.size();
    LineReader line(tokens, number);
    if (!readStep(line, context))
        scenario.mistakes.append(line.mistake());
    const QString shown = text.left(tokens.last().endColumn - 1).trimmed();
    for (int i = firstStep; i < scenario.steps.size(); ++i) {
        Step &step = scenario.steps[i];
        step.line = number;
        step.text = shown;
        step.column = tokens.first().column;
    }
}

QString parseWords(const QStringList &words, ParseContext &context)
{
    QVector<Token> tokens;
    for (const QString &word : words)
        tokens.append({word, 1, 1, false});
    LineReader line(tokens, 1);
    const int firstStep = context.scenario->steps.size();
    if (!readStep(line, context))
        return line.mistake().text;
    for (int i = firstStep; i < context.scenario->steps.size(); ++i)
        context.scenario->steps[i].text = words.join(QLatin1Char(' '));
    return {};
}

Scenario parseScenario(const QByteArray &text)
{
    Scenario scenario;
    ParseContext context{&scenario};
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
        parseLine(line, number, context);
    }
    return scenario;
}

} // namespace bench
