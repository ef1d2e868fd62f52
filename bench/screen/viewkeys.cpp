#include "viewkeys.h"

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

// The host's climate keys, by what the virtual car does on them.
enum ClimateKey {
    PowerKey = 0,
    AcKey = 2,
    AutoKey = 3,
    RearDefrostKey = 4,
    FanUpKey = 15,
    FanDownKey = 16,
    WarmerKey = 19,
    CoolerKey = 20,
    BlowingModeKey = 31,
};

constexpr quint8 kWheelKey = 5;
constexpr int kShortPress = 200; // ms

template <CarValue Door>
void toggle(Session &session)
{
    session.car().setRaw(Door, session.car().raw(Door) == 0);
}

template <int Key>
void climate(Session &session)
{
    session.service().sendAcKey(Key, 0);
}

// A distance code: 1 is nearest, 0 is nothing, and the last band ends at 31.
int nearer(int code) { return code == 0 ? 31 : std::max(1, code - 5); }
int farther(int code) { return code == 0 || code + 5 > 31 ? 0 : code + 5; }

template <int (*Move)(int)>
void moveRear(Session &session)
{
    for (const CarValue sensor : {CarValue::RadarRearMiddleLeft, CarValue::RadarRearMiddleRight})
        session.car().setRaw(sensor, Move(session.car().raw(sensor)));
}

template <int (*Move)(int)>
void moveFront(Session &session)
{
    for (const CarValue sensor : {CarValue::RadarFrontLeft, CarValue::RadarFrontMiddleLeft})
        session.car().setRaw(sensor, Move(session.car().raw(sensor)));
}

void nextColour(Session &session)
{
    const int colour = session.service().getCarSettingData().ambient.colour;
    session.service().sendCarSettingKey(5, (colour + 1) % 8);
}

void reportMedia(Session &session)
{
    GPSTime time{30, 10, 15, 6, 2025};
    session.service().onRadioSourceInformation(QStringLiteral("FM1"), {QStringLiteral("87.50MHz")},
                                               0);
    session.service().GPSTimeSend(time);
}

void pressBriefly(Session &session)
{
    VirtualCar &car = session.car();
    car.pressKey(kWheelKey);
    QTimer::singleShot(kShortPress, &car, [&car] { car.releaseKey(); });
}

constexpr ViewKey kKeys[] = {
    {'1', "left front door", toggle<CarValue::DoorLeftFront>, true},
    {'2', "right front door", toggle<CarValue::DoorRightFront>, true},
    {'3', "left rear door", toggle<CarValue::DoorLeftRear>, true},
    {'4', "right rear door", toggle<CarValue::DoorRightRear>, true},
    {'5', "tailgate", toggle<CarValue::DoorRear>, true},
    {'r', "obstacle behind, nearer", moveRear<nearer>, true},
    {'R', "obstacle behind, farther", moveRear<farther>, true},
    {'f', "obstacle in front, nearer", moveFront<nearer>, true},
    {'F', "obstacle in front, farther", moveFront<farther>, true},
    {'k', "steering-wheel key 5, short", pressBriefly, true},
    {'K', "hold steering-wheel key 5", [](Session &s) { s.car().pressKey(kWheelKey); }, true},
    {'l', "let it go", [](Session &s) { s.car().releaseKey(); }, true},
    {'o', "climate on and off", climate<PowerKey>, false},
    {'c', "air conditioning", climate<AcKey>, false},
    {'a', "automatic", climate<AutoKey>, false},
    {'+', "warmer", climate<WarmerKey>, false},
    {'-', "cooler", climate<CoolerKey>, false},
    {']', "more air", climate<FanUpKey>, false},
    {'[', "less air", climate<FanDownKey>, false},
    {'b', "next blowing mode", climate<BlowingModeKey>, false},
    {'d', "rear defrost", climate<RearDefrostKey>, false},
    {'i', "ambient light brighter", [](Session &s) { s.service().sendCarSettingKey(4, 1); }, false},
    {'I', "ambient light dimmer", [](Session &s) { s.service().sendCarSettingKey(4, -1); }, false},
    {'n', "next ambient colour", nextColour, false},
    {'u', "temperature unit", [](Session &s) { s.service().setUnitCmd(3); }, false},
    {'p', "pressure unit", [](Session &s) { s.service().setUnitCmd(5); }, false},
    {'m', "report station and clock", reportMedia, false},
    {'v', "ask for every report",
     [](Session &s) {
         s.service().requsetClimate();
         s.service().requsetParkAssist();
         s.service().requsetVehicleInfo();
         s.service().requsetCarSetting();
         s.service().requsetUnitSettings();
     },
     false},
    {'s', "the box falls silent", [](Session &s) { s.box().setSilent(true); }, true},
    {'S', "the box speaks again", [](Session &s) { s.box().setSilent(false); }, true},
    {'x', "unplug the box", [](Session &s) { s.unplug(); }, true},
    {'X', "plug it in again", [](Session &s) { s.plug(); }, true},
};

} // namespace

int viewKeyCount() { return static_cast<int>(std::size(kKeys)); }

const ViewKey &viewKey(int index) { return kKeys[index]; }

const ViewKey *findViewKey(char key)
{
    const auto *found = std::find_if(std::begin(kKeys), std::end(kKeys),
                                     [key](const ViewKey &row) { return row.key == key; });
    return found == std::end(kKeys) ? nullptr : found;
}

} // namespace bench
