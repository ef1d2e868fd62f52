#include "bench/headunit/getters.h"

#include "bench/wire/tables.h"

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

using S = CanServiceBase;

template <typename Type>
constexpr int kType = std::is_same_v<Type, bool>    ? 0
                      : std::is_same_v<Type, int>   ? 1
                      : std::is_same_v<Type, float> ? 2
                                                    : 3;

// Of an operation of the interface.
template <auto Operation>
Value ask(S &service)
{
    return (service.*Operation)();
}

template <typename Type>
constexpr int typeOf(Type (S::*)())
{
    return kType<Type>;
}

template <auto Operation>
constexpr Reader get{ask<Operation>, typeOf(Operation)};

template <auto Operation>
constexpr Reader getNot{[](S &service) { return Value(!(service.*Operation)()); }, kType<bool>};

template <auto Operation>
QString text(S &service)
{
    return (service.*Operation)();
}

// One number for what the interface answers in two.
template <auto Heat, auto Ventilation>
constexpr Reader seat{[](S &service) {
                          const int heat = (service.*Heat)();
                          return Value(heat > 0 ? heat + 3 : (service.*Ventilation)());
                      },
                      kType<int>};

// Members of the records.
template <QString DrivingData::*Member>
constexpr Reader driving{[](S &service) {
                             DrivingData data;
                             service.getDrivingData(data);
                             return Value(data.*Member);
                         },
                         kType<QString>};

template <unsigned char AmbientLightData::*Member>
constexpr Reader ambient{
    [](S &service) { return Value(static_cast<int>(service.getCarSettingData().ambient.*Member)); },
    kType<int>};

template <int Entry>
constexpr Reader unitValue{[](S &service) {
                               UnitData data;
                               service.getUnitData(data);
                               return Value(data.values.value(Entry));
                           },
                           kType<int>};

// The words of a getter where they are not the car's.
constexpr Word kBands[] = {{255, "none"}};
constexpr Word kTemperatures[] = {{-100, "low"}, {-101, "high"}, {-1, "none"}};
constexpr Word kReadings[] = {{-1, "none"}};
constexpr Word kTyreStates[] = {{0, "good"}, {1, "state1"}, {2, "state2"}};
constexpr Word kAlert[] = {{-1, "none"}, {0, "good"}, {1, "alert"}};
constexpr Word kSwitch[] = {{0, "off"}, {1, "on"}};

// A getter that a signal announces, and what it shows of the car's value of its name or of another.
constexpr Getter of(Getter row, Announcement announcement, Meaning::Map map,
                    const char *source = nullptr)
{
    const ValueId id = valueId(source ? source : row.name);
    row.announcement = announcement;
    row.report = placeOf(id).report->type;
    row.meaning = {map, id};
    return row;
}

namespace m = meanings;

constexpr Getter climate(const char *name, Reader read, Meaning::Map map = m::as<m::isSet>,
                         Span<Word> words = kSwitch, QString (*unit)(S &) = nullptr)
{
    return of({name, read, words, unit}, &S::acStatusChanged, map);
}

constexpr Getter alias(const char *name, Reader read, const char *source, Meaning::Map map)
{
    Getter row = of({name, read}, &S::acStatusChanged, map, source);
    row.alias = true;
    return row;
}

constexpr Getter quiet(Getter row)
{
    row.quiet = true;
    return row;
}

constexpr Getter door(const char *name, Reader read)
{
    return of({name, read, words::kOpen}, &S::doorChanged, m::as<m::isSet>);
}

constexpr Getter radar(const char *name, Reader read)
{
    return of({name, read, kBands}, &S::sigRadarChanged, m::as<m::distanceBand>);
}

constexpr Getter drive(const char *name, Reader read, Meaning::Map map)
{
    return of({name, read}, &S::drivingDataChanged, map);
}

constexpr Getter tyre(const char *name, Reader read)
{
    return of({name, read, kReadings, text<&S::getTireUnit>}, &S::tireDataChanged,
              m::as<m::tyrePressure>);
}

constexpr Getter tyreState(const char *name, Reader read)
{
    return of({name, read, kTyreStates}, &S::tireAlert, m::as<m::tyreState>);
}

// clang-format off
const Getter kGetters[] = {
    {"version", get<&S::version>, {}, nullptr, &S::sigVersionData, Inbound::Version},
    door("door.left_front",  get<&S::isLeftFrontDoorOpen>),
    door("door.right_front", get<&S::isRightFrontDoorOpen>),
    door("door.left_rear",   get<&S::isLeftRearDoorOpen>),
    door("door.right_rear",  get<&S::isRightRearDoorOpen>),
    door("door.rear",        get<&S::isRearDoorOpen>),
    {"door.front", get<&S::isFrontDoorOpen>, words::kOpen},
    {"door.status", get<&S::getDoorStatus>},
    climate("climate.power",         getNot<&S::isPowerOff>, m::as<m::isClear>),
    alias("climate.power_off",       get<&S::isPowerOff>, "climate.power", m::as<m::isSet>),
    climate("climate.ac",            get<&S::isAc>),
    climate("climate.inside_air",    get<&S::isInside>),
    climate("climate.auto",          get<&S::isAuto>),
    climate("climate.dual",          get<&S::isDual>, m::as<m::isClear>),
    climate("climate.rear_defrost",  get<&S::isRearDefrost>),
    climate("climate.mode",          get<&S::getAcWindMode>, m::as<m::blowingMode>, {}),
    climate("climate.fan",           get<&S::getAcWindScale>, m::as<m::same>, {}),
    climate("climate.left",          get<&S::getAcTemperature>, m::temperature, kTemperatures,
            text<&S::getAcTemperatureUnit>),
    climate("climate.right",         get<&S::getAcRightTemperature>, m::temperature, kTemperatures,
            text<&S::getAcRightTemperatureUnit>),
    climate("climate.rear",          get<&S::isRearClimate>),
    climate("climate.front_defrost", get<&S::isFrontDefrost>),
    climate("climate.wheel_heat",    get<&S::isAcSwcHeat>),
    climate("climate.max",           get<&S::isAcMax>),
    climate("climate.left_seat",     seat<&S::getAcFrontLeftHeat, &S::getLeftVentilation>,
            m::as<m::seat>, words::kSeat),
    climate("climate.right_seat",    seat<&S::getAcFrontRightHeat, &S::getRightVentilation>,
            m::as<m::seat>, words::kSeat),
    alias("climate.left_heat",       get<&S::getAcFrontLeftHeat>, "climate.left_seat",
          m::as<m::seatHeat>),
    alias("climate.right_heat",      get<&S::getAcFrontRightHeat>, "climate.right_seat",
          m::as<m::seatHeat>),
    alias("climate.left_ventilation",  get<&S::getLeftVentilation>, "climate.left_seat",
          m::as<m::seatVentilation>),
    alias("climate.right_ventilation", get<&S::getRightVentilation>, "climate.right_seat",
          m::as<m::seatVentilation>),
    {"climate.rear_temperature", get<&S::getAcRearTemperature>},
    {"climate.rear_power_off", get<&S::isPowerOffRear>, kSwitch},
    {"climate.rear_mode", get<&S::getAcWindModeRear>},
    {"climate.rear_fan", get<&S::getAcWindScaleRear>},
    {"climate.rear_left_heat", get<&S::getAcRearLeftHeat>},
    {"climate.rear_right_heat", get<&S::getAcRearRightHeat>},
    {"climate.glass_heat", get<&S::isAcGlassHeat>, kSwitch},
    {"climate.air_care", get<&S::isAirCareActive>, kSwitch},
    {"climate.profile", get<&S::getAirConProfile>},
    {"climate.show_request", get<&S::getAcShowRequest>},
    {"climate.air_clear", get<&S::getAcAirClearStatus>},
    {"climate.manual", get<&S::getManualClimateMode>},
    {"climate.dual_controllable", get<&S::getDualControllableState>},
    radar("radar.front.left",         get<&S::getFrontRadarLeftDistance>),
    radar("radar.front.middle_left",  get<&S::getFrontRadarMiddleLeftDistance>),
    radar("radar.front.middle_right", get<&S::getFrontRadarMiddleRightDistance>),
    radar("radar.front.right",        get<&S::getFrontRadarRightDistance>),
    radar("radar.rear.left",          get<&S::getRearRadarLeftDistance>),
    radar("radar.rear.middle_left",   get<&S::getRearRadarMiddleLeftDistance>),
    radar("radar.rear.middle_right",  get<&S::getRearRadarMiddleRightDistance>),
    radar("radar.rear.right",         get<&S::getRearRadarRightDistance>),
    {"radar.left.front", get<&S::getLeftRadarFrontDistance>, kBands},
    {"radar.left.middle_front", get<&S::getLeftRadarMiddleFrontDistance>, kBands},
    {"radar.left.middle_rear", get<&S::getLeftRadarMiddleRearDistance>, kBands},
    {"radar.left.rear", get<&S::getLeftRadarRearDistance>, kBands},
    {"radar.right.front", get<&S::getRightRadarFrontDistance>, kBands},
    {"radar.right.middle_front", get<&S::getRightRadarMiddleFrontDistance>, kBands},
    {"radar.right.middle_rear", get<&S::getRightRadarMiddleRearDistance>, kBands},
    {"radar.right.rear", get<&S::getRightRadarRearDistance>, kBands},
    {"radar.status", get<&S::isRadarStatus>, kSwitch},
    // Texts with their unit inside, as the host shows them.
    drive("drive.speed",       driving<&DrivingData::speed>, m::as<m::speed>),
    drive("drive.range",       driving<&DrivingData::range>, m::as<m::range>),
    drive("drive.consumption", driving<&DrivingData::consumption>, m::as<m::consumption>),
    drive("drive.odometer",    driving<&DrivingData::odometer>, m::as<m::odometer>),
    {"drive.title1", get<&S::getDrivingDataTitle1>},
    {"drive.title2", get<&S::getDrivingDataTitle2>},
    {"drive.title3", get<&S::getDrivingDataTitle3>},
    // Leaves its first value with the first frame, without a signal when all is well.
    quiet(of({"tyre.alert", get<&S::getTireAlertType>, kAlert}, &S::tireAlert, m::tyreAlert,
             "tyre.front_left.state")),
    tyre("tyre.front_left.pressure",  get<&S::getTirePressureValueFL>),
    tyre("tyre.front_right.pressure", get<&S::getTirePressureValueFR>),
    tyre("tyre.rear_left.pressure",   get<&S::getTirePressureValueRL>),
    tyre("tyre.rear_right.pressure",  get<&S::getTirePressureValueRR>),
    tyreState("tyre.front_left.state",  get<&S::getTireStatusFL>),
    tyreState("tyre.front_right.state", get<&S::getTireStatusFR>),
    tyreState("tyre.rear_left.state",   get<&S::getTireStatusRL>),
    tyreState("tyre.rear_right.state",  get<&S::getTireStatusRR>),
    of({"battery.voltage", get<&S::getBatteryVoltageValue>, kReadings,
        text<&S::getBatteryVoltageUnit>}, &S::batteryVoltageChange, m::as<m::voltage>),
    {"battery.alert", get<&S::getBatteryVoltageAlertType>},
    of({"ambient.colour", ambient<&AmbientLightData::colour>}, &S::sigAmbientChanged,
       m::ambientColour),
    of({"ambient.level", ambient<&AmbientLightData::level>}, &S::sigAmbientChanged, m::as<m::fifth>),
    {"ambient.status", get<&S::getAmbientStatus>},
    // A command of the host changes the value at once; the box's report announces it.
    of({"unit.temperature", unitValue<3>, words::kDegrees}, &S::unitDataChanged, m::setting<1>),
    of({"unit.pressure", unitValue<5>, words::kPressure}, &S::unitDataChanged, m::setting<2>),
    {"engine.speed", get<&S::getRotate>, kReadings},
    {"engine.coolant", get<&S::getCoolantTemp>, kReadings, text<&S::getCoolantTempUnit>},
    {"speed", get<&S::getSpeed>, {}, text<&S::getSpeedUnit>},
    {"outside.temperature", get<&S::getTemperature>, {}, text<&S::getTemperatureUnit>},
    {"outside.temperature_text", get<&S::getTemperatureStr>},
    {"mileage.time", get<&S::getTimeAllMileage>},
    {"mileage.oil", get<&S::getOilAllMileage>},
    {"mileage.units", get<&S::getMileageUnits>},
    {"glonass", get<&S::getEarGlonass>},
    {"camera.mode", get<&S::getCameraMode>},
    {"driving_position", get<&S::getCanDrivingPosition>},
};
// clang-format on

} // namespace

int getterCount() { return static_cast<int>(std::size(kGetters)); }

const Getter &getter(int index) { return kGetters[index]; }

int findGetter(const QString &name)
{
    const Getter *found = findNamed(kGetters, name);
    return found ? static_cast<int>(found - kGetters) : -1;
}

QString Getter::text(const Value &value, const QString &unitText) const
{
    if (const Word *word = isText(value) ? nullptr : wordOf(words, numberOf(value)))
        return QLatin1String(word->name);
    if (isQuantity()) {
        const std::optional<Quantity> quantity = quantityIn(plainText(value));
        return quantity
                   ? QString::number(quantity->number, 'g', 10) + QLatin1Char(' ') + quantity->unit
                   : QStringLiteral("none");
    }
    const QString number = plainText(value);
    return unitText.isEmpty() ? number : number + QLatin1Char(' ') + unitText;
}

Reading Getter::reading(const Value &value, const QString &unitText) const
{
    const Word *word = isText(value) ? nullptr : wordOf(words, numberOf(value));
    if (word && isSameText(word->name, "none"))
        return {std::nullopt, unitText};
    if (!isQuantity())
        return {value, unitText};
    const std::optional<Quantity> quantity = quantityIn(plainText(value));
    if (!quantity)
        return {};
    return {static_cast<float>(quantity->number), quantity->unit};
}

QString Getter::textOf(CanServiceBase &service) const
{
    return text(read(service), unitOf(service));
}

} // namespace bench
