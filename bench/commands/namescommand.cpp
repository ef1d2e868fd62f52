// The names of the language, for a person, for a program and for the shell's completion.
#include "bench/commands/commandline.h"
#include "bench/language/closestname.h"
#include "bench/language/names.h"
#include "bench/screen/jsonline.h"
#include "bench/screen/output.h"

namespace bench {

namespace {

constexpr int kNameWidth = 30;
constexpr int kWidth = 80;

QString heading(const NameRow &row)
{
    if (row.kind == NameRow::Signal)
        return QStringLiteral("Signals, and events of the bench itself: 'expect signal NAME'");
    if (row.kind == NameRow::OldName)
        return QStringLiteral("Older names, and parts of values: 'expect'");
    if (row.kind == NameRow::OfBench)
        return QStringLiteral("What the bench itself sees: 'expect'");
    if (!row.report)
        return QStringLiteral("Getters that no frame changes: 'expect'");
    QString text = QString(QLatin1String(row.report->name));
    text[0] = text.at(0).toUpper();
    text += QStringLiteral(": frame ") + hexByte(static_cast<quint8>(row.report->type));
    return text;
}

QString remarks(const NameRow &row)
{
    QString text = row.values;
    if (!row.shown.isEmpty())
        text += QStringLiteral(" (host: %1)").arg(row.shown);
    if (!row.initial.isEmpty())
        text += QStringLiteral("; first ") + row.initial;
    if (row.kind == NameRow::CarValue && !row.isExpected)
        text += QStringLiteral("; no getter");
    return text;
}

void sayWrapped(const QString &name, const QString &text)
{
    QString line = QStringLiteral("  ") + name.leftJustified(kNameWidth - 3);
    const QString indent(kNameWidth - 1, ' ');
    for (const QString &word : text.split(' ')) {
        if (line.size() + 1 + word.size() > kWidth) {
            say(line);
            line = indent;
        }
        line += ' ' + word;
    }
    say(line);
}

void sayJson(const NameRow &row, JsonLine &json)
{
    json.begin()
        .member("name", row.name)
        .member("set", row.isSet())
        .member("expect", row.isExpected)
        .member("values", row.values)
        .member("shown", row.shown.isEmpty() ? row.values : row.shown)
        .member("unit", row.unit)
        .member("first", row.initial)
        .member("frame", row.report ? hexByte(static_cast<quint8>(row.report->type)) : QString())
        .member("report", row.report ? row.report->name : "")
        .member("signal", row.signal);
    standardOutput().bytes(json.end());
}

bool matches(const NameRow &row, const QString &text)
{
    return row.name.contains(text, Qt::CaseInsensitive) ||
           row.signal.contains(text, Qt::CaseInsensitive) ||
           (row.report && QLatin1String(row.report->name).contains(text, Qt::CaseInsensitive));
}

} // namespace

int sayNames(const QString &text, bool json, bool ofCar)
{
    JsonLine line;
    QString before, signalBefore;
    QStringList names;
    bool isAny = false;
    for (const NameRow &row : nameRows()) {
        names += row.name;
        if (!matches(row, text) || (ofCar && !row.isSet()))
            continue;
        if (json) {
            sayJson(row, line);
        } else {
            QString title = heading(row);
            if (title != before || (row.signal != signalBefore && !row.signal.isEmpty())) {
                if (isAny)
                    say({});
                before = title;
                signalBefore = row.signal;
                if (!row.signal.isEmpty())
                    title += QStringLiteral(", signal ") + row.signal;
                say(title);
            }
            sayWrapped(row.name, remarks(row));
        }
        isAny = true;
    }
    if (isAny)
        return Done;
    const QString meant = didYouMean(text, names);
    return fail(QStringLiteral("no name has '%1' in it%2")
                    .arg(text, meant.isEmpty() ? "; 'canbench names' lists all" : meant));
}

int namesCommand(const QStringList &arguments)
{
    CommandLine line("names", "[options] [TEXT]",
                     "Lists the names of the language with their words, range and unit: the\n"
                     "values of the car by the frame that carries them and the signal that\n"
                     "announces them, which 'set' changes and 'expect' looks at by the same name\n"
                     "and words; then what only 'expect' knows, and the signals.",
                     "canbench names\n"
                     "canbench names climate\n"
                     "canbench names --json\n"
                     "canbench names --of faults");
    line.addPositionalArgument("TEXT", "Only names, reports and signals with TEXT in them.");
    line.addOptions({
        {"json", "One JSON object a line."},
        {"of",
         "The bare words for an option or step, a line each: " +
             wordedOptions().join(QStringLiteral(", ")) + ".",
         "WHAT"},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    if (!line.isSet("of"))
        return sayNames(line.positionalArguments().value(0), line.isSet("json"), false);
    const QStringList words = wordsFor(line.value("of"));
    if (words.isEmpty())
        return line.complain(QStringLiteral("--of knows no '%1'").arg(line.value("of")) +
                             possible(line.value("of"), wordedOptions()));
    for (const QString &word : words)
        say(word);
    return Done;
}

} // namespace bench
