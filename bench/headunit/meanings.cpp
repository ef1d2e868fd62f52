#include "bench/headunit/meanings.h"

#include <translator.h>

#include <algorithm>
#include <iterator>

namespace bench {

PayloadWire::PayloadWire(Inbound type, const QByteArray &payload, int model)
    : Wire{[type, &payload, model](ValueId id) {
               return reportOf(id).type == type
                          ? rawIn(fieldOf(id), payload, hasTwoCodesPerSensor(model))
                          : std::nullopt;
           },
           model}
{
}

std::optional<Value> Meaning::operator()(const Wire &wire) const
{
    const std::optional<int> raw = wire.raw(source);
    return raw ? map(*raw, wire) : std::nullopt;
}

namespace meanings {

namespace {

// The host's unit texts, by its numbers for them.
constexpr int kKilometres = 997;
constexpr int kLitres = 1002;
constexpr int kSpeed = 992;
const QLatin1String kNoReading("--");

QString withUnit(const QString &number, int unit) { return number + Translator::translate(unit); }

} // namespace

bool isSet(int raw) { return raw != 0; }

bool isClear(int raw) { return raw == 0; }

int same(int raw) { return raw; }

int blowingMode(int raw)
{
    constexpr int kShown[] = {0, 2, 1, 3, 7, 5, 4, 6};
    return kShown[raw];
}

int seatHeat(int code) { return code >= 4 && code <= 6 ? code - 3 : 0; }

int seatVentilation(int code) { return code <= 3 ? code : 0; }

int seat(int code) { return code <= 6 ? code : 0; }

int distanceBand(int code)
{
    if (code == 0 || code > 31)
        return 255;
    const int band = code == 1 ? 1 : 2 + (code - 2) / 6; // 2 to 7, 8 to 13, ...
    return band == 6 ? 7 : band;
}

int tyreState(int code) { return code == 1 ? 2 : code == 2 || code == 7 ? 1 : 0; }

float tyrePressure(int code) { return code == 0xFF ? -1.0F : static_cast<float>(code * 2.75); }

float voltage(int code)
{
    return std::clamp(static_cast<float>(code * 47) / 755.0F + 3.0F, 3.0F, 17.9F);
}

int fifth(int raw) { return raw / 5; }

QString odometer(int raw) { return withUnit(QString::number(raw), kKilometres); }

QString range(int raw)
{
    return raw < 1000 ? withUnit(QString::number(raw), kKilometres) : QString(kNoReading);
}

QString consumption(int raw)
{
    return raw <= 149 ? withUnit(QString::number((2 * raw + 1) / 10.0), kLitres)
                      : QString(kNoReading);
}

QString speed(int raw)
{
    return raw != 0xFF ? withUnit(QString::number(raw), kSpeed) : QString(kNoReading);
}

std::optional<Value> temperature(int code, const Wire &wire)
{
    if (code == 0x00)
        return -100.0F;
    if (code == 0x7F)
        return -101.0F;
    if (code < 31 || code > 59)
        return -1.0F;
    const float celsius = static_cast<float>(code) / 2;
    const bool isFahrenheit = wire.raw(valueId("climate.unit")).value_or(0) != 0;
    return isFahrenheit ? static_cast<float>(static_cast<double>(celsius) * 1.8 + 32) : celsius;
}

// All four states are in one report.
std::optional<Value> tyreAlert(int, const Wire &wire)
{
    int alert = 0;
    for (const ValueId id : {valueId("tyre.front_left.state"), valueId("tyre.front_right.state"),
                             valueId("tyre.rear_left.state"), valueId("tyre.rear_right.state")})
        alert |= tyreState(wire.raw(id).value_or(0)) != 0;
    return alert;
}

std::optional<Value> ambientColour(int raw, const Wire &wire)
{
    constexpr int kColours[] = {7, 1, 3, 2, 4, 5, 0, 6};
    constexpr int kColoursOf97To102[] = {7, 6, 1, 5, 3, 0, 2, 4};
    const int code = raw & 0x7F;
    if (code > 7)
        return 0;
    const bool isOfList = wire.carModel >= 97 && wire.carModel <= 102;
    return (isOfList ? kColoursOf97To102 : kColours)[code];
}

} // namespace meanings

} // namespace bench
