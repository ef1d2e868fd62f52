// What the virtual car does when the head unit tells it to. The climate effects are this car's own
// choice; another car may do other things on the same commands.
#include "bench/car/virtualcar.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace bench {

namespace {

enum class Way {
    Cycle,  // From `low` to `high` and back to 0; a switch is a cycle of one.
    Step,   // By `low`, within the range of the value.
    Select, // To `low`.
};

struct ClimateEffect
{
    quint8 command;
    ValueId value;
    Way way;
    int low;
    int high = 0;
};

constexpr ClimateEffect kClimateEffects[] = {
    {0x01, valueId("climate.power"), Way::Cycle, 1, 1},
    {0x02, valueId("climate.ac"), Way::Cycle, 1, 1},
    {0x03, valueId("climate.inside_air"), Way::Cycle, 1, 1},
    {0x04, valueId("climate.auto"), Way::Cycle, 1, 1},
    {0x05, valueId("climate.max"), Way::Cycle, 1, 1},
    {0x06, valueId("climate.dual"), Way::Cycle, 1, 1},
    {0x07, valueId("climate.left_seat"), Way::Cycle, 4, 6}, // Heating
    {0x08, valueId("climate.right_seat"), Way::Cycle, 4, 6},
    {0x09, valueId("climate.left_seat"), Way::Cycle, 1, 3}, // Ventilation
    {0x0A, valueId("climate.right_seat"), Way::Cycle, 1, 3},
    {0x0B, valueId("climate.wheel_heat"), Way::Cycle, 1, 1},
    {0x11, valueId("climate.rear"), Way::Cycle, 1, 1},
    {0x17, valueId("climate.front_defrost"), Way::Cycle, 1, 1},
    {0x18, valueId("climate.rear_defrost"), Way::Cycle, 1, 1},
    {0x1A, valueId("climate.left"), Way::Step, 1},
    {0x1B, valueId("climate.left"), Way::Step, -1},
    {0x1C, valueId("climate.right"), Way::Step, 1},
    {0x1D, valueId("climate.right"), Way::Step, -1},
    {0x1E, valueId("climate.fan"), Way::Step, 1},
    {0x1F, valueId("climate.fan"), Way::Step, -1},
    // Modes in which the blowing-mode key of a new climate control passes through all five.
    {0x20, valueId("climate.mode"), Way::Select, 1},
    {0x21, valueId("climate.mode"), Way::Select, 3},
    {0x22, valueId("climate.mode"), Way::Select, 2},
    {0x23, valueId("climate.mode"), Way::Select, 4},
    {0x25, valueId("climate.mode"), Way::Select, 5},
};

int changed(const ClimateEffect &effect, int raw)
{
    const Field &field = fieldOf(effect.value);
    switch (effect.way) {
    case Way::Cycle:
        if (raw == effect.high)
            return 0;
        return raw >= effect.low && raw < effect.high ? raw + 1 : effect.low;
    case Way::Step:
        return qBound(field.low, raw + effect.low, field.high);
    case Way::Select:
        return effect.low;
    }
    return raw;
}

quint8 at(const QByteArray &payload, int index) { return canbox::byteAt(payload, index); }

// What is read of a command: for obey() and for whoever tells of it. Nothing comes of one that the
// car does not know.

bool isClimateKey(const QByteArray &payload)
{
    return payload.size() == 3 && at(payload, 0) == 0xAC;
}

// A command of 0 says that the key came up.
bool isKeyUp(const QByteArray &payload) { return at(payload, 1) == 0; }

const ClimateEffect *effectOf(const QByteArray &payload)
{
    const auto *effect =
        std::find_if(std::begin(kClimateEffects), std::end(kClimateEffects),
                     [&](const ClimateEffect &row) { return row.command == at(payload, 1); });
    return effect != std::end(kClimateEffects) ? effect : nullptr;
}

QString textOf(const ClimateEffect &effect)
{
    const Field &field = fieldOf(effect.value);
    const QString name = QLatin1String(field.name);
    switch (effect.way) {
    case Way::Cycle:
        return QStringLiteral("the next of %1").arg(name);
    case Way::Step:
        return name + QLatin1String(effect.low > 0 ? " up" : " down");
    case Way::Select:
        break;
    }
    return name + QLatin1Char(' ') + valueText(field, effect.low);
}

struct Setting
{
    ValueId value;
    int raw;
};

QVector<Setting> settingsOf(Outbound command, const QByteArray &payload)
{
    if (payload.size() != 2)
        return {};
    const quint8 code = at(payload, 0);
    const quint8 value = at(payload, 1);
    if (command == Outbound::AmbientLight)
        return {{valueId("ambient.colour"), code}, {valueId("ambient.level"), value}};
    if (code == 0x72 && value <= 1) // One setting in this car.
        return {{valueId("unit.temperature"), value}, {valueId("climate.unit"), value}};
    if (code == 0x70 && value <= 2)
        return {{valueId("unit.pressure"), value}};
    return {};
}

QString sourceOf(const QByteArray &payload)
{
    if (payload.size() == 1)
        return QStringLiteral("source %1").arg(at(payload, 0));
    if (payload.size() != 5 || at(payload, 0) != 0x01)
        return {};
    const int band = at(payload, 1);
    const int frequency = at(payload, 2) | at(payload, 3) << 8;
    return band == 0x10
               ? QStringLiteral("AM %1 kHz").arg(frequency)
               : QStringLiteral("FM%1 %2 MHz").arg(band + 1).arg(frequency / 100.0, 0, 'f', 2);
}

struct LineText
{
    int line; ///< 0 or 1.
    QString text;
};

std::optional<LineText> lineTextOf(const QByteArray &payload)
{
    constexpr int kText = 5; // Where the UTF-16 text begins, high bytes first.
    if (payload.size() < kText || payload.size() % 2 == 0)
        return std::nullopt;
    const int line = at(payload, 0) - 1;
    if (line != 0 && line != 1)
        return std::nullopt;
    QString text;
    for (int i = kText; i < payload.size(); i += 2)
        text += QChar(at(payload, i) << 8 | at(payload, i + 1));
    return LineText{line, text};
}

QString clockOf(const QByteArray &payload)
{
    if (payload.size() != 6)
        return {};
    return QString::asprintf("%d-%02d-%02d %02d:%02d", 2000 + at(payload, 0), at(payload, 1),
                             at(payload, 2), at(payload, 3), at(payload, 4));
}

} // namespace

bool VirtualCar::obey(Outbound command, const QByteArray &payload)
{
    Cluster cluster = mCluster;
    switch (command) {
    case Outbound::Climate:
        return obeyClimate(payload);
    case Outbound::AmbientLight:
    case Outbound::Unit: {
        const QVector<Setting> settings = settingsOf(command, payload);
        for (const Setting &setting : settings)
            setRaw(setting.value, setting.raw);
        return !settings.isEmpty();
    }
    case Outbound::Source:
        cluster = {sourceOf(payload), {}, mCluster.clock};
        return show(cluster, !cluster.source.isEmpty());
    case Outbound::SourceText:
        if (const auto text = lineTextOf(payload)) {
            cluster.source = QStringLiteral("text");
            cluster.lines[text->line] = text->text;
            return show(cluster, true);
        }
        break;
    case Outbound::Clock:
        cluster.clock = clockOf(payload);
        return show(cluster, !cluster.clock.isEmpty());
    case Outbound::StartStop:
    case Outbound::Request:
    case Outbound::CarSelect:
        break; // The box's own.
    }
    return false;
}

QString VirtualCar::meaning(Outbound command, const QByteArray &payload)
{
    QStringList parts;
    switch (command) {
    case Outbound::Climate:
        if (!isClimateKey(payload))
            break;
        if (isKeyUp(payload))
            return QStringLiteral("the key came up");
        if (const ClimateEffect *effect = effectOf(payload))
            return textOf(*effect);
        break;
    case Outbound::AmbientLight:
    case Outbound::Unit:
        for (const Setting &setting : settingsOf(command, payload))
            parts += QLatin1String(fieldOf(setting.value).name) + QLatin1Char(' ') +
                     valueText(fieldOf(setting.value), setting.raw);
        break;
    case Outbound::Source:
        return sourceOf(payload);
    case Outbound::SourceText:
        if (const auto text = lineTextOf(payload))
            return QStringLiteral("line %1 '%2'").arg(text->line + 1).arg(text->text);
        break;
    case Outbound::Clock:
        return clockOf(payload);
    case Outbound::StartStop:
    case Outbound::Request:
    case Outbound::CarSelect:
        break; // The box's own.
    }
    return parts.join(QStringLiteral(", "));
}

bool VirtualCar::obeyClimate(const QByteArray &payload)
{
    if (!isClimateKey(payload))
        return false;
    if (isKeyUp(payload))
        return true;
    const ClimateEffect *effect = effectOf(payload);
    if (effect)
        setRaw(effect->value, changed(*effect, raw(effect->value)));
    return effect;
}

bool VirtualCar::show(const Cluster &cluster, bool isKnown)
{
    if (!isKnown || cluster == mCluster)
        return isKnown;
    mCluster = cluster;
    emit clusterChanged();
    return true;
}

} // namespace bench
