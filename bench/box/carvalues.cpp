#include "carvalues.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace bench {

namespace {

using canbox::Inbound;

constexpr CarWord kOpen[] = {{0, "closed"}, {1, "open"}};
constexpr CarWord kOn[] = {{0, "off"}, {1, "on"}};
constexpr CarWord kOff[] = {{0, "on"}, {1, "off"}}; // Bits that say what is off.
constexpr CarWord kDegrees[] = {{0, "celsius"}, {1, "fahrenheit"}};
constexpr CarWord kPressure[] = {{0, "psi"}, {1, "kpa"}, {2, "bar"}};
constexpr CarWord kSetTemperature[] = {{0x00, "low"}, {0x7F, "high"}, {0xFF, "none"}};
constexpr CarWord kSeat[] = {{0, "off"},   {1, "vent1"}, {2, "vent2"}, {3, "vent3"},
                             {4, "heat1"}, {5, "heat2"}, {6, "heat3"}};
constexpr CarWord kObstacle[] = {{0, "none"}};
constexpr CarWord kNone8[] = {{0xFF, "none"}};
constexpr CarWord kNone16[] = {{0xFFFF, "none"}};
constexpr CarWord kTyre[] = {{0, "good"}, {2, "state1"}, {1, "state2"}};

template <std::size_t Size>
constexpr CarValueInfo row(CarValue id, const char *name, const char *unit, double offset,
                           double scale, int low, int high, const CarWord (&words)[Size],
                           int initial, Inbound report, int byte, int shift, int bits)
{
    return {id,    name, unit,    offset, scale, low,   high,
            words, Size, initial, report, byte,  shift, bits};
}

// A value that only has words.
template <std::size_t Size>
constexpr CarValueInfo choice(CarValue id, const char *name, const CarWord (&words)[Size],
                              int initial, Inbound report, int byte, int shift, int bits)
{
    return row(id, name, "", 0, 1, 0, -1, words, initial, report, byte, shift, bits);
}

// A plain number from 0 to `high`.
constexpr CarValueInfo number(CarValue id, const char *name, const char *unit, int high,
                              int initial, Inbound report, int byte, int shift, int bits)
{
    return {id, name, unit, 0, 1, 0, high, nullptr, 0, initial, report, byte, shift, bits};
}

constexpr CarValueInfo sensor(CarValue id, const char *name, Inbound report, int slot)
{
    return row(id, name, "", 0, 1, 0, 0xFF, kObstacle, 0, report, slot, 0, 8);
}

constexpr CarValueInfo pressure(CarValue id, const char *name, int initial, int byte)
{
    return row(id, name, "kPa", 0, 2.75, 0, 0xFE, kNone8, initial, Inbound::VehicleInfo1, byte, 0,
               8);
}

using V = CarValue;
constexpr Inbound kDoors = Inbound::Doors;
constexpr Inbound kClimate = Inbound::Climate;
constexpr Inbound kInfo1 = Inbound::VehicleInfo1;
constexpr Inbound kInfo2 = Inbound::VehicleInfo2;
constexpr Inbound kFront = Inbound::FrontRadar;
constexpr Inbound kRear = Inbound::RearRadar;

// clang-format off
constexpr CarValueInfo kValues[] = {
    // Doors.                                        words, initial, report, byte, shift, bits
    choice(V::DoorLeftFront,  "door.left_front",      kOpen, 0, kDoors, 0, 6, 1),
    choice(V::DoorRightFront, "door.right_front",     kOpen, 0, kDoors, 0, 7, 1),
    choice(V::DoorLeftRear,   "door.left_rear",       kOpen, 0, kDoors, 0, 4, 1),
    choice(V::DoorRightRear,  "door.right_rear",      kOpen, 0, kDoors, 0, 5, 1),
    choice(V::DoorRear,       "door.rear",            kOpen, 0, kDoors, 0, 3, 1),
    // Climate. Set temperatures are in half degrees Celsius, whatever the unit on display.
    choice(V::ClimatePower,       "climate.power",         kOff, 0, kClimate, 0, 7, 1),
    choice(V::ClimateAc,          "climate.ac",            kOn,  0, kClimate, 0, 6, 1),
    choice(V::ClimateInside,      "climate.inside_air",    kOn,  0, kClimate, 0, 5, 1),
    choice(V::ClimateAuto,        "climate.auto",          kOn,  1, kClimate, 0, 3, 1),
    choice(V::ClimateDual,        "climate.dual",          kOff, 0, kClimate, 0, 2, 1),
    choice(V::ClimateRearDefrost, "climate.rear_defrost",  kOn,  0, kClimate, 0, 0, 1),
    number(V::ClimateMode,        "climate.mode", "", 7,      2, kClimate, 1, 5, 3),
    number(V::ClimateFan,         "climate.fan",  "", 7,      3, kClimate, 1, 0, 3),
    row(V::ClimateLeft,  "climate.left",  "\u00B0C", 0, 0.5, 31, 59, kSetTemperature, 43,
        kClimate, 2, 0, 8),
    row(V::ClimateRight, "climate.right", "\u00B0C", 0, 0.5, 31, 59, kSetTemperature, 44,
        kClimate, 3, 0, 8),
    choice(V::ClimateRear,         "climate.rear",          kOn,      0, kClimate, 4, 7, 1),
    choice(V::ClimateUnit,         "climate.unit",          kDegrees, 0, kClimate, 4, 6, 1),
    choice(V::ClimateFrontDefrost, "climate.front_defrost", kOn,      0, kClimate, 4, 5, 1),
    choice(V::ClimateWheelHeat,    "climate.wheel_heat",    kOn,      0, kClimate, 4, 3, 1),
    choice(V::ClimateMax,          "climate.max",           kOn,      0, kClimate, 4, 2, 1),
    choice(V::ClimateLeftSeat,     "climate.left_seat",     kSeat,    0, kClimate, 8, 0, 4),
    choice(V::ClimateRightSeat,    "climate.right_seat",    kSeat,    0, kClimate, 8, 4, 4),
    // Park assist: distance codes, 1 (nearest) to 31. The byte is the sensor's slot.
    sensor(V::RadarFrontLeft,        "radar.front.left",         kFront, 0),
    sensor(V::RadarFrontMiddleLeft,  "radar.front.middle_left",  kFront, 1),
    sensor(V::RadarFrontMiddleRight, "radar.front.middle_right", kFront, 2),
    sensor(V::RadarFrontRight,       "radar.front.right",        kFront, 3),
    sensor(V::RadarRearLeft,         "radar.rear.left",          kRear, 0),
    sensor(V::RadarRearMiddleLeft,   "radar.rear.middle_left",   kRear, 1),
    sensor(V::RadarRearMiddleRight,  "radar.rear.middle_right",  kRear, 2),
    sensor(V::RadarRearRight,        "radar.rear.right",         kRear, 3),
    // Driving.
    number(V::Odometer, "drive.odometer", "km", 0xFFFFFF, 48211, kInfo1, 0, 0, 24),
    row(V::Range, "drive.range", "km", 0, 1, 0, 0xFFFF, kNone16, 512, kInfo1, 3, 0, 16),
    row(V::Consumption, "drive.consumption", "L/100km", 0.1, 0.2, 0, 149, kNone8, 33, kInfo1, 5, 0,
        8),
    // Tyres. States are the wire's codes: 2 stands for state 1, 1 for state 2.
    pressure(V::TyreFrontLeftPressure,  "tyre.front_left.pressure",  84, 7),
    pressure(V::TyreFrontRightPressure, "tyre.front_right.pressure", 84, 8),
    pressure(V::TyreRearLeftPressure,   "tyre.rear_left.pressure",   80, 9),
    pressure(V::TyreRearRightPressure,  "tyre.rear_right.pressure",  80, 10),
    choice(V::TyreFrontLeftState,  "tyre.front_left.state",  kTyre, 0, kInfo1, 15, 4, 4),
    choice(V::TyreFrontRightState, "tyre.front_right.state", kTyre, 0, kInfo1, 15, 0, 4),
    choice(V::TyreRearLeftState,   "tyre.rear_left.state",   kTyre, 0, kInfo1, 16, 4, 4),
    choice(V::TyreRearRightState,  "tyre.rear_right.state",  kTyre, 0, kInfo1, 16, 0, 4),
    row(V::Speed, "drive.speed", "km/h", 0, 1, 0, 0xFE, kNone8, 0, kInfo2, 0, 0, 8),
    {V::Battery, "battery.voltage", "V", 3.0, 47.0 / 755.0, 0, 0xFF, nullptr, 0, 151, kInfo2, 4, 0,
     8},
    // Ambient light: the box's colour code and level. Displays.
    number(V::AmbientColour, "ambient.colour", "", 0x7F, 2, Inbound::AmbientLight, 0, 0, 8),
    number(V::AmbientLevel, "ambient.level", "", 0xFF, 50, Inbound::AmbientLight, 1, 0, 8),
    // Unit settings: a frame each, setting code in byte 0.
    choice(V::UnitTemperature, "unit.temperature", kDegrees,  0, Inbound::UnitSettings, 1, 0, 8),
    choice(V::UnitPressure,    "unit.pressure",    kPressure, 1, Inbound::UnitSettings, 1, 0, 8),
};
// clang-format on

constexpr bool isInEnumOrder()
{
    for (int i = 0; i < kCarValueCount; ++i)
        if (kValues[i].id != static_cast<CarValue>(i))
            return false;
    return true;
}
static_assert(std::size(kValues) == kCarValueCount && isInEnumOrder());

const CarWord *wordOf(const CarValueInfo &info, int raw)
{
    const CarWord *end = info.words + info.wordCount;
    const CarWord *word =
        std::find_if(info.words, end, [raw](const CarWord &row) { return row.raw == raw; });
    return word == end ? nullptr : word;
}

QString numberText(double value) { return QString::number(std::round(value * 100) / 100, 'g', 10); }

} // namespace

const CarValueInfo &carValueInfo(CarValue value) { return kValues[static_cast<int>(value)]; }

const CarValueInfo *findCarValue(const QString &name)
{
    const auto *info =
        std::find_if(std::begin(kValues), std::end(kValues),
                     [&](const CarValueInfo &row) { return name == QLatin1String(row.name); });
    return info == std::end(kValues) ? nullptr : info;
}

QString carValueText(const CarValueInfo &info, int raw)
{
    if (const CarWord *word = wordOf(info, raw))
        return QLatin1String(word->text);
    const QString text = numberText(info.value(raw));
    return *info.unit ? text + QLatin1Char(' ') + QString::fromUtf8(info.unit) : text;
}

QString carValueRange(const CarValueInfo &info)
{
    QStringList parts;
    if (info.low <= info.high)
        parts += QStringLiteral("%1 to %2 %3")
                     .arg(numberText(info.value(info.low)), numberText(info.value(info.high)),
                          QString::fromUtf8(info.unit))
                     .trimmed();
    for (int i = 0; i < info.wordCount; ++i)
        parts += QLatin1String(info.words[i].text);
    return parts.join(QLatin1String(", "));
}

bool parseCarValue(const CarValueInfo &info, const QString &text, int *raw, QString *error)
{
    for (int i = 0; i < info.wordCount; ++i)
        if (text.compare(QLatin1String(info.words[i].text), Qt::CaseInsensitive) == 0) {
            *raw = info.words[i].raw;
            return true;
        }
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    const double step = std::round((value - info.offset) / info.scale);
    if (isNumber && step >= info.low && step <= info.high) {
        *raw = static_cast<int>(step);
        return true;
    }
    *error = QStringLiteral("%1 cannot be '%2'; possible: %3")
                 .arg(QLatin1String(info.name), text, carValueRange(info));
    return false;
}

} // namespace bench
