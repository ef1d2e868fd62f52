// What the virtual car does when the head unit tells it to. The climate effects are this car's own
// choice; another car may do other things on the same commands.
#include "bench/car/virtualcar.h"

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

enum class Change {
    Cycle,  // From `low` to `high` and back to 0; a switch is a cycle of one.
    Step,   // By `low`, within the range of the value.
    Select, // To `low`.
};

struct ClimateEffect
{
    quint8 command;
    ValueId value;
    Change change;
    int low, high;
};

constexpr ClimateEffect kClimateEffects[] = {
    {0x01, valueId("climate.power"), Change::Cycle, 1, 1},
    {0x02, valueId("climate.ac"), Change::Cycle, 1, 1},
    {0x03, valueId("climate.inside_air"), Change::Cycle, 1, 1},
    {0x04, valueId("climate.auto"), Change::Cycle, 1, 1},
    {0x05, valueId("climate.max"), Change::Cycle, 1, 1},
    {0x06, valueId("climate.dual"), Change::Cycle, 1, 1},
    {0x07, valueId("climate.left_seat"), Change::Cycle, 4, 6}, // Heating
    {0x08, valueId("climate.right_seat"), Change::Cycle, 4, 6},
    {0x09, valueId("climate.left_seat"), Change::Cycle, 1, 3}, // Ventilation
    {0x0A, valueId("climate.right_seat"), Change::Cycle, 1, 3},
    {0x0B, valueId("climate.wheel_heat"), Change::Cycle, 1, 1},
    {0x11, valueId("climate.rear"), Change::Cycle, 1, 1},
    {0x17, valueId("climate.front_defrost"), Change::Cycle, 1, 1},
    {0x18, valueId("climate.rear_defrost"), Change::Cycle, 1, 1},
    {0x1A, valueId("climate.left"), Change::Step, 1, 0},
    {0x1B, valueId("climate.left"), Change::Step, -1, 0},
    {0x1C, valueId("climate.right"), Change::Step, 1, 0},
    {0x1D, valueId("climate.right"), Change::Step, -1, 0},
    {0x1E, valueId("climate.fan"), Change::Step, 1, 0},
    {0x1F, valueId("climate.fan"), Change::Step, -1, 0},
    // Modes in which the blowing-mode key of a new climate control passes through all five.
    {0x20, valueId("climate.mode"), Change::Select, 1, 0},
    {0x21, valueId("climate.mode"), Change::Select, 3, 0},
    {0x22, valueId("climate.mode"), Change::Select, 2, 0},
    {0x23, valueId("climate.mode"), Change::Select, 4, 0},
    {0x25, valueId("climate.mode"), Change::Select, 5, 0},
};

int changed(const ClimateEffect &effect, int raw)
{
    const Field &field = fieldOf(effect.value);
    switch (effect.change) {
    case Change::Cycle:
        if (raw == effect.high)
            return 0;
        return raw >= effect.low && raw < effect.high ? raw + 1 : effect.low;
    case Change::Step:
        return qBound(field.low, raw + effect.low, field.high);
    case Change::Select:
        return effect.low;
    }
    return raw;
}

quint8 at(const QByteArray &payload, int index) { return canbox::byteAt(payload, index); }

bool obeyClimate(VirtualCar &car, const QByteArray &payload)
{
    if (payload.size() != 3 || at(payload, 0) != 0xAC)
        return false;
    const quint8 command = at(payload, 1);
    if (command == 0)
        return true; // The key came up.
    const auto *effect =
        std::find_if(std::begin(kClimateEffects), std::end(kClimateEffects),
                     [command](const ClimateEffect &row) { return row.command == command; });
    if (effect == std::end(kClimateEffects))
        return false;
    car.setRaw(effect->value, changed(*effect, car.raw(effect->value)));
    return true;
}

bool obeyAmbient(VirtualCar &car, const QByteArray &payload)
{
    if (payload.size() != 2)
        return false;
    car.setRaw(valueId("ambient.colour"), at(payload, 0));
    car.setRaw(valueId("ambient.level"), at(payload, 1));
    return true;
}

bool obeyUnit(VirtualCar &car, const QByteArray &payload)
{
    if (payload.size() != 2)
        return false;
    const quint8 value = at(payload, 1);
    if (at(payload, 0) == 0x72 && value <= 1) {
        car.setRaw(valueId("unit.temperature"), value);
        car.setRaw(valueId("climate.unit"), value); // One setting in this car.
    } else if (at(payload, 0) == 0x70 && value <= 2) {
        car.setRaw(valueId("unit.pressure"), value);
    } else {
        return false;
    }
    return true;
}

bool obeySource(VirtualCar &car, const QByteArray &payload)
{
    Cluster cluster = car.cluster();
    if (payload.size() == 5 && at(payload, 0) == 0x01) {
        const int band = at(payload, 1);
        const int frequency = at(payload, 2) | at(payload, 3) << 8;
        cluster.source =
            band == 0x10
                ? QStringLiteral("AM %1 kHz").arg(frequency)
                : QStringLiteral("FM%1 %2 MHz").arg(band + 1).arg(frequency / 100.0, 0, 'f', 2);
    } else if (payload.size() == 1) {
        cluster.source = QStringLiteral("source %1").arg(at(payload, 0));
    } else {
        return false;
    }
    cluster.lines[0].clear();
    cluster.lines[1].clear();
    car.show(cluster);
    return true;
}

bool obeySourceText(VirtualCar &car, const QByteArray &payload)
{
    constexpr int kText = 5; // Where the UTF-16 text begins, high bytes first.
    if (payload.size() < kText || payload.size() % 2 == 0)
        return false;
    const int line = at(payload, 0) - 1;
    if (line != 0 && line != 1)
        return false;
    QString text;
    for (int i = kText; i < payload.size(); i += 2)
        text += QChar(at(payload, i) << 8 | at(payload, i + 1));
    Cluster cluster = car.cluster();
    cluster.source = QStringLiteral("text");
    cluster.lines[line] = text;
    car.show(cluster);
    return true;
}

bool obeyClock(VirtualCar &car, const QByteArray &payload)
{
    if (payload.size() != 6)
        return false;
    Cluster cluster = car.cluster();
    cluster.clock =
        QString::asprintf("%d-%02d-%02d %02d:%02d", 2000 + at(payload, 0), at(payload, 1),
                          at(payload, 2), at(payload, 3), at(payload, 4));
    car.show(cluster);
    return true;
}

// All others are the box's own.
constexpr struct
{
    Outbound command;
    bool (*obey)(VirtualCar &car, const QByteArray &payload);
} kObeyed[] = {
    {Outbound::Climate, obeyClimate},
    {Outbound::AmbientLight, obeyAmbient},
    {Outbound::Unit, obeyUnit},
    {Outbound::Source, obeySource},
    {Outbound::SourceText, obeySourceText},
    {Outbound::Clock, obeyClock},
};

} // namespace

bool VirtualCar::obey(Outbound command, const QByteArray &payload)
{
    const auto *row = std::find_if(std::begin(kObeyed), std::end(kObeyed),
                                   [command](const auto &one) { return one.command == command; });
    return row != std::end(kObeyed) && row->obey(*this, payload);
}

void VirtualCar::show(const Cluster &cluster)
{
    if (cluster == mCluster)
        return;
    mCluster = cluster;
    emit clusterChanged();
}

} // namespace bench
