// The `expect` steps: of a value, and of a signal.
#include "scenariosteps.h"

#include "closestname.h"

namespace bench {

namespace {

using namespace steps;

constexpr int kSignalPatience = 1000; // ms

bool readWithin(LineReader &line, int *milliseconds)
{
    return !line.accept("within") || line.time(milliseconds);
}

bool readSignal(LineReader &line, ScenarioContext &context, bool absent)
{
    ExpectSignal step{{}, absent, kSignalPatience};
    QString argument;
    if (!line.text("the name of a signal", &step.expectation.name))
        return false;
    const QStringList names = signalNames();
    if (!names.contains(step.expectation.name))
        return line.fail(QStringLiteral("there is no signal '%1'%2")
                             .arg(step.expectation.name, didYouMean(step.expectation.name, names)));
    if (line.accept("(")) {
        do {
            if (!line.text("an argument of the signal", &argument))
                return false;
            step.expectation.arguments += argument;
        } while (line.accept(","));
        const int count = signalArgumentCount(step.expectation.name);
        if (count >= 0 && count != step.expectation.arguments.size())
            return line.fail(QStringLiteral("%1 has %2 arguments, not %3")
                                 .arg(step.expectation.name)
                                 .arg(count)
                                 .arg(step.expectation.arguments.size()));
        if (!line.expect(")"))
            return false;
    }
    return readWithin(line, &step.within) && context.add(step);
}

} // namespace

bool readExpect(LineReader &line, ScenarioContext &context)
{
    if (line.accept("signal"))
        return readSignal(line, context, false);
    if (line.accept("no"))
        return line.expect("signal") && readSignal(line, context, true);

    constexpr char kSigns[] = "==, !=, <, <=, > or >=";
    Expect step{{}, 0, 0};
    QString sign;
    Expectation &expectation = step.expectation;
    if (!line.text("the name of a getter", &expectation.name))
        return false;
    const QStringList names = observableNames();
    if (!names.contains(expectation.name))
        return line.fail(QStringLiteral("there is no getter '%1'%2")
                             .arg(expectation.name, didYouMean(expectation.name, names)));
    if (!line.comparison(kSigns, &sign))
        return false;
    if (!parseComparison(sign, &expectation.comparison))
        return line.fail(QStringLiteral("'%1' is not %2").arg(sign, QLatin1String(kSigns)));
    if (!line.text("the value to compare with", &expectation.expected))
        return false;
    step.column = line.column();
    const QVariant sample = benchSample(expectation.name);
    const QString problem = sample.isValid() ? expectation.problemWith(sample) : QString();
    if (!problem.isEmpty())
        return line.fail(problem);
    return readWithin(line, &step.within) && context.add(step);
}

} // namespace bench
