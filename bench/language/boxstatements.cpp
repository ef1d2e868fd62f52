// The steps of the box, its line and its cable.
#include "bench/language/closestname.h"
#include "bench/language/parser.h"
#include "bench/language/stage.h"

namespace bench {

using namespace steps;

namespace {

enum : bool { One, All };

// A kind of fault, or `all` of them where that is possible.
bool readFaultKind(LineReader &line, bool all, QVector<Fault> *faults)
{
    QString name;
    if (!line.text("a kind of fault", &name))
        return false;
    if (const FaultInfo *row = findFault(name)) {
        faults->append(row->fault);
        return true;
    }
    if (all && name == QLatin1String("all")) {
        for (int i = 0; i < kFaultCount; ++i)
            faults->append(faultInfo(i).fault);
        return true;
    }
    return line.fail(QStringLiteral("there is no fault '%1'").arg(name) +
                     possible(name, faultNames()));
}

} // namespace

bool readFrame(LineReader &line, ParseContext &context)
{
    int type = 0;
    QByteArray payload;
    if (!line.number("a data type", 0, 255, &type) || !line.bytes("a payload byte", &payload))
        return false;
    if (payload.size() > canbox::kMaxPayload)
        return line.fail(QStringLiteral("a frame has room for 255 payload bytes"));
    return context.add(Frame{Inbound{static_cast<quint8>(type)}, payload});
}

bool readBytes(LineReader &line, ParseContext &context)
{
    int first = 0;
    QByteArray rest;
    if (!line.number("a byte", 0, 255, &first) || !line.bytes("a byte", &rest))
        return false;
    return context.add(Do{[bytes = static_cast<char>(first) + rest](const Stage &stage) {
        stage.box->box().sendRaw(bytes);
    }});
}

bool readSilence(LineReader &, ParseContext &context)
{
    return context.add(Do{[](const Stage &stage) { stage.box->box().setSilent(true); }});
}

bool readSpeak(LineReader &, ParseContext &context)
{
    return context.add(Do{[](const Stage &stage) { stage.box->box().setSilent(false); }});
}

bool readUnplug(LineReader &line, ParseContext &context)
{
    if (!context.plugged)
        return line.fail(QStringLiteral("the box is unplugged already; 'plug' it in before"));
    context.plugged = false;
    return context.add(Box::Unplugged);
}

bool readPlug(LineReader &line, ParseContext &context)
{
    if (context.plugged)
        return line.fail(QStringLiteral("the box is plugged in already; 'unplug' it before"));
    context.plugged = true;
    return context.add(Box::Plugged);
}

bool readFault(LineReader &line, ParseContext &context)
{
    if (line.accept("none"))
        return context.add(Do{[](const Stage &stage) { stage.box->faults().setPlan({}); }});
    QVector<Fault> faults;
    double rate = 0;
    if (!readFaultKind(line, line.follows("rate"), &faults))
        return false;
    if (!line.accept("rate"))
        return context.add(Do{
            [fault = faults.first()](const Stage &stage) { stage.box->faults().inject(fault); }});
    FaultRates step;
    for (;;) {
        if (!line.share("a probability per frame", &rate))
            return false;
        for (const Fault fault : qAsConst(faults))
            step.rates.append({fault, rate});
        if (!line.accept(","))
            return context.add(step);
        faults.clear();
        if (!readFaultKind(line, All, &faults) || !line.expect("rate"))
            return false;
    }
}

} // namespace bench
