// The steps of the box, its line and its cable.
#include "bench/language/closestname.h"
#include "bench/language/parser.h"
#include "bench/language/stage.h"

namespace bench {

using namespace steps;

namespace {

// A kind of fault, or `all` of them where that is possible.
QVector<Fault> readFaultKind(LineReader &line, bool isAllPossible)
{
    const QString name = line.text("a kind of fault");
    if (const FaultInfo *row = findFault(name))
        return {row->fault};
    if (!isAllPossible || name != QLatin1String("all")) {
        line.fail(QStringLiteral("there is no fault '%1'").arg(name) +
                  possible(name, faultNames()));
        return {};
    }
    QVector<Fault> faults;
    for (int i = 0; i < kFaultCount; ++i)
        faults.append(faultInfo(i).fault);
    return faults;
}

} // namespace

void readFrame(LineReader &line, ParseContext &context)
{
    const auto type = static_cast<quint8>(line.number("a data type", 0, 255));
    const QByteArray payload = line.bytes("a payload byte");
    if (payload.size() > canbox::kMaxPayload)
        line.fail(QStringLiteral("a frame has room for 255 payload bytes"));
    context.add(Frame{Inbound{type}, payload});
}

void readBytes(LineReader &line, ParseContext &context)
{
    const auto first = static_cast<char>(line.number("a byte", 0, 255));
    const QByteArray bytes = first + line.bytes("a byte");
    context.add(Do{[bytes](const Stage &stage) { stage.box->box().sendRaw(bytes); }});
}

void readSilence(LineReader &, ParseContext &context)
{
    context.add(Do{[](const Stage &stage) { stage.box->box().setSilent(true); }});
}

void readSpeak(LineReader &, ParseContext &context)
{
    context.add(Do{[](const Stage &stage) { stage.box->box().setSilent(false); }});
}

void readUnplug(LineReader &line, ParseContext &context)
{
    if (!context.plugged)
        line.fail(QStringLiteral("the box is unplugged already; 'plug' it in before"));
    context.plugged = false;
    context.add(Box::Unplugged);
}

void readPlug(LineReader &line, ParseContext &context)
{
    if (context.plugged)
        line.fail(QStringLiteral("the box is plugged in already; 'unplug' it before"));
    context.plugged = true;
    context.add(Box::Plugged);
}

void readFault(LineReader &line, ParseContext &context)
{
    if (line.accept("none"))
        return context.add(Do{[](const Stage &stage) { stage.box->faults().setPlan({}); }});
    QVector<Fault> faults = readFaultKind(line, line.follows("rate"));
    if (!line.accept("rate"))
        return context.add(Do{
            [fault = faults.value(0)](const Stage &stage) { stage.box->faults().inject(fault); }});
    FaultRates step;
    for (;;) {
        const double rate = line.share("a probability per frame");
        for (const Fault fault : qAsConst(faults))
            step.rates.append({fault, rate});
        if (!line.accept(","))
            return context.add(step);
        faults = readFaultKind(line, true);
        line.expect("rate");
    }
}

} // namespace bench
