// The `expect` steps: of a value, of a signal, and of a frame.
#include "bench/headunit/session.h"
#include "bench/language/closestname.h"
#include "bench/language/parser.h"
#include "bench/wire/tables.h"

#include <algorithm>

namespace bench {

namespace {

using namespace steps;

constexpr int kSignalPatience = 1000; // ms

int readWithin(LineReader &line, int otherwise)
{
    return line.accept("within") ? line.time() : otherwise;
}

void readSignal(LineReader &line, ParseContext &context, bool absent)
{
    ExpectSignal step{{line.text("the name of a signal"), {}}, absent, 0};
    auto &[name, arguments] = step.expectation;
    if (!eventNames().contains(name))
        return line.fail(
            QStringLiteral("there is no signal '%1'%2").arg(name, didYouMean(name, eventNames())));
    if (line.accept("(")) {
        do {
            arguments += line.text("an argument of the signal");
        } while (line.accept(","));
        const int count = eventArguments(name).size();
        if (count != arguments.size())
            line.fail(QStringLiteral("%1 has %2 arguments, not %3")
                          .arg(name)
                          .arg(count)
                          .arg(arguments.size()));
        line.expect(")");
    }
    step.within = readWithin(line, kSignalPatience);
    context.add(step);
}

// The name of a command may have several words; a number will do, too.
quint8 readCommandName(LineReader &line)
{
    const QStringList names = namesOf(kCommands);
    QString name = line.text("the name or number of a frame to the box");
    const auto goesOn = [&] {
        return std::any_of(names.begin(), names.end(),
                           [&](const QString &whole) { return whole.startsWith(name + ' '); });
    };
    while (!line.failed() && !names.contains(name) && goesOn())
        name += ' ' + line.text("the rest of the name");
    if (const Command *command = findNamed(kCommands, name))
        return static_cast<quint8>(command->type);
    bool isNumber = false;
    const uint number = name.toUInt(&isNumber, 0);
    if (!isNumber || number > 0xFF)
        line.fail(QStringLiteral("the host has no frame '%1'").arg(name) +
                  possible(name, names, QStringLiteral("0 to 255, ")));
    return static_cast<quint8>(number);
}

void readFrameExpectation(LineReader &line, ParseContext &context, bool absent)
{
    context.needs = NeedsBox;
    ExpectFrame step{readCommandName(line), {}, absent, 0};
    while (line.goesOn() && !line.peek("within"))
        step.payload = step.payload.value_or(QByteArray()) +
                       static_cast<char>(line.number("a payload byte", 0, 255));
    step.within = readWithin(line, kSignalPatience);
    context.add(step);
}

} // namespace

void readExpect(LineReader &line, ParseContext &context)
{
    context.needs = NeedsHost;
    const bool absent = line.accept("no");
    if (line.accept("frame"))
        return readFrameExpectation(line, context, absent);
    if (line.accept("signal"))
        return readSignal(line, context, absent);
    if (absent)
        return line.expect("signal");

    constexpr char kSigns[] = "==, !=, <, <=, > or >=";
    Expect step{};
    Expectation &expectation = step.expectation;
    const bool ofCar = line.accept("car");
    const QString name = line.text(ofCar ? "the name of a car value" : "the name of a getter");
    expectation.observable = ofCar ? Observable::ofCar(name) : Observable::find(name);
    if (!expectation.observable.isKnown())
        return line.fail(unknownName(ofCar, name));
    const QString sign = line.comparison(kSigns);
    if (!parseComparison(sign, &expectation.comparison))
        line.fail(QStringLiteral("'%1' is not %2").arg(sign, kSigns));
    expectation.expected = line.text("the value to compare with");
    const QString problem = expectation.problem();
    if (!problem.isEmpty())
        line.fail(problem);
    context.needs = expectation.observable.needs;
    step.within = readWithin(line, 0);
    context.add(step);
}

} // namespace bench
