// The `expect` steps: of a value, of a signal, and of a frame.
#include "bench/headunit/session.h"
#include "bench/language/closestname.h"
#include "bench/language/parser.h"
#include "bench/wire/named.h"

#include <algorithm>

namespace bench {

namespace {

using namespace steps;

constexpr int kSignalPatience = 1000; // ms

bool readWithin(LineReader &line, int *milliseconds)
{
    return !line.accept("within") || line.time(milliseconds);
}

bool readSignal(LineReader &line, ParseContext &context, bool absent)
{
    ExpectSignal step{{}, absent, kSignalPatience};
    QString argument;
    if (!line.text("the name of a signal", &step.expectation.name))
        return false;
    const QStringList names = eventNames();
    if (!names.contains(step.expectation.name))
        return line.fail(QStringLiteral("there is no signal '%1'%2")
                             .arg(step.expectation.name, didYouMean(step.expectation.name, names)));
    if (line.accept("(")) {
        do {
            if (!line.text("an argument of the signal", &argument))
                return false;
            step.expectation.arguments += argument;
        } while (line.accept(","));
        const int count = eventArguments(step.expectation.name).size();
        if (count != step.expectation.arguments.size())
            return line.fail(QStringLiteral("%1 has %2 arguments, not %3")
                                 .arg(step.expectation.name)
                                 .arg(count)
                                 .arg(step.expectation.arguments.size()));
        if (!line.expect(")"))
            return false;
    }
    return readWithin(line, &step.within) && context.add(step);
}

// The name of a command may have several words; a number will do, too.
bool readCommandName(LineReader &line, quint8 *dataType)
{
    QString name, word;
    if (!line.text("the name or number of a frame to the box", &name))
        return false;
    const QStringList names = namesOf(kCommands);
    const auto goesOn = [&] {
        return std::any_of(names.begin(), names.end(),
                           [&](const QString &whole) { return whole.startsWith(name + ' '); });
    };
    while (!names.contains(name) && goesOn() && line.text("the rest of the name", &word))
        name += ' ' + word;
    if (line.failed())
        return false;
    bool isNumber = false;
    const uint number = name.toUInt(&isNumber, 0);
    const int index = names.indexOf(name);
    if (index >= 0)
        *dataType = static_cast<quint8>(kCommands[index].type);
    else if (isNumber && number <= 0xFF)
        *dataType = static_cast<quint8>(number);
    else
        return line.fail(QStringLiteral("the host has no frame '%1'").arg(name) +
                         possible(name, names, QStringLiteral("0 to 255, ")));
    return true;
}

bool readFrame(LineReader &line, ParseContext &context, bool absent)
{
    ExpectFrame step{0, {}, absent, kSignalPatience};
    int byte = 0;
    context.needs = NeedsBox;
    if (!readCommandName(line, &step.dataType))
        return false;
    while (!line.atEnd() && !line.peek("within")) {
        if (!line.number("a payload byte", 0, 255, &byte))
            return false;
        step.payload = step.payload.value_or(QByteArray()) + static_cast<char>(byte);
    }
    return readWithin(line, &step.within) && context.add(step);
}

} // namespace

QString unknownGetter(const QString &name)
{
    const QString meant = didYouMean(name, Observable::names());
    return QStringLiteral("there is no getter '%1'%2")
        .arg(name, meant.isEmpty() ? QStringLiteral("; 'canbench names' lists them") : meant);
}

bool readExpect(LineReader &line, ParseContext &context)
{
    context.needs = NeedsHost;
    if (line.accept("signal"))
        return readSignal(line, context, false);
    if (line.accept("frame"))
        return readFrame(line, context, false);
    if (line.accept("no"))
        return line.accept("frame") ? readFrame(line, context, true)
                                    : line.expect("signal") && readSignal(line, context, true);

    constexpr char kSigns[] = "==, !=, <, <=, > or >=";
    Expect step{};
    QString name, sign;
    Expectation &expectation = step.expectation;
    const bool ofCar = line.accept("car");
    if (!line.text(ofCar ? "the name of a car value" : "the name of a getter", &name))
        return false;
    expectation.observable = ofCar ? Observable::ofCar(name) : Observable::find(name);
    if (!expectation.observable.isKnown())
        return line.fail(ofCar ? unknownValue(name) : unknownGetter(name));
    if (!line.comparison(kSigns, &sign))
        return false;
    if (!parseComparison(sign, &expectation.comparison))
        return line.fail(QStringLiteral("'%1' is not %2").arg(sign, QLatin1String(kSigns)));
    if (!line.text("the value to compare with", &expectation.expected))
        return false;
    const QString problem = expectation.problem();
    if (!problem.isEmpty())
        return line.fail(problem);
    context.needs = expectation.observable.needs;
    return readWithin(line, &step.within) && context.add(step);
}

} // namespace bench
