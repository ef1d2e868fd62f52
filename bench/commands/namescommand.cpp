#include "bench/commands/commandline.h"
#include "bench/headunit/session.h"
#include "bench/language/expectation.h"
#include "bench/screen/jsonline.h"
#include "bench/screen/output.h"

namespace bench {

namespace {

struct NameRow
{
    QString name;
    QString setBy;  ///< `set` and `ramp`, or nothing.
    QString range;  ///< Words, a range with its unit, or a kind.
    QString report; ///< The frame that carries it.
    QString signal; ///< What announces a change.
};

QString signalOf(const Getter &row)
{
    for (int signal = 0; signal < interfaceSignals().size(); ++signal)
        if (announcedBy(signal).contains(findGetter(QLatin1String(row.name))))
            return interfaceSignals().at(signal).name;
    return {};
}

QString kindOf(const Observable &observable)
{
    const QString words = observable.words().join(QStringLiteral(", "));
    if (observable.isSwitch())
        return words;
    const QString kind =
        observable.isText() ? QStringLiteral("a text") : QStringLiteral("a number");
    return words.isEmpty() ? kind : kind + QStringLiteral(", ") + words;
}

QVector<NameRow> nameRows()
{
    QVector<NameRow> rows;
    for (int index = 0; index < kValueCount; ++index) {
        const ValueId id{index};
        const int getterIndex = findGetter(QLatin1String(fieldOf(id).name));
        rows.append({QLatin1String(fieldOf(id).name), QStringLiteral("the car"),
                     valueRange(fieldOf(id)), QLatin1String(reportOf(id).name),
                     getterIndex < 0 ? QString() : signalOf(getter(getterIndex))});
    }
    for (const QString &name : Observable::names()) {
        const int index = findGetter(name);
        const Report *report = index < 0 ? nullptr : findReport(getter(index).report);
        if (!findValue(name))
            rows.append({name, QString(), kindOf(Observable::find(name)),
                         report ? QLatin1String(report->name) : QString(),
                         index < 0 ? QString() : signalOf(getter(index))});
    }
    for (const QString &name : eventNames())
        rows.append({name,
                     QString(),
                     QStringLiteral("signal(%1)").arg(eventArguments(name).join(", ")),
                     {},
                     {}});
    return rows;
}

} // namespace

int namesCommand(const QStringList &arguments)
{
    CommandLine line("names", "[options] [TEXT]",
                     "Lists the names of the language: the values of the car, which 'set' and "
                     "'ramp' change, the getters of the service, which 'expect' looks at under the "
                     "same names and words, and the signals; each with its words or range, the "
                     "report that carries it and the signal that announces it.",
                     "canbench names\n"
                     "canbench names climate\n"
                     "canbench names --json");
    line.addPositionalArgument("TEXT", "Only names with TEXT in them.");
    line.addOption({"json", "One JSON object a line."});
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString wanted = line.positionalArguments().value(0);
    JsonLine json;
    bool isAny = false;
    for (const NameRow &row : nameRows()) {
        if (!row.name.contains(wanted))
            continue;
        isAny = true;
        if (line.isSet("json"))
            standardOutput().bytes(json.begin()
                                       .member("name", row.name)
                                       .member("setBy", row.setBy)
                                       .member("range", row.range)
                                       .member("report", row.report)
                                       .member("signal", row.signal)
                                       .end());
        else
            say(QStringLiteral("%1 %2 %3 %4")
                    .arg(row.name, -26)
                    .arg(row.range, -40)
                    .arg(row.report, -22)
                    .arg(row.signal)
                    .trimmed());
    }
    return isAny ? int(Done) : int(fail(QStringLiteral("no name has '%1' in it").arg(wanted)));
}

} // namespace bench
