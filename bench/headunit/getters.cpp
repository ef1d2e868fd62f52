#include "getters.h"

#include <canservicebase.h>

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

template <auto Operation>
QVariant get(CanServiceBase &service)
{
    return QVariant::fromValue((service.*Operation)());
}

template <auto Operation>
QString text(CanServiceBase &service)
{
    return (service.*Operation)();
}

template <QString DrivingData::*Member>
QVariant driving(CanServiceBase &service)
{
    DrivingData data;
    service.getDrivingData(data);
    return data.*Member;
}

template <unsigned char AmbientLightData::*Member>
QVariant ambient(CanServiceBase &service)
{
    return static_cast<int>(service.getCarSettingData().ambient.*Member);
}

template <int Entry>
QVariant unitValue(CanServiceBase &service)
{
    UnitData data;
    service.getUnitData(data);
    return data.values.value(Entry);
}

template <int Entry>
QString unitText(CanServiceBase &service)
{
    UnitData data;
    service.getUnitData(data);
    return data.texts.value(Entry);
}

using S = CanServiceBase;

constexpr Getter kGetters[] = {
    {"version", get<&S::version>, nullptr},

    {"door.left_front", get<&S::isLeftFrontDoorOpen>, nullptr},
    {"door.right_front", get<&S::isRightFrontDoorOpen>, nullptr},
    {"door.left_rear", get<&S::isLeftRearDoorOpen>, nullptr},
    {"door.right_rear", get<&S::isRightRearDoorOpen>, nullptr},
    {"door.rear", get<&S::isRearDoorOpen>, nullptr},
    {"door.front", get<&S::isFrontDoorOpen>, nullptr},
    {"door.status", get<&S::getDoorStatus>, nullptr},

    {"climate.power_off", get<&S::isPowerOff>, nullptr},
    {"climate.ac", get<&S::isAc>, nullptr},
    {"climate.inside_air", get<&S::isInside>, nullptr},
    {"climate.auto", get<&S::isAuto>, nullptr},
    {"climate.dual", get<&S::isDual>, nullptr},
    {"climate.rear_defrost", get<&S::isRearDefrost>, nullptr},
    {"climate.mode", get<&S::getAcWindMode>, nullptr},
    {"climate.fan", get<&S::getAcWindScale>, nullptr},
    {"climate.left", get<&S::getAcTemperature>, text<&S::getAcTemperatureUnit>},
    {"climate.right", get<&S::getAcRightTemperature>, text<&S::getAcRightTemperatureUnit>},
    {"climate.rear", get<&S::isRearClimate>, nullptr},
    {"climate.front_defrost", get<&S::isFrontDefrost>, nullptr},
    {"climate.wheel_heat", get<&S::isAcSwcHeat>, nullptr},
    {"climate.max", get<&S::isAcMax>, nullptr},
    {"climate.left_heat", get<&S::getAcFrontLeftHeat>, nullptr},
    {"climate.right_heat", get<&S::getAcFrontRightHeat>, nullptr},
    {"climate.left_ventilation", get<&S::getLeftVentilation>, nullptr},
    {"climate.right_ventilation", get<&S::getRightVentilation>, nullptr},
    {"climate.rear_temperature", get<&S::getAcRearTemperature>, nullptr},
    {"climate.rear_power_off", get<&S::isPowerOffRear>, nullptr},
    {"climate.rear_mode", get<&S::getAcWindModeRear>, nullptr},
    {"climate.rear_fan", get<&S::getAcWindScaleRear>, nullptr},
    {"climate.rear_left_heat", get<&S::getAcRearLeftHeat>, nullptr},
    {"climate.rear_right_heat", get<&S::getAcRearRightHeat>, nullptr},
    {"climate.glass_heat", get<&S::isAcGlassHeat>, nullptr},
    {"climate.air_care", get<&S::isAirCareActive>, nullptr},
    {"climate.profile", get<&S::getAirConProfile>, nullptr},
    {"climate.show_request", get<&S::getAcShowRequest>, nullptr},
    {"climate.air_clear", get<&S::getAcAirClearStatus>, nullptr},
    {"climate.manual", get<&S::getManualClimateMode>, nullptr},
    {"climate.dual_controllable", get<&S::getDualControllableState>, nullptr},

    {"radar.front.left", get<&S::getFrontRadarLeftDistance>, nullptr},
    {"radar.front.middle_left", get<&S::getFrontRadarMiddleLeftDistance>, nullptr},
    {"radar.front.middle_right", get<&S::getFrontRadarMiddleRightDistance>, nullptr},
    {"radar.front.right", get<&S::getFrontRadarRightDistance>, nullptr},
    {"radar.rear.left", get<&S::getRearRadarLeftDistance>, nullptr},
    {"radar.rear.middle_left", get<&S::getRearRadarMiddleLeftDistance>, nullptr},
    {"radar.rear.middle_right", get<&S::getRearRadarMiddleRightDistance>, nullptr},
    {"radar.rear.right", get<&S::getRearRadarRightDistance>, nullptr},
    {"radar.left.front", get<&S::getLeftRadarFrontDistance>, nullptr},
    {"radar.left.middle_front", get<&S::getLeftRadarMiddleFrontDistance>, nullptr},
    {"radar.left.middle_rear", get<&S::getLeftRadarMiddleRearDistance>, nullptr},
    {"radar.left.rear", get<&S::getLeftRadarRearDistance>, nullptr},
    {"radar.right.front", get<&S::getRightRadarFrontDistance>, nullptr},
    {"radar.right.middle_front", get<&S::getRightRadarMiddleFrontDistance>, nullptr},
    {"radar.right.middle_rear", get<&S::getRightRadarMiddleRearDistance>, nullptr},
    {"radar.right.rear", get<&S::getRightRadarRearDistance>, nullptr},
    {"radar.status", get<&S::isRadarStatus>, nullptr},

    // Texts with their unit inside, as the host shows them.
    {"drive.speed", driving<&DrivingData::speed>, nullptr},
    {"drive.range", driving<&DrivingData::range>, nullptr},
    {"drive.consumption", driving<&DrivingData::consumption>, nullptr},
    {"drive.odometer", driving<&DrivingData::odometer>, nullptr},
    {"drive.title1", get<&S::getDrivingDataTitle1>, nullptr},
    {"drive.title2", get<&S::getDrivingDataTitle2>, nullptr},
    {"drive.title3", get<&S::getDrivingDataTitle3>, nullptr},

    {"tyre.alert", get<&S::getTireAlertType>, nullptr},
    {"tyre.front_left.pressure", get<&S::getTirePressureValueFL>, text<&S::getTireUnit>},
    {"tyre.front_right.pressure", get<&S::getTirePressureValueFR>, text<&S::getTireUnit>},
    {"tyre.rear_left.pressure", get<&S::getTirePressureValueRL>, text<&S::getTireUnit>},
    {"tyre.rear_right.pressure", get<&S::getTirePressureValueRR>, text<&S::getTireUnit>},
    {"tyre.front_left.state", get<&S::getTireStatusFL>, nullptr},
    {"tyre.front_right.state", get<&S::getTireStatusFR>, nullptr},
    {"tyre.rear_left.state", get<&S::getTireStatusRL>, nullptr},
    {"tyre.rear_right.state", get<&S::getTireStatusRR>, nullptr},

    {"battery.voltage", get<&S::getBatteryVoltageValue>, text<&S::getBatteryVoltageUnit>},
    {"battery.alert", get<&S::getBatteryVoltageAlertType>, nullptr},

    {"ambient.colour", ambient<&AmbientLightData::colour>, nullptr},
    {"ambient.level", ambient<&AmbientLightData::level>, nullptr},
    {"ambient.status", get<&S::getAmbientStatus>, nullptr},

    {"unit.temperature", unitValue<3>, unitText<3>},
    {"unit.pressure", unitValue<5>, unitText<5>},

    {"engine.speed", get<&S::getRotate>, nullptr},
    {"engine.coolant", get<&S::getCoolantTemp>, text<&S::getCoolantTempUnit>},
    {"speed", get<&S::getSpeed>, text<&S::getSpeedUnit>},
    {"outside.temperature", get<&S::getTemperature>, text<&S::getTemperatureUnit>},
    {"outside.temperature_text", get<&S::getTemperatureStr>, nullptr},
    {"mileage.time", get<&S::getTimeAllMileage>, nullptr},
    {"mileage.oil", get<&S::getOilAllMileage>, nullptr},
    {"mileage.units", get<&S::getMileageUnits>, nullptr},
    {"glonass", get<&S::getEarGlonass>, nullptr},
    {"camera.mode", get<&S::getCameraMode>, nullptr},
    {"driving_position", get<&S::getCanDrivingPosition>, nullptr},
};

QString temperatureText(const Snapshot::Value &temperature)
{
    if (temperature.value == -100.0F)
        return QStringLiteral("low");
    if (temperature.value == -101.0F)
        return QStringLiteral("high");
    return temperature.value == -1.0F ? QStringLiteral("--") : temperature.text();
}

} // namespace

int getterCount() { return static_cast<int>(std::size(kGetters)); }

const Getter &getter(int index) { return kGetters[index]; }

int findGetter(const QString &name)
{
    const auto *found =
        std::find_if(std::begin(kGetters), std::end(kGetters),
                     [&name](const Getter &row) { return name == QLatin1String(row.name); });
    return found == std::end(kGetters) ? -1 : static_cast<int>(found - std::begin(kGetters));
}

QString valueText(const QVariant &value)
{
    if (value.userType() == QMetaType::Float)
        return QString::number(static_cast<double>(value.toFloat()), 'g', 6);
    return value.toString();
}

QString Snapshot::Value::text() const
{
    const QString number = valueText(value);
    return unit.isEmpty() ? number : number + QLatin1Char(' ') + unit;
}

Snapshot::Snapshot(CanServiceBase &service)
{
    mValues.reserve(getterCount());
    for (const Getter &row : kGetters)
        mValues.append({row.read(service), row.unit ? row.unit(service) : QString()});
}

Snapshot::Value Snapshot::value(const char *name) const
{
    return mValues.value(findGetter(QLatin1String(name)));
}

QVector<Snapshot::Change> Snapshot::changesSince(const Snapshot &earlier) const
{
    QVector<Change> changes;
    const int count = qMin(mValues.size(), earlier.mValues.size());
    for (int i = 0; i < count; ++i)
        if (!(mValues.at(i) == earlier.mValues.at(i)))
            changes.append({i, earlier.mValues.at(i), mValues.at(i)});
    return changes;
}

QString climateLine(const Snapshot &state)
{
    constexpr struct
    {
        const char *getter, *text;
    } kSwitches[] = {
        {"climate.ac", "A/C"},
        {"climate.max", "max A/C"},
        {"climate.auto", "auto"},
        {"climate.dual", "dual"},
        {"climate.inside_air", "inside air"},
        {"climate.front_defrost", "front defrost"},
        {"climate.rear_defrost", "rear defrost"},
        {"climate.rear", "rear climate"},
        {"climate.wheel_heat", "wheel heat"},
    };
    constexpr struct
    {
        const char *getter, *text;
    } kLevels[] = {
        {"climate.left_heat", "left seat heat"},
        {"climate.right_heat", "right seat heat"},
        {"climate.left_ventilation", "left seat vent"},
        {"climate.right_ventilation", "right seat vent"},
    };

    QStringList parts;
    parts += state.isOn("climate.power_off") ? QStringLiteral("off") : QStringLiteral("on");
    parts += temperatureText(state.value("climate.left")) + QStringLiteral(" | ") +
             temperatureText(state.value("climate.right"));
    parts += QStringLiteral("fan ") + state.value("climate.fan").text();
    parts += QStringLiteral("mode ") + state.value("climate.mode").text();
    for (const auto &row : kSwitches)
        if (state.isOn(row.getter))
            parts += QLatin1String(row.text);
    for (const auto &row : kLevels)
        if (state.isOn(row.getter))
            parts += QLatin1String(row.text) + QLatin1Char(' ') + state.value(row.getter).text();
    return parts.join(QStringLiteral(", "));
}

} // namespace bench
