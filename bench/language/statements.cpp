#include "bench/language/closestname.h"
#include "bench/language/operations.h"
#include "bench/language/parser.h"
#include "bench/language/stage.h"
#include "bench/wire/named.h"

#include <cmath>

namespace bench {

namespace {

using namespace steps;

constexpr int kShortPress = 200; // ms

// Moves within the range; below it is a word such as `none`, if the value has one.
int moved(const Field &field, int raw, int by)
{
    const bool isNumber = raw >= field.low && raw <= field.high;
    // From a word, the way leads in from the other end; beyond an end, to the word.
    const int target = isNumber ? raw + by : by > 0 ? field.low : field.high;
    if (target > field.high && isNumber && field.words.count > 0)
        return field.words[0].raw;
    return qBound(field.low, target, field.high);
}

// On to the next word; from what is none, to the first.
int toggled(const Field &field, int raw)
{
    int next = 0;
    for (int i = 0; i < field.words.count; ++i)
        if (field.words[i].raw == raw)
            next = (i + 1) % field.words.count;
    return field.words[next].raw;
}

bool readValueName(LineReader &line, ValueId *id)
{
    QString name;
    if (!line.text("the name of a car value", &name))
        return false;
    const std::optional<ValueId> found = findValue(name);
    *id = found.value_or(ValueId{});
    return found || line.fail(unknownValue(name));
}

bool readRaw(LineReader &line, ValueId id, int *raw)
{
    QString text, error;
    const QByteArray what = valueRange(fieldOf(id)).toUtf8();
    if (!line.text(what.constData(), &text))
        return false;
    return parseValue(fieldOf(id), text, raw, &error) || line.fail(error);
}

bool readModel(LineReader &line, ParseContext &context)
{
    if (!context.scenario->steps.isEmpty())
        return line.fail(QStringLiteral("the car model is chosen before the first step"));
    return line.number("a car model", 0, 65535, &context.scenario->carModel) &&
           (line.atEnd() || line.number("a car index", 0, 65535, &context.scenario->carIndex));
}

bool readSay(LineReader &line, ParseContext &context)
{
    QString text;
    return line.text("a text in quotes", &text) && context.add(Say{text});
}

bool readStart(LineReader &line, ParseContext &context)
{
    if (context.started)
        return line.fail(QStringLiteral("the service is started already; 'stop' it before"));
    context.started = true;
    return context.add(Do{[](const Stage &stage) {
        if (!stage.host->isStarted()) // Somebody else may have been faster.
            stage.host->start();
    }});
}

bool readStop(LineReader &line, ParseContext &context)
{
    if (!context.started)
        return line.fail(QStringLiteral("the service is not started; 'start' it before"));
    context.started = false;
    return context.add(Stop{});
}

bool readWait(LineReader &line, ParseContext &context)
{
    Wait step{};
    if (!line.time(&step.milliseconds))
        return false;
    step.real = line.accept("real");
    return context.add(step);
}

bool readSet(LineReader &line, ParseContext &context)
{
    do {
        ValueId id{};
        int raw = 0;
        if (!readValueName(line, &id) || !readRaw(line, id, &raw))
            return false;
        context.add(Set{id, raw});
    } while (line.accept(","));
    return true;
}

bool readToggle(LineReader &line, ParseContext &context)
{
    ValueId id{};
    if (!readValueName(line, &id))
        return false;
    const Field &field = fieldOf(id);
    if (field.words.count < 2)
        return line.fail(QStringLiteral("%1 has no words to go through; 'change %1 by' a number")
                             .arg(QLatin1String(field.name)));
    return context.add(Do{[id](const Stage &stage) {
        VirtualCar &car = stage.box->car();
        car.setRaw(id, toggled(fieldOf(id), car.raw(id)));
    }});
}

bool readChange(LineReader &line, ParseContext &context)
{
    do {
        ValueId id{};
        QString text;
        if (!readValueName(line, &id) || !line.expect("by") || !line.text("a number", &text))
            return false;
        const Field &field = fieldOf(id);
        if (field.low > field.high)
            return line.fail(
                QStringLiteral("%1 has words only; 'toggle' it").arg(QLatin1String(field.name)));
        bool isNumber = false;
        const double by = std::round(text.toDouble(&isNumber) / field.scale);
        if (!isNumber || !(std::abs(by) <= field.mask()))
            return line.fail(QStringLiteral("'%1' is not a number to change %2 by")
                                 .arg(text, QLatin1String(field.name)));
        context.add(Do{[id, by = static_cast<int>(by)](const Stage &stage) {
            VirtualCar &car = stage.box->car();
            car.setRaw(id, moved(fieldOf(id), car.raw(id), by));
        }});
    } while (line.accept(","));
    return true;
}

bool readRamp(LineReader &line, ParseContext &context)
{
    Ramp step{};
    do {
        Ramp::Lane lane{};
        int from = 0;
        if (!readValueName(line, &lane.id))
            return false;
        if (line.accept("from")) {
            if (!readRaw(line, lane.id, &from))
                return false;
            lane.from = from;
        }
        if (!line.expect("to") || !readRaw(line, lane.id, &lane.to))
            return false;
        step.lanes.append(lane);
    } while (line.accept(","));
    return line.expect("over") && line.time(&step.milliseconds) && context.add(step);
}

bool readPress(LineReader &line, ParseContext &context)
{
    int key = 0;
    int milliseconds = kShortPress;
    if (!line.number("a key code", 0, 255, &key))
        return false;
    if (line.accept("for") && !line.time(&milliseconds))
        return false;
    return !line.failed() && context.add(Press{static_cast<quint8>(key), milliseconds});
}

bool readHold(LineReader &line, ParseContext &context)
{
    int key = 0;
    return line.number("a key code", 0, 255, &key) && context.add(Hold{static_cast<quint8>(key)});
}

bool readRelease(LineReader &, ParseContext &context) { return context.add(Release{}); }

bool readCall(LineReader &line, ParseContext &context)
{
    if (!context.started)
        return line.fail(QStringLiteral("the service is not started; 'start' it before"));
    HostCall call;
    return readHostCall(line, &call) &&
           context.add(Do{[call](const Stage &stage) { call(stage.host->service()); }});
}

constexpr struct
{
    const char *name;
    const char *arguments;
    bool (*read)(LineReader &line, ParseContext &context);
    int needs;
} kStatements[] = {
    {"model", "ID [INDEX]", readModel, Nobody},
    {"start", "", readStart, NeedsHost},
    {"stop", "", readStop, NeedsHost},
    {"say", "\"TEXT\"", readSay, Nobody},
    {"wait", "TIME [real]", readWait, Nobody},
    {"set", "NAME VALUE[, NAME VALUE]...", readSet, NeedsBox},
    {"toggle", "NAME", readToggle, NeedsBox},
    {"change", "NAME by NUMBER[, NAME by NUMBER]...", readChange, NeedsBox},
    {"ramp", "NAME [from VALUE] to VALUE[, NAME ...] over TIME", readRamp, NeedsBox},
    {"press", "KEY [for TIME]", readPress, NeedsBox},
    {"hold", "KEY", readHold, NeedsBox},
    {"release", "", readRelease, NeedsBox},
    {"call", "OPERATION [ARGUMENT]...", readCall, NeedsHost},
    {"expect", "NAME ==|!=|<|<=|>|>= VALUE [within TIME]", readExpect, Nobody},
    {"expect", "car NAME ==|!=|<|<=|>|>= VALUE [within TIME]", readExpect, Nobody},
    {"expect", "[no] signal NAME[(ARGUMENT, ...)] [within TIME]", readExpect, Nobody},
    {"expect", "[no] frame NAME|TYPE [BYTE]... [within TIME]", readExpect, Nobody},
    {"silence", "", readSilence, NeedsBox},
    {"speak", "", readSpeak, NeedsBox},
    {"unplug", "", readUnplug, NeedsBox},
    {"plug", "", readPlug, NeedsBox},
    {"frame", "TYPE [BYTE]...", readFrame, NeedsBox},
    {"bytes", "BYTE...", readBytes, NeedsBox},
    {"fault", "KIND", readFault, NeedsBox},
    {"fault", "KIND rate RATE[, KIND rate RATE]...", readFault, NeedsBox},
    {"fault", "none", readFault, NeedsBox},
    {"repeat", "N", readRepeat, Nobody},
    {"end", "", readEnd, Nobody},
    {"include", "\"FILE\"", readInclude, Nobody},
};

} // namespace

bool ParseContext::add(const Action &action)
{
    scenario->steps.append({0, {}, action, needs}); // The line is filled in by who has it.
    return true;
}

QString unknownValue(const QString &name)
{
    const QString meant = didYouMean(name, valueNames());
    return QStringLiteral("the car has no value '%1'%2")
        .arg(name, meant.isEmpty() ? QStringLiteral("; 'canbench names' lists them") : meant);
}

bool readStep(LineReader &line, ParseContext &context)
{
    QString word;
    if (!line.text("a step", &word))
        return false;
    if (const auto *statement = findNamed(kStatements, word)) {
        context.needs = statement->needs;
        return statement->read(line, context) && line.end();
    }
    QStringList words = namesOf(kStatements);
    words.removeDuplicates();
    QString meant = didYouMean(word, words);
    if (meant.isEmpty())
        meant = QStringLiteral("; possible: ") + words.join(QStringLiteral(", "));
    return line.fail(QStringLiteral("there is no step '%1'%2").arg(word, meant));
}

QString scenarioSyntax()
{
    QString text;
    for (const auto &statement : kStatements)
        text += QStringLiteral("%1 %2").arg(statement.name, statement.arguments).trimmed() + '\n';
    return text + hostCallSyntax();
}

} // namespace bench
