#include "bench/language/closestname.h"
#include "bench/language/operations.h"
#include "bench/language/parser.h"
#include "bench/language/stage.h"
#include "bench/wire/tables.h"

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
    const Word *word = wordOf(field.words, raw);
    return word && word + 1 != field.words.end() ? word[1].raw : field.words[0].raw;
}

ValueId readValueName(LineReader &line)
{
    const QString name = line.text("the name of a car value");
    const std::optional<ValueId> found = findValue(name);
    if (!found)
        line.fail(unknownName(true, name));
    return found.value_or(ValueId{});
}

int readRaw(LineReader &line, ValueId id)
{
    int raw = 0;
    QString error;
    const QString text = line.text(valueRange(fieldOf(id)).toUtf8().constData());
    if (!parseValue(fieldOf(id), text, &raw, &error))
        line.fail(error);
    return raw;
}

quint8 readKey(LineReader &line) { return static_cast<quint8>(line.number("a key code", 0, 255)); }

void readModel(LineReader &line, ParseContext &context)
{
    if (!context.scenario->steps.isEmpty())
        return line.fail(QStringLiteral("the car model is chosen before the first step"));
    context.scenario->carModel = line.number("a car model", 0, 65535);
    if (!line.atEnd())
        context.scenario->carIndex = line.number("a car index", 0, 65535);
}

void readSay(LineReader &line, ParseContext &context)
{
    context.add(Say{line.text("a text in quotes")});
}

void readStart(LineReader &line, ParseContext &context)
{
    if (context.started)
        return line.fail(QStringLiteral("the service is started already; 'stop' it before"));
    context.started = true;
    context.add(Do{[](const Stage &stage) {
        if (!stage.host->isStarted()) // Somebody else may have been faster.
            stage.host->start();
    }});
}

void readStop(LineReader &line, ParseContext &context)
{
    if (!context.started)
        return line.fail(QStringLiteral("the service is not started; 'start' it before"));
    context.started = false;
    context.add(Stop{});
}

void readWait(LineReader &line, ParseContext &context)
{
    const int milliseconds = line.time();
    context.add(Wait{milliseconds, line.accept("real")});
}

void readSet(LineReader &line, ParseContext &context)
{
    do {
        const ValueId id = readValueName(line);
        context.add(Set{id, readRaw(line, id)});
    } while (line.accept(","));
}

void readToggle(LineReader &line, ParseContext &context)
{
    const ValueId id = readValueName(line);
    if (fieldOf(id).words.count < 2)
        return line.fail(QStringLiteral("%1 has no words to go through; 'change %1 by' a number")
                             .arg(fieldOf(id).name));
    context.add(Do{[id](const Stage &stage) {
        VirtualCar &car = stage.box->car();
        car.setRaw(id, toggled(fieldOf(id), car.raw(id)));
    }});
}

void readChange(LineReader &line, ParseContext &context)
{
    do {
        const ValueId id = readValueName(line);
        line.expect("by");
        const QString text = line.text("a number");
        const Field &field = fieldOf(id);
        bool isNumber = false;
        const double by = std::round(text.toDouble(&isNumber) / field.scale);
        if (field.low > field.high)
            return line.fail(QStringLiteral("%1 has words only; 'toggle' it").arg(field.name));
        if (!isNumber || !(std::abs(by) <= field.mask()))
            return line.fail(
                QStringLiteral("'%1' is not a number to change %2 by").arg(text, field.name));
        context.add(Do{[id, by = static_cast<int>(by)](const Stage &stage) {
            VirtualCar &car = stage.box->car();
            car.setRaw(id, moved(fieldOf(id), car.raw(id), by));
        }});
    } while (line.accept(","));
}

void readRamp(LineReader &line, ParseContext &context)
{
    Ramp step{};
    do {
        Ramp::Lane lane{readValueName(line), {}, 0};
        if (line.accept("from"))
            lane.from = readRaw(line, lane.id);
        line.expect("to");
        lane.to = readRaw(line, lane.id);
        step.lanes.append(lane);
    } while (line.accept(","));
    line.expect("over");
    step.milliseconds = line.time();
    context.add(step);
}

void readPress(LineReader &line, ParseContext &context)
{
    const quint8 key = readKey(line);
    context.add(Press{key, line.accept("for") ? line.time() : kShortPress});
}

void readHold(LineReader &line, ParseContext &context) { context.add(Hold{readKey(line)}); }

void readRelease(LineReader &, ParseContext &context) { context.add(Release{}); }

void readCall(LineReader &line, ParseContext &context)
{
    if (!context.started)
        return line.fail(QStringLiteral("the service is not started; 'start' it before"));
    context.add(
        Do{[call = readHostCall(line)](const Stage &stage) { call(stage.host->service()); }});
}

constexpr struct
{
    const char *name;
    const char *arguments;
    void (*read)(LineReader &line, ParseContext &context);
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

void ParseContext::add(const Action &action)
{
    scenario->steps.append({0, {}, action, needs}); // The line is filled in by who has it.
}

QString unknownName(bool ofCar, const QString &name)
{
    const QString meant = didYouMean(name, ofCar ? valueNames() : Observable::names());
    return QStringLiteral("%1 '%2'%3")
        .arg(ofCar ? "the car has no value" : "there is no getter", name,
             meant.isEmpty() ? "; 'canbench names' lists them" : meant);
}

void readStep(LineReader &line, ParseContext &context)
{
    const QString word = line.text("a step");
    QVector<Step> &steps = context.scenario->steps;
    const int before = steps.size();
    if (const auto *statement = findNamed(kStatements, word)) {
        context.needs = statement->needs;
        statement->read(line, context);
        line.end();
        if (line.failed())
            steps.resize(before);
        return;
    }
    QStringList words = namesOf(kStatements);
    words.removeDuplicates();
    const QString meant = didYouMean(word, words);
    line.fail(QStringLiteral("there is no step '%1'").arg(word) +
              (meant.isEmpty() ? possible(word, words) : meant));
}

QString scenarioSyntax()
{
    QString text;
    for (const auto &statement : kStatements)
        text += QStringLiteral("%1 %2").arg(statement.name, statement.arguments).trimmed() + '\n';
    return text + hostCallSyntax();
}

} // namespace bench
