#include "bench/commands/commandline.h"

#include "bench/language/parser.h"
#include "bench/screen/output.h"

namespace bench {

CommandLine::CommandLine(const char *name, const char *usage, const char *description,
                         const char *examples)
    : mName(QLatin1String(name))
    , mUsage(QLatin1String(usage))
    , mExamples(QLatin1String(examples))
{
    setApplicationDescription(QString::fromUtf8(description));
    addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")});
}

std::optional<int> CommandLine::read(const QStringList &arguments, int maxPositional)
{
    if (!parse(QStringList(mName) + arguments))
        return complain(errorText());
    if (isSet(QStringLiteral("help"))) {
        say(help());
        return Done;
    }
    if (positionalArguments().size() > maxPositional)
        return complain(QStringLiteral("'%1' is one argument too many")
                            .arg(positionalArguments().at(maxPositional)));
    return std::nullopt;
}

QString CommandLine::help() const
{
    const QString text = helpText();
    QString result = QStringLiteral("Usage: canbench %1 %2").arg(mName, mUsage) +
                     text.mid(text.indexOf(QLatin1Char('\n')));
    result += QStringLiteral("\nExamples:\n");
    for (const QString &example : mExamples.split(QLatin1Char('\n')))
        result += QStringLiteral("  ") + example + QLatin1Char('\n');
    return result.trimmed();
}

int CommandLine::number(const QString &option, int fallback, int low, int high)
{
    if (!isSet(option))
        return fallback;
    bool isNumber = false;
    const int result = value(option).toInt(&isNumber, 0);
    if (isNumber && result >= low && result <= high)
        return result;
    complain(QStringLiteral("--%1 needs a whole number from %2 to %3, not '%4'")
                 .arg(option)
                 .arg(low)
                 .arg(high)
                 .arg(value(option)));
    return fallback;
}

double CommandLine::seconds(const QString &option, double fallback, double low, double high)
{
    return real(option, "a number of seconds", fallback, low, high);
}

double CommandLine::factor(const QString &option, double fallback, double low, double high)
{
    return real(option, "a number", fallback, low, high);
}

double CommandLine::real(const QString &option, const char *what, double fallback, double low,
                         double high)
{
    if (!isSet(option))
        return fallback;
    bool isNumber = false;
    const double result = value(option).toDouble(&isNumber);
    if (isNumber && result >= low && result <= high)
        return result;
    complain(QStringLiteral("--%1 needs %2 from %3 to %4, not '%5'")
                 .arg(option, QLatin1String(what))
                 .arg(low)
                 .arg(high)
                 .arg(value(option)));
    return fallback;
}

int CommandLine::complain(const QString &problem)
{
    mWrong = true;
    QString text = problem;
    if (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    standardError().line(QStringLiteral("canbench %1: %2").arg(mName, text));
    standardError().line(QStringLiteral("Try 'canbench %1 --help'.").arg(mName));
    return WrongUsage;
}

QString readFaultOption(const QString &text, ParseContext &context)
{
    constexpr char kDefaultRate[] = "0.02";
    QStringList words{QStringLiteral("fault")};
    for (const QString &item : text.split(QLatin1Char(','))) {
        const QString rate = item.section(QLatin1Char('='), 1);
        if (words.size() > 1)
            words += QStringLiteral(",");
        words += {item.section(QLatin1Char('='), 0, 0).trimmed(), QStringLiteral("rate"),
                  rate.isNull() ? QString(kDefaultRate) : rate};
    }
    const QString problem = parseWords(words, context);
    return problem.isEmpty() ? QString() : QStringLiteral("--faults: ") + problem;
}

int fail(const QString &problem)
{
    standardError().line(QStringLiteral("canbench: ") + problem);
    return Failed;
}

void say(const QString &line)
{
    standardOutput().text(line);
    standardOutput().flush();
}

} // namespace bench
