#include "scenariosteps.h"

#include "closestname.h"
#include "scenariooperations.h"

namespace bench {

namespace {

using namespace steps;

constexpr int kShortPress = 200; // ms

bool readCarValue(LineReader &line, const CarValueInfo **info)
{
    QString name;
    if (!line.text("the name of a car value", &name))
        return false;
    *info = findCarValue(name);
    if (*info)
        return true;
    QStringList names;
    for (int i = 0; i < kCarValueCount; ++i)
        names += QLatin1String(carValueInfo(static_cast<CarValue>(i)).name);
    return line.fail(
        QStringLiteral("the car has no value '%1'%2").arg(name, didYouMean(name, names)));
}

bool readRaw(LineReader &line, const CarValueInfo &info, int *raw)
{
    QString text, error;
    const QByteArray what = carValueRange(info).toUtf8();
    if (!line.text(what.constData(), &text))
        return false;
    return parseCarValue(info, text, raw, &error) || line.fail(error);
}

bool readModel(LineReader &line, ScenarioContext &context)
{
    if (!context.scenario->steps.isEmpty())
        return line.fail(QStringLiteral("the car model is chosen before the first step"));
    return line.number("a car model", -32768, 65535, &context.scenario->carModel) &&
           (line.atEnd() || line.number("a car index", 0, 65535, &context.scenario->carIndex));
}

bool readSay(LineReader &line, ScenarioContext &context)
{
    QString text;
    return line.text("a text in quotes", &text) && context.add(Say{text});
}

bool readStart(LineReader &line, ScenarioContext &context)
{
    if (context.started)
        return line.fail(QStringLiteral("the service is started already; 'stop' it before"));
    context.started = true;
    return context.add(Start{});
}

bool readStop(LineReader &line, ScenarioContext &context)
{
    if (!context.started)
        return line.fail(QStringLiteral("the service is not started; 'start' it before"));
    context.started = false;
    return context.add(Stop{});
}

bool readWait(LineReader &line, ScenarioContext &context)
{
    Wait step{};
    if (!line.time(&step.milliseconds))
        return false;
    step.real = line.accept("real");
    return context.add(step);
}

bool readSet(LineReader &line, ScenarioContext &context)
{
    do {
        const CarValueInfo *info = nullptr;
        int raw = 0;
        if (!readCarValue(line, &info) || !readRaw(line, *info, &raw))
            return false;
        context.add(Set{info->id, raw});
    } while (line.accept(","));
    return true;
}

bool readRamp(LineReader &line, ScenarioContext &context)
{
    Ramp step{};
    do {
        const CarValueInfo *info = nullptr;
        Ramp::Lane lane{};
        int from = 0;
        if (!readCarValue(line, &info))
            return false;
        if (line.accept("from")) {
            if (!readRaw(line, *info, &from))
                return false;
            lane.from = from;
        }
        if (!line.expect("to") || !readRaw(line, *info, &lane.to))
            return false;
        lane.value = info->id;
        step.lanes.append(lane);
    } while (line.accept(","));
    return line.expect("over") && line.time(&step.milliseconds) && context.add(step);
}

bool readPress(LineReader &line, ScenarioContext &context)
{
    int key = 0;
    int milliseconds = kShortPress;
    if (!line.number("a key code", 0, 255, &key))
        return false;
    if (line.accept("for") && !line.time(&milliseconds))
        return false;
    return !line.failed() && context.add(Press{static_cast<quint8>(key), milliseconds});
}

bool readHold(LineReader &line, ScenarioContext &context)
{
    int key = 0;
    return line.number("a key code", 0, 255, &key) && context.add(Hold{static_cast<quint8>(key)});
}

bool readRelease(LineReader &, ScenarioContext &context) { return context.add(Release{}); }

bool readCall(LineReader &line, ScenarioContext &context)
{
    if (!context.started)
        return line.fail(QStringLiteral("the service is not started; 'start' it before"));
    Call step;
    return readHostCall(line, &step.operation) && context.add(step);
}

constexpr struct
{
    const char *word;
    const char *arguments;
    bool (*read)(LineReader &line, ScenarioContext &context);
} kStatements[] = {
    {"model", "ID [INDEX]", readModel},
    {"start", "", readStart},
    {"stop", "", readStop},
    {"say", "\"TEXT\"", readSay},
    {"wait", "TIME [real]", readWait},
    {"set", "NAME VALUE[, NAME VALUE]...", readSet},
    {"ramp", "NAME [from VALUE] to VALUE[, NAME ...] over TIME", readRamp},
    {"press", "KEY [for TIME]", readPress},
    {"hold", "KEY", readHold},
    {"release", "", readRelease},
    {"call", "OPERATION [ARGUMENT]...", readCall},
    {"expect", "NAME ==|!=|<|<=|>|>= VALUE [within TIME]", readExpect},
    {"expect", "[no] signal NAME[(ARGUMENT, ...)] [within TIME]", readExpect},
    {"silence", "", readSilence},
    {"speak", "", readSpeak},
    {"unplug", "", readUnplug},
    {"plug", "", readPlug},
    {"frame", "TYPE [BYTE]...", readFrame},
    {"fault", "KIND", readFault},
    {"fault", "KIND rate RATE[, KIND rate RATE]...", readFault},
    {"fault", "none", readFault},
};

} // namespace

bool ScenarioContext::add(const Action &action)
{
    scenario->steps.append({0, {}, action}); // The line is filled in by who has it.
    return true;
}

bool readStep(LineReader &line, ScenarioContext &context)
{
    QString word;
    if (!line.text("a step", &word))
        return false;
    QStringList words;
    for (const auto &statement : kStatements) {
        words += QLatin1String(statement.word);
        if (word == words.last())
            return statement.read(line, context) && line.end();
    }
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
        text += QStringLiteral("%1 %2").arg(statement.word, statement.arguments).trimmed() + '\n';
    return text + hostCallSyntax();
}

} // namespace bench
