// What a host must show for what is on the wire.
//
// This is the independent oracle of the witness, typed from the description of the wire. It shares
// nothing with the plug-in.
#pragma once

#include "bench/headunit/value.h"
#include "bench/wire/reports.h"

#include <functional>
#include <optional>

namespace bench {

/// Raw values to be shown: those of a car, or of one payload.
struct Wire
{
    /// Nothing for a value that this wire does not carry.
    std::function<std::optional<int>(ValueId)> raw;
    int carModel = 1;
};

/// One payload of its report's size, which is not copied.
struct PayloadWire : Wire
{
    PayloadWire(Inbound type, const QByteArray &payload, int carModel);
};

/// What is shown for a value of the car.
struct Meaning
{
    /// \returns nothing where the wire leaves the host at what it showed before.
    using Map = std::optional<Value> (*)(int raw, const Wire &wire);

    Map map = nullptr; ///< Null: nothing on the wire changes it.
    ValueId source = {};

    constexpr explicit operator bool() const { return map; }
    std::optional<Value> operator()(const Wire &wire) const;
};

namespace meanings {

/// For what depends on the value alone.
template <auto Show>
std::optional<Value> as(int raw, const Wire &)
{
    return Value(Show(raw));
}

/// Codes beyond the last one change nothing.
template <int Last>
std::optional<Value> setting(int raw, const Wire &)
{
    return raw <= Last ? std::optional<Value>(raw) : std::nullopt;
}

bool isSet(int raw);
bool isClear(int raw);
int same(int raw);
int blowingMode(int raw);
int seatHeat(int code);
int seatVentilation(int code);
int seat(int code);         ///< 0 off, 1 to 3 ventilation, 4 to 6 heat.
int distanceBand(int code); ///< 1 (nearest), 2, 3, 4, 5, 7; 255 for nothing.
int tyreState(int code);
float tyrePressure(int code); ///< kPa; -1 for no reading.
float voltage(int code);
int fifth(int raw);

QString odometer(int raw);
QString range(int raw);
QString consumption(int raw);
QString speed(int raw);

std::optional<Value> temperature(int code, const Wire &wire);
std::optional<Value> tyreAlert(int, const Wire &wire);
std::optional<Value> ambientColour(int raw, const Wire &wire);

} // namespace meanings

} // namespace bench
