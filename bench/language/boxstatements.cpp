// The steps of the box, its line and its cable.
#include "scenariosteps.h"

#include "closestname.h"

namespace bench {

using namespace steps;

namespace {

bool readFaultKind(LineReader &line, Fault *fault)
{
    QString name;
    if (!line.text("a kind of fault", &name))
        return false;
    const FaultInfo *info = findFault(name);
    if (info) {
        *fault = info->fault;
        return true;
    }
    QStringList names;
    for (int i = 0; i < kFaultCount; ++i)
        names += QLatin1String(faultInfo(i).name);
    return line.fail(QStringLiteral("there is no fault '%1'; possible: %2%3")
                         .arg(name, names.join(", "), didYouMean(name, names)));
}

} // namespace

bool readFrame(LineReader &line, ScenarioContext &context)
{
    int type = 0, byte = 0;
    QByteArray payload;
    if (!line.number("a data type", 0, 255, &type))
        return false;
    while (!line.atEnd()) {
        if (!line.number("a payload byte", 0, 255, &byte))
            return false;
        payload.append(static_cast<char>(byte));
    }
    if (payload.size() > 255)
        return line.fail(QStringLiteral("a frame has room for 255 payload bytes"));
    return context.add(Frame{static_cast<quint8>(type), payload});
}

bool readSilence(LineReader &, ScenarioContext &context) { return context.add(Box::Silent); }
bool readSpeak(LineReader &, ScenarioContext &context) { return context.add(Box::Speaking); }

bool readUnplug(LineReader &line, ScenarioContext &context)
{
    if (!context.plugged)
        return line.fail(QStringLiteral("the box is unplugged already; 'plug' it in before"));
    context.plugged = false;
    return context.add(Box::Unplugged);
}

bool readPlug(LineReader &line, ScenarioContext &context)
{
    if (context.plugged)
        return line.fail(QStringLiteral("the box is plugged in already; 'unplug' it before"));
    context.plugged = true;
    return context.add(Box::Plugged);
}

bool readFault(LineReader &line, ScenarioContext &context)
{
    if (line.accept("none"))
        return context.add(NoFaults{});
    Fault fault{};
    double rate = 0;
    if (!readFaultKind(line, &fault))
        return false;
    if (!line.accept("rate"))
        return context.add(InjectFault{fault});
    FaultRates step;
    for (;;) {
        if (!line.share("a probability per frame", &rate))
            return false;
        step.rates.append({fault, rate});
        if (!line.accept(","))
            return context.add(step);
        if (!readFaultKind(line, &fault) || !line.expect("rate"))
            return false;
    }
}

} // namespace bench
