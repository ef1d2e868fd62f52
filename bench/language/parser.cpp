#include "bench/language/parser.h"

#include <QDir>
#include <QTextCodec>

namespace bench {

namespace {

QString fileOf(const ParseContext &context)
{
    return context.files.size() > 1 ? context.files.last() : QString();
}

// \returns what is wrong, without its file.
Mistake readTokens(const QVector<Token> &tokens, int number, const QString &shown,
                   ParseContext &context)
{
    QVector<Step> &steps = context.scenario->steps;
    LineReader line(tokens, number);
    const int firstStep = steps.size();
    readStep(line, context);
    for (int i = firstStep; i < steps.size(); ++i)
        if (steps.at(i).line == 0) { // Else it is repeated or included, and has its own.
            steps[i].line = number;
            steps[i].text = shown;
            steps[i].column = tokens.first().column;
            steps[i].file = fileOf(context);
        }
    return line.mistake();
}

} // namespace

void parseLine(const QString &text, int number, ParseContext &context)
{
    Mistake mistake{number, 0, {}};
    const QVector<Token> tokens = cutLine(text, &mistake);
    if (mistake.text.isEmpty() && !tokens.isEmpty())
        mistake =
            readTokens(tokens, number, text.left(tokens.last().endColumn - 1).trimmed(), context);
    mistake.file = fileOf(context);
    if (!mistake.text.isEmpty())
        context.scenario->mistakes.append(mistake);
}

QString parseWords(const QStringList &words, ParseContext &context)
{
    QVector<Token> tokens;
    for (const QString &word : words)
        tokens.append({word, 1, 1, false});
    return readTokens(tokens, 0, words.join(QLatin1Char(' ')), context).text;
}

bool readUtf8(const QByteArray &bytes, QString *text)
{
    QTextCodec::ConverterState state;
    *text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0 && !bytes.contains('\0');
}

void parseText(const QByteArray &text, ParseContext &context)
{
    int number = 0;
    for (const QByteArray &bytes : text.split('\n')) {
        ++number;
        QString line;
        if (!readUtf8(bytes, &line)) {
            context.scenario->mistakes.append(
                {number, 1, QStringLiteral("this line is not UTF-8 text"), fileOf(context)});
            break; // The rest of such a file is not worth a hundred mistakes.
        }
        parseLine(line, number, context);
    }
}

Scenario parseScenario(const QByteArray &text, const QString &file, IncludeReader reader)
{
    Scenario scenario;
    ParseContext context{&scenario};
    context.reader = reader;
    context.files += QDir::cleanPath(file);
    parseText(text, context);
    for (const Repetition &open : qAsConst(context.repetitions))
        scenario.mistakes.append(
            {open.line, open.column, QStringLiteral("this repeat has no 'end'")});
    return scenario;
}

QVector<Mistake> findObstacles(const QVector<Step> &steps, int present)
{
    QVector<Mistake> mistakes;
    const auto complain = [&mistakes](const Step &step, const char *why) {
        if (mistakes.isEmpty() || mistakes.last().line != step.line)
            mistakes.append({step.line, step.column,
                             QStringLiteral("'%1' %2").arg(step.text, QLatin1String(why))});
    };
    for (const Step &step : steps) {
        if (step.needs & NeedsHost & ~present)
            complain(step, "needs the bench's own host, which is not here");
        else if (step.needs & NeedsBox & ~present)
            complain(step, "needs the virtual box, and this box is a real one");
    }
    return mistakes;
}

} // namespace bench
