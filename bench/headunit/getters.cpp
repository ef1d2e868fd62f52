#include "bench/headunit/getters.h"

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
Value ask(Look &look)
{
    return (look.service.*Operation)();
}

template <typename Type>
constexpr int typeOf(Type (S::*)())
{
    return kType<Type>;
}

template <auto Operation>
constexpr Reader get{ask<Operation>, typeOf(Operation)};

template <auto Operation>
constexpr Reader getNot{[](Look &look) { return Value(!(look.service.*Operation)()); },
                        kType<bool>};

template <auto Operation>
QString text(S &service)
{
    return (service.*Operation)();
}

// One number for what the interface answers in two.
template <auto Heat, auto Ventilation>
constexpr Reader seat{[](Look &look) {
                          const int heat = (look.service.*Heat)();
                          return Value(heat > 0 ? heat + 3 : (look.service.*Ventilation)());
                      },
                      kType<int>};

// Members of the records.
template <QString DrivingData::*Member>
constexpr Reader driving{[](Look &look) { return Value(look.drivingData().*Member); },
                         kType<QString>};

template <unsigned char AmbientLightData::*Member>
constexpr Reader ambient{
    [](Look &look) {
        return Value(static_cast<int>(look.service.getCarSettingData().ambient.*Member));
    },
    kType<int>};

template <int Entry>
constexpr Reader unitValue{[](Look &look) { return Value(look.unitData().values.value(Entry)); },
                           kType<int>};

// The words of a getter where they are not the car's.
constexpr Word kBands[] = {{255, "none"}};
constexpr Word kTemperatures[] = {{-100, "low"}, {-101, "high"}, {-1, "none"}};
constexpr Word kReadings[] = {{-1, "none"}};
constexpr Word kStates[] = {{0, "good"}, {1, "state1"}, {2, "state2"}};
constexpr Word kAlert[] = {{-1, "none"}, {0, "good"}, {1, "alert"}};
constexpr Word kSwitch[] = {{0, "off"}, {1, "on"}};

// Where each kind of value comes from.
constexpr Getter of(Getter row, Inbound report, Announcement first, Announcement second = nullptr)
{
    row.report = report;
    row.announcements[0] = first;
    row.announcements[1] = second;
    return row;
}

constexpr Getter climate(const char *name, Reader read, Meaning meaning, Span<Word> words = {},
                         QString (*unit)(S &) = nullptr)
{
    return of({name, read, unit, {}, {}, meaning, words}, Inbound::Climate, &S::acStatusChanged);
}

constexpr Getter alias(Getter row)
{
    row.alias = true;
    return row;
}

constexpr Getter quiet(Getter row)
{
    row.quiet = true;
    return row;
}

constexpr Getter door(const char *name, Reader read, Meaning meaning)
{
    return of({name, read, nullptr, {}, {}, meaning, words::kOpen}, Inbound::Doors,
              &S::doorChanged);
}

constexpr Getter radar(const char *name, Inbound report, Reader read, Meaning meaning)
{
    return of({name, read, nullptr, {}, {}, meaning, kBands}, report, &S::sigRadarChanged);
}

constexpr Getter side(const char *name, Reader read)
{
    return {name, read, nullptr, {}, {}, nullptr, kBands};
}

constexpr Getter drive(const char *name, Inbound report, Reader read, Meaning meaning)
{
    return of({name, read, nullptr, {}, {}, meaning}, report, &S::drivingDataChanged);
}

constexpr Getter tyre(const char *name, Reader read, Meaning meaning)
{
    return of({name, read, text<&S::getTireUnit>, {}, {}, meaning, kReadings},
              Inbound::VehicleInfo1, &S::tireDataChanged);
}

constexpr Getter tyreState(const char *name, Reader read, Meaning meaning)
{
    return of({name, read, nullptr, {}, {}, meaning, kStates}, Inbound::VehicleInfo1,
              &S::tireAlert);
}

constexpr int id(const char *name) { return static_cast<int>(valueId(name)); }

namespace m = meanings;

// clang-format off
const Getter kGetters[] = {
    of({"version", get<&S::version>}, Inbound::Version, &S::sigVersionData),

    door("door.left_front",  get<&S::isLeftFrontDoorOpen>,  m::isSet<id("door.left_front")>),
    door("door.right_front", get<&S::isRightFrontDoorOpen>, m::isSet<id("door.right_front")>),
    door("door.left_rear",   get<&S::isLeftRearDoorOpen>,   m::isSet<id("door.left_rear")>),
    door("door.right_rear",  get<&S::isRightRearDoorOpen>,  m::isSet<id("door.right_rear")>),
    door("door.rear",        get<&S::isRearDoorOpen>,       m::isSet<id("door.rear")>),
    {"door.front", get<&S::isFrontDoorOpen>, nullptr, {}, {}, nullptr, words::kOpen},
    {"door.status", get<&S::getDoorStatus>},

    climate("climate.power",         getNot<&S::isPowerOff>, m::isClear<id("climate.power")>, kSwitch),
    alias(climate("climate.power_off", get<&S::isPowerOff>,  m::isSet<id("climate.power")>)),
    climate("climate.ac",            get<&S::isAc>,          m::isSet<id("climate.ac")>, kSwitch),
    climate("climate.inside_air",    get<&S::isInside>,      m::isSet<id("climate.inside_air")>, kSwitch),
    climate("climate.auto",          get<&S::isAuto>,        m::isSet<id("climate.auto")>, kSwitch),
    climate("climate.dual",          get<&S::isDual>,        m::isClear<id("climate.dual")>, kSwitch),
    climate("climate.rear_defrost",  get<&S::isRearDefrost>, m::isSet<id("climate.rear_defrost")>, kSwitch),
    climate("climate.mode",          get<&S::getAcWindMode>, m::mapped<id("climate.mode"), m::blowingMode>),
    climate("climate.fan",           get<&S::getAcWindScale>, m::mapped<id("climate.fan"), m::same>),
    climate("climate.left",          get<&S::getAcTemperature>, m::leftTemperature, kTemperatures,
            text<&S::getAcTemperatureUnit>),
    climate("climate.right",         get<&S::getAcRightTemperature>, m::rightTemperature, kTemperatures,
            text<&S::getAcRightTemperatureUnit>),
    climate("climate.rear",          get<&S::isRearClimate>,  m::isSet<id("climate.rear")>, kSwitch),
    climate("climate.front_defrost", get<&S::isFrontDefrost>, m::isSet<id("climate.front_defrost")>, kSwitch),
    climate("climate.wheel_heat",    get<&S::isAcSwcHeat>,    m::isSet<id("climate.wheel_heat")>, kSwitch),
    climate("climate.max",           get<&S::isAcMax>,        m::isSet<id("climate.max")>, kSwitch),
    climate("climate.left_seat",  seat<&S::getAcFrontLeftHeat, &S::getLeftVentilation>,
            m::mapped<id("climate.left_seat"), m::seat>, words::kSeat),
    climate("climate.right_seat", seat<&S::getAcFrontRightHeat, &S::getRightVentilation>,
            m::mapped<id("climate.right_seat"), m::seat>, words::kSeat),
    alias(climate("climate.left_heat",   get<&S::getAcFrontLeftHeat>,  m::mapped<id("climate.left_seat"), m::seatHeat>)),
    alias(climate("climate.right_heat",  get<&S::getAcFrontRightHeat>, m::mapped<id("climate.right_seat"), m::seatHeat>)),
    alias(climate("climate.left_ventilation",  get<&S::getLeftVentilation>,
                  m::mapped<id("climate.left_seat"), m::seatVentilation>)),
    alias(climate("climate.right_ventilation", get<&S::getRightVentilation>,
                  m::mapped<id("climate.right_seat"), m::seatVentilation>)),
    {"climate.rear_temperature", get<&S::getAcRearTemperature>},
    {"climate.rear_power_off", get<&S::isPowerOffRear>, nullptr, {}, {}, nullptr, kSwitch},
    {"climate.rear_mode", get<&S::getAcWindModeRear>},
    {"climate.rear_fan", get<&S::getAcWindScaleRear>},
    {"climate.rear_left_heat", get<&S::getAcRearLeftHeat>},
    {"climate.rear_right_heat", get<&S::getAcRearRightHeat>},
    {"climate.glass_heat", get<&S::isAcGlassHeat>, nullptr, {}, {}, nullptr, kSwitch},
    {"climate.air_care", get<&S::isAirCareActive>, nullptr, {}, {}, nullptr, kSwitch},
    {"climate.profile", get<&S::getAirConProfile>},
    {"climate.show_request", get<&S::getAcShowRequest>},
    {"climate.air_clear", get<&S::getAcAirClearStatus>},
    {"climate.manual", get<&S::getManualClimateMode>},
    {"climate.dual_controllable", get<&S::getDualControllableState>},

    radar("radar.front.left", Inbound::FrontRadar, get<&S::getFrontRadarLeftDistance>,
          m::mapped<id("radar.front.left"), m::distanceBand>),
    radar("radar.front.middle_left", Inbound::FrontRadar, get<&S::getFrontRadarMiddleLeftDistance>,
          m::mapped<id("radar.front.middle_left"), m::distanceBand>),
    radar("radar.front.middle_right", Inbound::FrontRadar, get<&S::getFrontRadarMiddleRightDistance>,
          m::mapped<id("radar.front.middle_right"), m::distanceBand>),
    radar("radar.front.right", Inbound::FrontRadar, get<&S::getFrontRadarRightDistance>,
          m::mapped<id("radar.front.right"), m::distanceBand>),
    radar("radar.rear.left", Inbound::RearRadar, get<&S::getRearRadarLeftDistance>,
          m::mapped<id("radar.rear.left"), m::distanceBand>),
    radar("radar.rear.middle_left", Inbound::RearRadar, get<&S::getRearRadarMiddleLeftDistance>,
          m::mapped<id("radar.rear.middle_left"), m::distanceBand>),
    radar("radar.rear.middle_right", Inbound::RearRadar, get<&S::getRearRadarMiddleRightDistance>,
          m::mapped<id("radar.rear.middle_right"), m::distanceBand>),
    radar("radar.rear.right", Inbound::RearRadar, get<&S::getRearRadarRightDistance>,
          m::mapped<id("radar.rear.right"), m::distanceBand>),
    side("radar.left.front", get<&S::getLeftRadarFrontDistance>),
    side("radar.left.middle_front", get<&S::getLeftRadarMiddleFrontDistance>),
    side("radar.left.middle_rear", get<&S::getLeftRadarMiddleRearDistance>),
    side("radar.left.rear", get<&S::getLeftRadarRearDistance>),
    side("radar.right.front", get<&S::getRightRadarFrontDistance>),
    side("radar.right.middle_front", get<&S::getRightRadarMiddleFrontDistance>),
    side("radar.right.middle_rear", get<&S::getRightRadarMiddleRearDistance>),
    side("radar.right.rear", get<&S::getRightRadarRearDistance>),
    {"radar.status", get<&S::isRadarStatus>, nullptr, {}, {}, nullptr, kSwitch},

    // Texts with their unit inside, as the host shows them.
    drive("drive.speed", Inbound::VehicleInfo2, driving<&DrivingData::speed>,
          m::shown<id("drive.speed"), m::speed>),
    drive("drive.range", Inbound::VehicleInfo1, driving<&DrivingData::range>,
          m::shown<id("drive.range"), m::range>),
    drive("drive.consumption", Inbound::VehicleInfo1, driving<&DrivingData::consumption>,
          m::shown<id("drive.consumption"), m::consumption>),
    drive("drive.odometer", Inbound::VehicleInfo1, driving<&DrivingData::odometer>,
          m::shown<id("drive.odometer"), m::odometer>),
    {"drive.title1", get<&S::getDrivingDataTitle1>},
    {"drive.title2", get<&S::getDrivingDataTitle2>},
    {"drive.title3", get<&S::getDrivingDataTitle3>},

    // Leaves its first value with the first frame, without a signal when all is well.
    quiet(of({"tyre.alert", get<&S::getTireAlertType>, nullptr, {}, {}, m::tyreAlert, kAlert},
             Inbound::VehicleInfo1, &S::tireAlert)),
    tyre("tyre.front_left.pressure", get<&S::getTirePressureValueFL>,
         m::measured<id("tyre.front_left.pressure"), m::tyrePressure>),
    tyre("tyre.front_right.pressure", get<&S::getTirePressureValueFR>,
         m::measured<id("tyre.front_right.pressure"), m::tyrePressure>),
    tyre("tyre.rear_left.pressure", get<&S::getTirePressureValueRL>,
         m::measured<id("tyre.rear_left.pressure"), m::tyrePressure>),
    tyre("tyre.rear_right.pressure", get<&S::getTirePressureValueRR>,
         m::measured<id("tyre.rear_right.pressure"), m::tyrePressure>),
    tyreState("tyre.front_left.state", get<&S::getTireStatusFL>,
              m::mapped<id("tyre.front_left.state"), m::tyreState>),
    tyreState("tyre.front_right.state", get<&S::getTireStatusFR>,
              m::mapped<id("tyre.front_right.state"), m::tyreState>),
    tyreState("tyre.rear_left.state", get<&S::getTireStatusRL>,
              m::mapped<id("tyre.rear_left.state"), m::tyreState>),
    tyreState("tyre.rear_right.state", get<&S::getTireStatusRR>,
              m::mapped<id("tyre.rear_right.state"), m::tyreState>),

    of({"battery.voltage", get<&S::getBatteryVoltageValue>, text<&S::getBatteryVoltageUnit>, {}, {},
        m::measured<id("battery.voltage"), m::voltage>, kReadings},
       Inbound::VehicleInfo2, &S::batteryVoltageChange),
    {"battery.alert", get<&S::getBatteryVoltageAlertType>},

    of({"ambient.colour", ambient<&AmbientLightData::colour>, nullptr, {}, {}, m::ambientColour},
       Inbound::AmbientLight, &S::sigAmbientChanged),
    of({"ambient.level", ambient<&AmbientLightData::level>, nullptr, {}, {},
        m::mapped<id("ambient.level"), m::fifth>},
       Inbound::AmbientLight, &S::sigAmbientChanged),
    {"ambient.status", get<&S::getAmbientStatus>},

    // A command of the host changes the value at once; the box's report announces it.
    of({"unit.temperature", unitValue<3>, nullptr, {}, {},
        m::setting<id("unit.temperature"), 1>, words::kDegrees},
       Inbound::UnitSettings, &S::unitDataChanged),
    of({"unit.pressure", unitValue<5>, nullptr, {}, {},
        m::setting<id("unit.pressure"), 2>, words::kPressure},
       Inbound::UnitSettings, &S::unitDataChanged),

    {"engine.speed", get<&S::getRotate>, nullptr, {}, {}, nullptr, kReadings},
    {"engine.coolant", get<&S::getCoolantTemp>, text<&S::getCoolantTempUnit>, {}, {}, nullptr, kReadings},
    {"speed", get<&S::getSpeed>, text<&S::getSpeedUnit>},
    {"outside.temperature", get<&S::getTemperature>, text<&S::getTemperatureUnit>},
    {"outside.temperature_text", get<&S::getTemperatureStr>},
    {"mileage.time", get<&S::getTimeAllMileage>},
    {"mileage.oil", get<&S::getOilAllMileage>},
    {"mileage.units", get<&S::getMileageUnits>},
    {"glonass", get<&S::getEarGlonass>},
    {"camera.mode", get<&S::getCameraMode>},
    {"driving_position", get<&S::getCanDrivingPosition>},
};
// clang-format on

const Word *wordOf(const Getter &row, const Value &value)
{
    if (isText(value))
        return nullptr;
    const double number = numberOf(value);
    const Word *word = std::find_if(row.words.begin(), row.words.end(), [&](const Word &candidate) {
        return static_cast<double>(candidate.raw) == number;
    });
    return word == row.words.end() ? nullptr : word;
}

} // namespace

const DrivingData &Look::drivingData()
{
    if (!mDrivingData)
        service.getDrivingData(mDrivingData.emplace());
    return *mDrivingData;
}

const UnitData &Look::unitData()
{
    if (!mUnitData)
        service.getUnitData(mUnitData.emplace());
    return *mUnitData;
}

int getterCount() { return static_cast<int>(std::size(kGetters)); }

const Getter &getter(int index) { return kGetters[index]; }

int findGetter(const QString &name)
{
    const auto *found =
        std::find_if(std::begin(kGetters), std::end(kGetters),
                     [&name](const Getter &row) { return name == QLatin1String(row.name); });
    return found == std::end(kGetters) ? -1 : static_cast<int>(found - std::begin(kGetters));
}

QString Getter::text(const Value &value, const QString &unitText) const
{
    if (const Word *word = wordOf(*this, value))
        return QLatin1String(word->text);
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
    const Word *word = wordOf(*this, value);
    if (word && isSameText(word->text, "none"))
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
