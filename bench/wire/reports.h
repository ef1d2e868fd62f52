// What goes over the wire: each report of the box in one row, with the values that it carries.
//
// This is the bench's own statement of the wire, typed from its description and not from the
// plug-in, so that each can be held against the other. Everything in the bench that packs, reads,
// names, checks, damages or compares reports asks these rows; a new report is a new row.
#pragma once

#include "bench/wire/tables.h"
#include "protocol/frame.h"

#include <optional>

namespace bench {

using canbox::Inbound;
using canbox::Outbound;

/// One value of a report. A value is kept as the raw number that goes over the wire; what a person
/// reads and writes is `offset + raw * scale` in the unit, or a word.
struct Field
{
    const char *name; ///< For example `climate.left`.
    int byte, shift;  ///< Payload byte, and the lowest of the bits there.
    int bits;         ///< More than 8 are whole bytes, big-endian.
    Span<Word> words = {};
    int low = 0, high = -1; ///< Raw values that may be given as numbers; none by default.
    const char *unit = "";  ///< UTF-8; empty for a plain number.
    double offset = 0, scale = 1;
    int initial = 0;   ///< Raw, of the virtual car.
    int selector = -1; ///< Payload byte 0 of the frame that carries the value; -1 for every frame.
    /// Payload bytes of the two codes of a sensor in the cars that send two; the smaller counts.
    int pair[2] = {-1, -1};

    constexpr double value(int raw) const { return offset + raw * scale; }
    constexpr int mask() const { return (1 << bits) - 1; }
};

constexpr int kAnySize = -1;

/// One data type that the box sends.
struct Report
{
    Inbound type;
    const char *name;
    int size;     ///< Of the payload, in bytes.
    bool atStart; ///< Sent when the host starts the box.
    bool strokes; ///< Each change is a frame of its own; else only the latest state counts.
    Span<Field> fields;
};

namespace words {

inline constexpr Word kOpen[] = {{0, "closed"}, {1, "open"}};
inline constexpr Word kOn[] = {{0, "off"}, {1, "on"}};
inline constexpr Word kOff[] = {{0, "on"}, {1, "off"}}; // Bits that say what is off.
inline constexpr Word kDegrees[] = {{0, "celsius"}, {1, "fahrenheit"}};
inline constexpr Word kPressure[] = {{0, "psi"}, {1, "kpa"}, {2, "bar"}};
inline constexpr Word kSetTemperature[] = {{0x00, "low"}, {0x7F, "high"}, {0xFF, "none"}};
inline constexpr Word kSeat[] = {{0, "off"},   {1, "vent1"}, {2, "vent2"}, {3, "vent3"},
                                 {4, "heat1"}, {5, "heat2"}, {6, "heat3"}};
inline constexpr Word kNone0[] = {{0, "none"}};
inline constexpr Word kNone8[] = {{0xFF, "none"}};
inline constexpr Word kNone16[] = {{0xFFFF, "none"}};
inline constexpr Word kTyre[] = {{0, "good"}, {2, "state1"}, {1, "state2"}};

} // namespace words

namespace fields {

constexpr Field choice(const char *name, Span<Word> words, int byte, int shift, int bits = 1,
                       int initial = 0)
{
    Field field{name, byte, shift, bits, words};
    field.initial = initial;
    return field;
}

constexpr Field number(const char *name, int byte, int shift, int bits, int high, int initial)
{
    Field field{name, byte, shift, bits};
    field.high = high;
    field.initial = initial;
    return field;
}

constexpr Field quantity(Field field, const char *unit, double scale = 1, double offset = 0)
{
    field.unit = unit;
    field.scale = scale;
    field.offset = offset;
    return field;
}

constexpr Field worded(Field field, Span<Word> words, int low)
{
    field.words = words;
    field.low = low;
    return field;
}

constexpr Field selected(Field field, int selector)
{
    field.selector = selector;
    return field;
}

// Half degrees Celsius, whatever the unit on display.
constexpr Field setTemperature(const char *name, int byte, int initial)
{
    return quantity(worded(number(name, byte, 0, 8, 59, initial), words::kSetTemperature, 31),
                    "\u00B0C", 0.5);
}

// A distance code, 1 (nearest) to 31.
constexpr Field sensor(const char *name, int byte, int first, int second)
{
    Field field = worded(number(name, byte, 0, 8, 31, 0), words::kNone0, 1);
    field.pair[0] = first;
    field.pair[1] = second;
    return field;
}

constexpr Field tyrePressure(const char *name, int byte, int initial)
{
    return quantity(worded(number(name, byte, 0, 8, 0xFE, initial), words::kNone8, 0), "kPa", 2.75);
}

// clang-format off
inline constexpr Field kKey[] = {
    number("key.code",              0, 0, 8, 0xFF, 0),
    choice("key.pressed", words::kOn, 1, 0, 8),
};
inline constexpr Field kClimate[] = {
    choice("climate.power",         words::kOff, 0, 7),
    choice("climate.ac",            words::kOn,  0, 6),
    choice("climate.inside_air",    words::kOn,  0, 5),
    choice("climate.auto",          words::kOn,  0, 3, 1, 1),
    choice("climate.dual",          words::kOff, 0, 2),
    choice("climate.rear_defrost",  words::kOn,  0, 0),
    number("climate.mode",          1, 5, 3, 7, 2),
    number("climate.fan",           1, 0, 3, 7, 3),
    setTemperature("climate.left",  2, 43),
    setTemperature("climate.right", 3, 44),
    choice("climate.rear",          words::kOn,      4, 7),
    choice("climate.unit",          words::kDegrees, 4, 6),
    choice("climate.front_defrost", words::kOn,      4, 5),
    choice("climate.wheel_heat",    words::kOn,      4, 3),
    choice("climate.max",           words::kOn,      4, 2),
    choice("climate.left_seat",     words::kSeat,    8, 0, 4),
    choice("climate.right_seat",    words::kSeat,    8, 4, 4),
};
// The byte of a sensor, and its two bytes in the cars that send two codes.
inline constexpr Field kRearRadar[] = {
    sensor("radar.rear.left",         0, 4, 5),
    sensor("radar.rear.middle_left",  1, 0, 1),
    sensor("radar.rear.middle_right", 2, 2, 3),
    sensor("radar.rear.right",        3, 6, 7),
};
inline constexpr Field kFrontRadar[] = {
    sensor("radar.front.left",         0, 5, 6),
    sensor("radar.front.middle_left",  1, 0, 1),
    sensor("radar.front.middle_right", 2, 2, 3),
    sensor("radar.front.right",        3, 4, 7),
};
inline constexpr Field kDoors[] = {
    choice("door.left_front",  words::kOpen, 0, 6),
    choice("door.right_front", words::kOpen, 0, 7),
    choice("door.left_rear",   words::kOpen, 0, 4),
    choice("door.right_rear",  words::kOpen, 0, 5),
    choice("door.rear",        words::kOpen, 0, 3),
};
inline constexpr Field kUnits[] = { // A frame each, the setting's code in byte 0.
    selected(choice("unit.temperature", words::kDegrees,  1, 0, 8),    0x72),
    selected(choice("unit.pressure",    words::kPressure, 1, 0, 8, 1), 0x70),
};
inline constexpr Field kAmbientLight[] = { // The box's colour code and level.
    number("ambient.colour", 0, 0, 8, 0x7F, 2),
    number("ambient.level",  1, 0, 8, 0xFF, 50),
};
inline constexpr Field kVehicleInfo1[] = {
    quantity(number("drive.odometer", 0, 0, 24, 0xFFFFFF, 48211), "km"),
    quantity(worded(number("drive.range", 3, 0, 16, 0xFFFE, 512), words::kNone16, 0), "km"),
    quantity(worded(number("drive.consumption", 5, 0, 8, 149, 33), words::kNone8, 0),
             "L/100km", 0.2, 0.1),
    tyrePressure("tyre.front_left.pressure",  7, 84),
    tyrePressure("tyre.front_right.pressure", 8, 84),
    tyrePressure("tyre.rear_left.pressure",   9, 80),
    tyrePressure("tyre.rear_right.pressure", 10, 80),
    choice("tyre.front_left.state",  words::kTyre, 15, 4, 4), // The wire's 2 is state 1.
    choice("tyre.front_right.state", words::kTyre, 15, 0, 4),
    choice("tyre.rear_left.state",   words::kTyre, 16, 4, 4),
    choice("tyre.rear_right.state",  words::kTyre, 16, 0, 4),
};
inline constexpr Field kVehicleInfo2[] = {
    quantity(worded(number("drive.speed", 0, 0, 8, 0xFE, 0), words::kNone8, 0), "km/h"),
    quantity(number("battery.voltage", 4, 0, 8, 0xFF, 151), "V", 47.0 / 755.0, 3.0),
};
// clang-format on

} // namespace fields

/// Ascending, by which a report is found.
inline constexpr Report kReports[] = {
    // type, name, payload size, at start, each stroke, fields
    {Inbound::SteeringWheelKey, "steering-wheel key", 2, false, true, fields::kKey},
    {Inbound::Climate, "climate", 10, true, false, fields::kClimate},
    {Inbound::RearRadar, "rear radar", 8, true, false, fields::kRearRadar},
    {Inbound::FrontRadar, "front radar", 8, true, false, fields::kFrontRadar},
    {Inbound::Doors, "doors", 7, true, false, fields::kDoors},
    {Inbound::UnitSettings, "unit settings", 2, true, false, fields::kUnits},
    {Inbound::Version, "version", kAnySize, false, false, {}}, // UTF-8, to the first zero byte.
    {Inbound::AmbientLight, "ambient light", 2, true, false, fields::kAmbientLight},
    {Inbound::VehicleInfo1, "vehicle information 1", 18, true, false, fields::kVehicleInfo1},
    {Inbound::VehicleInfo2, "vehicle information 2", 5, true, false, fields::kVehicleInfo2},
};

/// What a host sends.
struct Command
{
    Outbound type;
    const char *name;
};

inline constexpr Command kCommands[] = {
    {Outbound::StartStop, "start/stop"},       {Outbound::Clock, "clock"},
    {Outbound::Request, "report request"},     {Outbound::CarSelect, "car select"},
    {Outbound::Source, "media source"},        {Outbound::SourceText, "media text"},
    {Outbound::AmbientLight, "ambient light"}, {Outbound::Climate, "climate command"},
    {Outbound::Unit, "unit setting"},
};

/// A value among all of them, in the order of the table.
enum class ValueId : int {};

constexpr int kValueCount = [] {
    int count = 0;
    for (const Report &report : kReports)
        count += report.fields.count;
    return count;
}();

/// Where a value stands.
struct Place
{
    const Report *report;
    const Field *field;
};

constexpr Place placeOf(ValueId id)
{
    int index = static_cast<int>(id);
    for (const Report &report : kReports) {
        if (index < report.fields.count)
            return {&report, &report.fields[index]};
        index -= report.fields.count;
    }
    return {nullptr, nullptr};
}

constexpr bool isSameText(const char *one, const char *other)
{
    for (; *one == *other; ++one, ++other)
        if (*one == '\0')
            return true;
    return false;
}

/// The value of a name that is in the table: another is refused by the compiler in a constant.
constexpr ValueId valueId(const char *name)
{
    for (int index = 0; index < kValueCount; ++index)
        if (isSameText(placeOf(ValueId{index}).field->name, name))
            return ValueId{index};
    throw "no such value";
}

/// The value of a name that a person gave.
std::optional<ValueId> findValue(const QString &name);
/// Of all values.
QStringList valueNames();

const Field &fieldOf(ValueId id);
const Report &reportOf(ValueId id);

/// Null for a data type that the box does not send.
constexpr const Report *findReport(Inbound type)
{
    for (const Report &report : kReports)
        if (report.type == type)
            return &report;
    return nullptr;
}

/// Whether the service knows frames of this type and payload size.
bool isReport(Inbound type, int size);

/// "climate" for 0x21 from the box, "climate command" for 0xC6 to it; "unknown" for a data type
/// that is not sent there.
QString frameName(bool fromBox, quint8 dataType);
/// `0x21`.
QString hexByte(quint8 byte);

/// The raw value of a field in a payload of its report's size; nothing when the frame is for
/// another selector. \param twoCodes whether the car sends two codes per sensor.
std::optional<int> rawIn(const Field &field, const QByteArray &payload, bool twoCodes);
/// Puts a raw value into a payload of its report's size, whose bits there are clear.
void pack(const Field &field, int raw, bool twoCodes, QByteArray *payload);

/// A raw value as a person reads it: a word, or a number and its unit.
QString valueText(const Field &field, int raw);
/// A number with at most two places behind the point.
QString numberText(double value);
/// What may be given for a value, for a person: its words, its range and unit.
QString valueRange(const Field &field);
/// Reads a word or a number, which is rounded to the nearest step. A switch also understands
/// on/off, true/false, 1/0. \returns whether \p text is a value; if not, \p error says what would
/// be right.
bool parseValue(const Field &field, const QString &text, int *raw, QString *error);

/// Cars of the models whose bumpers report two codes per sensor, of which the smaller counts.
bool hasTwoCodesPerSensor(int carModelId);

namespace checks {

constexpr bool fieldsFit(const Report &report)
{
    for (const Field &field : report.fields) {
        const int last = field.byte + (field.bits - 1) / 8;
        if (last >= report.size || (field.bits <= 8 && field.shift + field.bits > 8) ||
            (field.bits > 8 && (field.shift != 0 || field.bits % 8 != 0)))
            return false;
        for (const Word &word : field.words)
            if (word.raw < 0 || word.raw > field.mask())
                return false;
        if (field.high > field.mask() || field.initial > field.mask() ||
            field.pair[0] >= report.size || field.pair[1] >= report.size)
            return false;
    }
    return true;
}

constexpr bool areInOrder()
{
    int before = -1;
    for (const Report &report : kReports) {
        if (static_cast<int>(report.type) <= before || !fieldsFit(report))
            return false;
        before = static_cast<int>(report.type);
    }
    return true;
}
static_assert(areInOrder(), "reports ascend by type, and their fields fit into their payload");

constexpr bool namesAreUnique()
{
    for (int index = 0; index < kValueCount; ++index)
        if (valueId(placeOf(ValueId{index}).field->name) != ValueId{index})
            return false;
    return true;
}
static_assert(namesAreUnique());

} // namespace checks

} // namespace bench
