// What makes more steps of others: repetitions, and files that are included.
#include "bench/language/parser.h"

#include <QDir>
#include <QFileInfo>

namespace bench {

namespace {

constexpr int kMostSteps = 100'000;
constexpr int kMostIncludes = 100;

} // namespace

void readRepeat(LineReader &line, ParseContext &context)
{
    const int times = line.number("a number of times", 1, kMostSteps);
    if (line.failed())
        return;
    context.repetitions.append({line.line(), line.column(), times, context.scenario->steps.size(),
                                context.started, context.plugged});
}

void readEnd(LineReader &line, ParseContext &context)
{
    if (context.repetitions.isEmpty())
        return line.fail(QStringLiteral("there is no 'repeat' that this could end"));
    const Repetition open = context.repetitions.takeLast();
    if (open.started != context.started || open.plugged != context.plugged)
        return line.fail(
            QStringLiteral("the steps from line %1 cannot be repeated: %2")
                .arg(open.line)
                .arg(QLatin1String(open.plugged && !context.plugged ? "they leave the box unplugged"
                                   : context.plugged && !open.plugged
                                       ? "they begin with the box unplugged"
                                   : context.started ? "they begin with the service stopped"
                                                     : "they leave the service stopped")));
    QVector<Step> &steps = context.scenario->steps;
    const QVector<Step> body = steps.mid(open.firstStep);
    if (qint64{body.size()} * open.times + open.firstStep > kMostSteps)
        return line.fail(QStringLiteral("these are more than %1 steps").arg(kMostSteps));
    steps.reserve(open.firstStep + body.size() * open.times);
    for (int pass = 1; pass < open.times; ++pass)
        steps += body;
}

void readInclude(LineReader &line, ParseContext &context)
{
    const QString name = line.text("the name of a file");
    QByteArray text;
    if (line.failed())
        return;
    if (!context.reader)
        return line.fail(QStringLiteral("only a scenario in a file can include another"));
    const QString path = QDir::cleanPath(QFileInfo(context.files.last()).dir().filePath(name));
    if (context.files.contains(path))
        return line.fail(QStringLiteral("'%1' would include itself").arg(path));
    if (++context.includes > kMostIncludes)
        return line.fail(
            QStringLiteral("these are more than %1 included files").arg(kMostIncludes));
    const QString problem = context.reader(path, &text);
    if (!problem.isEmpty())
        return line.fail(problem);
    const int open = context.repetitions.size();
    context.files += path;
    parseText(text, context);
    context.files.removeLast();
    if (context.repetitions.size() == open)
        return;
    while (context.repetitions.size() > open)
        context.repetitions.removeLast();
    line.fail(QStringLiteral("'%1' has a 'repeat' without 'end', or the reverse").arg(path));
}

} // namespace bench
