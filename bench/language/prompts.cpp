#include "bench/language/prompts.h"

namespace bench {

using namespace steps;

namespace {

constexpr struct
{
    const char *value, *name;
} kPromptNames[] = {
    {"door.left_front", "the left front door"},
    {"door.right_front", "the right front door"},
    {"door.left_rear", "the left rear door"},
    {"door.right_rear", "the right rear door"},
    {"door.rear", "the tailgate"},
    {"climate.power", "the climate control"},
    {"climate.ac", "the A/C"},
    {"climate.inside_air", "the recirculation of air"},
    {"climate.left", "the left temperature"},
    {"climate.right", "the right temperature"},
    {"climate.fan", "the fan"},
    {"drive.speed", "the speed"},
};

QString nameOf(ValueId id)
{
    const QString value = QLatin1String(fieldOf(id).name);
    for (const auto &row : kPromptNames)
        if (value == QLatin1String(row.value))
            return QLatin1String(row.name);
    return value;
}

QString seconds(int milliseconds)
{
    return QStringLiteral("%1 s").arg(numberText(milliseconds / 1000.0));
}

QString promptFor(ValueId id, int raw)
{
    const QString to = valueText(fieldOf(id), raw);
    if (to == QLatin1String("open"))
        return QStringLiteral("Open %1").arg(nameOf(id));
    if (to == QLatin1String("closed"))
        return QStringLiteral("Close %1").arg(nameOf(id));
    if (to == QLatin1String("on") || to == QLatin1String("off"))
        return QStringLiteral("Switch %1 %2").arg(nameOf(id), to);
    return QStringLiteral("Bring %1 to %2").arg(nameOf(id), to);
}

QString promptFor(const Set &step) { return promptFor(step.id, step.raw); }

QString promptFor(const Ramp &step)
{
    QStringList lanes;
    for (const Ramp::Lane &lane : step.lanes)
        lanes += nameOf(lane.id) + QStringLiteral(" to ") + valueText(fieldOf(lane.id), lane.to);
    return QStringLiteral("Bring %1 within %2")
        .arg(lanes.join(QStringLiteral(" and ")), seconds(step.milliseconds));
}

QString promptFor(const Press &step)
{
    return QStringLiteral("Press the steering-wheel key %1 for %2")
        .arg(step.key)
        .arg(seconds(step.milliseconds));
}

QString promptFor(const Hold &step)
{
    return QStringLiteral("Press the steering-wheel key %1 and hold it").arg(step.key);
}

QString promptFor(const Release &) { return QStringLiteral("Release the steering-wheel key"); }

QString promptFor(Box state)
{
    return state == Box::Unplugged ? QStringLiteral("Pull the cable of the box")
           : state == Box::Plugged ? QStringLiteral("Put the cable of the box back")
                                   : QString();
}

template <typename Other>
QString promptFor(const Other &)
{
    return {};
}

} // namespace

QString promptFor(const Action &action)
{
    return std::visit([](const auto &step) { return promptFor(step); }, action);
}

QVector<Step> makePrompts(QVector<Step> *steps)
{
    QVector<Step> prompts;
    for (Step &step : *steps) {
        const QString text = step.needs & NeedsBox ? promptFor(step.action) : QString();
        if (text.isEmpty())
            continue;
        step.action = Ask{text + QStringLiteral(", then press Enter.")};
        step.needs &= ~NeedsBox;
        prompts += step;
    }
    return prompts;
}

} // namespace bench
