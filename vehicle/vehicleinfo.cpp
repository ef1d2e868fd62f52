// The vehicle information frames: driving data, tyres, battery. A signal for what changed.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <translator.h>

#include <algorithm>

namespace canservice {

namespace {

constexpr int kFrame1Size = 18;
constexpr int kFrame2Size = 5;

// Unit texts of the host; none for an invalid value.
constexpr int kNoUnit = 0;
constexpr int kKilometres = 997;
constexpr int kLitresPer100Kilometres = 1002;
constexpr int kKilometresPerHour = 992;

const QLatin1String kInvalid("--");

/// kPa, in steps of 2.75; -1 for no reading.
constexpr float tirePressure(quint8 code)
{
    return code == 0xFF ? -1.0F : static_cast<float>(code * 2.75);
}

// The host's tyre state for each of the box's 4-bit codes.
constexpr int kTireStates[16] = {0, 2, 1, 0, 0, 0, 0, 1};

/// Volts, in single precision at each step.
constexpr float batteryVoltage(quint8 code)
{
    return std::clamp(static_cast<float>(code * 47) / 755.0F + 3.0F, 3.0F, 17.9F);
}

template <typename Value>
bool store(Value &stored, const Value &value)
{
    if (stored == value)
        return false;
    stored = value;
    return true;
}

} // namespace

// Payload: [0..2] odometer, [3..4] range, [5] consumption, [7..10] tyre pressures, [15..16] tyre
// states, four bits each; the rest unused.
void SimpleService::doCarInformationData1(int dataType, QByteArray &payload)
{
    if (payload.size() != kFrame1Size) {
        LOG_ERROR();
        return;
    }
    LOG_DEBUG() << dataType << payload.toHex();
    static constexpr Handler kSteps[] = {
        &SimpleService::takeOdometer,    &SimpleService::takeRange,
        &SimpleService::takeConsumption, &SimpleService::takeTirePressures,
        &SimpleService::takeTireStates,
    };
    setSteps(kSteps, dataType, payload);
    finishFrame();
}

// 24 bits, no invalid value.
void SimpleService::takeOdometer(int, QByteArray &payload)
{
    const quint8 *bytes = canbox::bytesOf(payload);
    const int odometer = bytes[0] << 16 | bytes[1] << 8 | bytes[2];
    takeText(mDrivingData.odometer, mOdometerSource, odometer, odometer, kKilometres);
}

void SimpleService::takeRange(int, QByteArray &payload)
{
    const int range = canbox::byteAt(payload, 3) << 8 | canbox::byteAt(payload, 4);
    takeText(mDrivingData.range, mRangeSource, range, range, range < 1000 ? kKilometres : kNoUnit);
}

void SimpleService::takeConsumption(int, QByteArray &payload)
{
    const int code = canbox::byteAt(payload, 5);
    const auto consumption = static_cast<float>((2 * code + 1) / 10.0);
    takeText(mDrivingData.consumption, mConsumptionSource, code, static_cast<double>(consumption),
             consumption <= 30.0F ? kLitresPer100Kilometres : kNoUnit);
}

void SimpleService::takeTirePressures(int, QByteArray &payload)
{
    const quint8 *bytes = canbox::bytesOf(payload);
    bool pressureChanged = false;
    for (int tire = 0; tire < 4; ++tire)
        pressureChanged |= store(mTirePressure[tire], tirePressure(bytes[7 + tire]));
    if (pressureChanged)
        emit tireDataChanged();
}

void SimpleService::takeTireStates(int, QByteArray &payload)
{
    const quint8 *bytes = canbox::bytesOf(payload);
    const int codes[] = {bytes[15] >> 4, bytes[15] & 0x0F, bytes[16] >> 4, bytes[16] & 0x0F};
    bool stateChanged = false;
    for (int tire = 0; tire < 4; ++tire)
        stateChanged |= store(mTireStatus[tire], kTireStates[codes[tire]]);
    const bool alert = std::any_of(std::begin(mTireStatus), std::end(mTireStatus),
                                   [](int state) { return state != 0; });
    mTireAlertType = alert ? 1 : 0;
    if (stateChanged)
        emit tireAlert();
}

// The host's unit text is asked for each time, because its language may change. While it and the
// code are those of the last text, so is the text, and nothing is built.
template <typename Number>
void SimpleService::takeText(QString &text, BuiltFrom &source, int code, Number number, int unit)
{
    const QString unitText = unit != kNoUnit ? Translator::translate(unit) : QString();
    const bool sameUnit = unitText.isSharedWith(source.unitText) || unitText == source.unitText;
    if (source.code == code && sameUnit)
        return;
    source = {code, unitText};
    if (store(text, unit != kNoUnit ? QString::number(number) + unitText : QString(kInvalid)))
        emit drivingDataChanged();
}

// Payload: [0] speed, [4] battery voltage; the rest unused.
void SimpleService::doCarInformationData2(int dataType, QByteArray &payload)
{
    if (payload.size() != kFrame2Size) {
        LOG_ERROR();
        return;
    }
    static constexpr Handler kSteps[] = {&SimpleService::takeSpeed,
                                         &SimpleService::takeBatteryVoltage};
    setSteps(kSteps, dataType, payload);
    finishFrame();
}

void SimpleService::takeSpeed(int, QByteArray &payload)
{
    const int speed = canbox::byteAt(payload, 0);
    takeText(mDrivingData.speed, mSpeedSource, speed, speed,
             speed != 0xFF ? kKilometresPerHour : kNoUnit);
}

void SimpleService::takeBatteryVoltage(int, QByteArray &payload)
{
    if (store(mBatteryVoltage, batteryVoltage(canbox::byteAt(payload, 4))))
        emit batteryVoltageChange();
}

} // namespace canservice
