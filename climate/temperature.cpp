// Set temperatures and their unit, from the climate frame alone: the unit settings do not matter.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <translator.h>

namespace canservice {

namespace {

constexpr int kLeftByte = 2;
constexpr int kRightByte = 3;
constexpr int kUnitByte = 4;
constexpr quint8 kFahrenheitMask = 0x40;
constexpr int kIndexByte = 6;

enum TemperatureCode {
    Low = 0x00,
    First = 0x1F, // 15.5 degrees Celsius
    Last = 0x3B,  // 29.5 degrees Celsius
    High = 0x7F,
    None = 0xFF,
};

constexpr int kCelsiusText = 990;
constexpr int kFahrenheitText = 993;

// Each step in double precision, its result narrowed to single.
constexpr float celsius(int code) { return static_cast<float>((code - First) * 0.5 + 15.5); }

constexpr float fahrenheit(float celsius)
{
    return static_cast<float>(static_cast<double>(celsius) * 1.8 + 32);
}

bool isFahrenheit(const QByteArray &climate)
{
    return (canbox::byteAt(climate, kUnitByte) & kFahrenheitMask) != 0;
}

} // namespace

float SimpleService::getAcTemperature()
{
    const int code = canbox::byteAt(mAcData, kLeftByte);
    if (code == None)
        LOG_DEBUG() << "_____________0xFF____________";
    return setTemperature(code);
}

float SimpleService::getAcRightTemperature()
{
    const int code = canbox::byteAt(mAcData, kRightByte);
    if (code == None)
        LOG_DEBUG() << "_____________0xFF____________";
    return setTemperature(code);
}

float SimpleService::setTemperature(int code) const
{
    if (code == Low)
        return -100.0F;
    if (code == High)
        return -101.0F;
    if (code < First || code > Last)
        return -1.0F;
    return isFahrenheit(mAcData) ? fahrenheit(celsius(code)) : celsius(code);
}

float SimpleService::getAcRearTemperature() { return 0.0F; }

QString SimpleService::getAcTemperatureUnit()
{
    return Translator::translate(isFahrenheit(mAcData) ? kFahrenheitText : kCelsiusText);
}

QString SimpleService::getAcRightTemperatureUnit() { return getAcTemperatureUnit(); }

int SimpleService::getAcTemperatureIndex()
{
    const int index = canbox::byteAt(mAcData, kIndexByte);
    LOG_DEBUG() << index;
    return index;
}

int SimpleService::getAcRightTemperatureIndex()
{
    const int index = canbox::byteAt(mAcData, kIndexByte);
    LOG_DEBUG() << index;
    return index;
}

int SimpleService::getAcRearTemperatureIndex()
{
    const int index = canbox::byteAt(mAcData, kIndexByte);
    LOG_DEBUG() << index;
    return index;
}

} // namespace canservice
