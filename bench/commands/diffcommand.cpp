// What the hosts of two recordings saw differently.
#include "bench/commands/commandline.h"
#include "bench/recording/decoder.h"
#include "bench/screen/jsonline.h"
#include "bench/screen/output.h"

#include <QLoggingCategory>
#include <QMap>

#include <algorithm>

namespace bench {

namespace {

struct Moment
{
    double seconds;
    QString text;
};

/// What one host saw: by name, what a value became one after the other, and the key events.
using Story = QMap<QString, QVector<Moment>>;

QString tell(const QString &file, CommandLine &line, Story *story)
{
    TraceReader trace(file);
    if (!trace.problem().isEmpty())
        return trace.problem();
    const int own = trace.car() ? trace.car()->model : 1;
    TraceDecoder decoder;
    const QString problem = decoder.open(line.value("plugin"), line.number("model", own, 0, 65535));
    if (!problem.isEmpty())
        return problem;
    int linkCode = -1;
    QObject::connect(&decoder, &TraceDecoder::happened, [&](const Event &event) {
        const auto add = [&](const QString &name, const QString &text) {
            (*story)[name].append({event.seconds, text});
        };
        for (const Change &change : event.changes)
            add(QLatin1String(getter(change.getter).name), change.afterText());
        if (event.isLink()) {
            const int code = static_cast<int>(numberOf(event.arguments.first()));
            if (std::exchange(linkCode, code) != code)
                add(QStringLiteral("link"), QString::number(code));
        } else if (!event.arguments.isEmpty()) {
            add(event.name, '(' + plainText(event.arguments) + ')');
        }
    });
    TraceLine chunk;
    while (trace.next(&chunk))
        decoder.feed(chunk);
    decoder.finish();
    return trace.problem();
}

QString momentText(const QVector<Moment> &moments, int index)
{
    return index < moments.size() ? QStringLiteral("%1 at %2 s")
                                        .arg(moments.at(index).text)
                                        .arg(moments.at(index).seconds, 0, 'f', 3)
                                  : QStringLiteral("nothing more");
}

// The first difference of one value; nothing if there is none.
std::optional<int> firstDifference(const QVector<Moment> &a, const QVector<Moment> &b)
{
    const auto isSame = [](const Moment &one, const Moment &other) {
        return one.text == other.text;
    };
    const auto found = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), isSame);
    if (found.first == a.end() && found.second == b.end())
        return std::nullopt;
    return static_cast<int>(found.first - a.begin());
}

} // namespace

int diffCommand(const QStringList &arguments)
{
    CommandLine line("diff", "[options] A B",
                     "Tells what the hosts of the recordings A and B saw differently: for each\n"
                     "value, and for the keys and the link, the first step in which they part.\n"
                     "When something happened makes no difference. Exit code 3: they differ.",
                     "canbench diff before.trace after.trace\n"
                     "canbench diff --json before.trace after.trace");
    line.addPositionalArgument("A", "A recording, or what 'export' made of one.");
    line.addPositionalArgument("B", "Another one.");
    line.addOptions({
        {"json", "One JSON object a line."},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"model",
         "The car model that was selected in the head unit (default: each recording's, or 1).",
         "ID"},
    });
    if (const auto code = line.read(arguments, 2))
        return *code;
    line.number("model", 1, 0, 65535);
    if (line.isWrong())
        return WrongUsage;
    const QStringList files = line.positionalArguments();
    if (files.size() < 2)
        return line.complain("name two recordings");

    QLoggingCategory::setFilterRules("default=false");
    Story stories[2];
    for (int i = 0; i < 2; ++i) {
        const QString problem = tell(files.at(i), line, &stories[i]);
        if (!problem.isEmpty())
            return fail(problem);
    }
    QStringList names = stories[0].keys() + stories[1].keys();
    names.sort();
    names.removeDuplicates();
    JsonLine json;
    int differences = 0;
    for (const QString &name : qAsConst(names)) {
        const QVector<Moment> a = stories[0].value(name), b = stories[1].value(name);
        const std::optional<int> at = firstDifference(a, b);
        if (!at)
            continue;
        ++differences;
        if (line.isSet("json")) {
            json.begin().member("name", name).member("same", *at);
            for (const auto &[key, story] : {std::pair("a", &a), std::pair("b", &b)}) {
                json.key(key).beginObject().member("changes", story->size());
                if (*at < story->size())
                    json.member("value", story->at(*at).text)
                        .member("time", story->at(*at).seconds);
                json.endObject();
            }
            standardOutput().bytes(json.end());
        } else {
            say(QStringLiteral("%1 %2 | %3%4")
                    .arg(name, -26)
                    .arg(momentText(a, *at), momentText(b, *at),
                         *at == 0 ? QString()
                                  : QStringLiteral("   (the same %1 times before)").arg(*at)));
        }
    }
    if (!line.isSet("json"))
        say(differences == 0
                ? QStringLiteral("The hosts saw the same, in all %1 values").arg(names.size())
                : QStringLiteral("%1 of %2 values differ").arg(differences).arg(names.size()));
    return differences == 0 ? Done : ExpectationFailed;
}

} // namespace bench
