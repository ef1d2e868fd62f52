// What a host must show for what is on the wire.
//
// This is the independent oracle of the witness, typed from the description of the wire. It shares
// nothing with the plug-in.
#pragma once

#include "bench/headunit/value.h"
#include "bench/wire/reports.h"

#include <optional>

namespace bench {

/// Raw values to be shown: those of a car, or of one payload.
class Wire
{
public:
    virtual ~Wire() = default;
    /// Nothing for a value that this wire does not carry.
    virtual std::optional<int> raw(ValueId id) const = 0;
    virtual int carModel() const = 0;
};

/// One payload of its report's size.
class PayloadWire : public Wire
{
public:
    /// \param payload is not copied.
    PayloadWire(Inbound type, const QByteArray &payload, int carModel);

    std::optional<int> raw(ValueId id) const override;
    int carModel() const override { return mCarModel; }

private:
    const Report *const mReport;
    const QByteArray &mPayload;
    const int mCarModel;
};

/// Nothing where the wire leaves the host at what it showed before.
using Meaning = std::optional<Value> (*)(const Wire &wire);

namespace meanings {

/// A bit or a number as it is.
template <int Id>
std::optional<Value> isSet(const Wire &wire)
{
    const std::optional<int> raw = wire.raw(ValueId{Id});
    return raw ? std::optional<Value>(*raw != 0) : std::nullopt;
}

template <int Id>
std::optional<Value> isClear(const Wire &wire)
{
    const std::optional<int> raw = wire.raw(ValueId{Id});
    return raw ? std::optional<Value>(*raw == 0) : std::nullopt;
}

template <int Id, int (*Map)(int raw)>
std::optional<Value> mapped(const Wire &wire)
{
    const std::optional<int> raw = wire.raw(ValueId{Id});
    return raw ? std::optional<Value>(Map(*raw)) : std::nullopt;
}

template <int Id, QString (*Text)(int raw)>
std::optional<Value> shown(const Wire &wire)
{
    const std::optional<int> raw = wire.raw(ValueId{Id});
    return raw ? std::optional<Value>(Text(*raw)) : std::nullopt;
}

template <int Id, float (*Number)(int raw)>
std::optional<Value> measured(const Wire &wire)
{
    const std::optional<int> raw = wire.raw(ValueId{Id});
    return raw ? std::optional<Value>(Number(*raw)) : std::nullopt;
}

// Settings: codes beyond the last one change nothing.
template <int Id, int Last>
std::optional<Value> setting(const Wire &wire)
{
    const std::optional<int> raw = wire.raw(ValueId{Id});
    return raw && *raw <= Last ? std::optional<Value>(*raw) : std::nullopt;
}

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

std::optional<Value> leftTemperature(const Wire &wire);
std::optional<Value> rightTemperature(const Wire &wire);
std::optional<Value> tyreAlert(const Wire &wire);
std::optional<Value> ambientColour(const Wire &wire);

} // namespace meanings

} // namespace bench
