// The values of the virtual car by name: one table for the wire, scenarios, the view and the
// command line.
#pragma once

#include "protocol/frame.h"

#include <QString>

namespace bench {

enum class CarValue {
    DoorLeftFront,
    DoorRightFront,
    DoorLeftRear,
    DoorRightRear,
    DoorRear,
    ClimatePower,
    ClimateAc,
    ClimateInside,
    ClimateAuto,
    ClimateDual,
    ClimateRearDefrost,
    ClimateMode,
    ClimateFan,
    ClimateLeft,
    ClimateRight,
    ClimateRear,
    ClimateUnit,
    ClimateFrontDefrost,
    ClimateWheelHeat,
    ClimateMax,
    ClimateLeftSeat,
    ClimateRightSeat,
    RadarFrontLeft,
    RadarFrontMiddleLeft,
    RadarFrontMiddleRight,
    RadarFrontRight,
    RadarRearLeft,
    RadarRearMiddleLeft,
    RadarRearMiddleRight,
    RadarRearRight,
    Odometer,
    Range,
    Consumption,
    TyreFrontLeftPressure,
    TyreFrontRightPressure,
    TyreRearLeftPressure,
    TyreRearRightPressure,
    TyreFrontLeftState,
    TyreFrontRightState,
    TyreRearLeftState,
    TyreRearRightState,
    Speed,
    Battery,
    AmbientColour,
    AmbientLevel,
    UnitTemperature,
    UnitPressure,
    Count,
};

constexpr int kCarValueCount = static_cast<int>(CarValue::Count);

/// A word that stands for a raw value.
struct CarWord
{
    int raw;
    const char *text;
};

/// One value of the car. It is kept as the raw number that goes over the wire; what a person reads
/// and writes is `offset + raw * scale` in the unit, or a word.
struct CarValueInfo
{
    CarValue id;
    const char *name;
    const char *unit; ///< Empty for a plain number.
    double offset;
    double scale;
    int low, high; ///< Raw values that may be given as numbers.
    const CarWord *words;
    int wordCount;
    int initial;

    canbox::Inbound report; ///< The frame that carries the value.
    int byte, shift, bits;  ///< Its place there; more than 8 bits are whole bytes, big-endian.

    double value(int raw) const { return offset + raw * scale; }
};

const CarValueInfo &carValueInfo(CarValue value);

/// The value with the given name, for example `door.left_front`; null for an unknown name.
const CarValueInfo *findCarValue(const QString &name);

/// A raw value as a person reads it: a word, or a number and its unit.
QString carValueText(const CarValueInfo &info, int raw);

/// What may be given for a value, for a person: its words, its range and unit.
QString carValueRange(const CarValueInfo &info);

/// Reads a word or a number, which is rounded to the nearest step. \returns whether \p text is a
/// value; if not, \p error says what would be right.
bool parseCarValue(const CarValueInfo &info, const QString &text, int *raw, QString *error);

} // namespace bench
