// The door frame, and the host's view of doors, engine, tyres, battery and records.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <translator.h>

namespace canservice {

namespace {

constexpr int kDoorsSize = 7;

// Payload byte 0; the bits are kept in place.
enum Door {
    RightFrontDoor = 0x80,
    LeftFrontDoor = 0x40,
    RightRearDoor = 0x20,
    LeftRearDoor = 0x10,
    RearDoor = 0x08,
    AllDoors = 0xF8,
};

enum Tire { FrontLeftTire, FrontRightTire, RearLeftTire, RearRightTire };

// Unit texts of the host. They are fixed: no unit setting changes them.
constexpr int kVolt = 339;
constexpr int kCelsius = 990;
constexpr int kKilopascal = 1006;

} // namespace

// Payload: [0] bits 7..3 the doors, bits 2..0 unused; [1..6] unused.
void SimpleService::doCarBasicInfor(int, QByteArray &payload)
{
    if (payload.size() != kDoorsSize) {
        LOG_ERROR();
        return;
    }
    const int doors = canbox::byteAt(payload, 0) & AllDoors;
    if (doors == mDoorStatus)
        return;
    mDoorStatus = doors;
    emit doorChanged();
}

int SimpleService::getDoorStatus() { return 1; }
bool SimpleService::isFrontDoorOpen() { return false; }
bool SimpleService::isRearDoorOpen() { return (mDoorStatus & RearDoor) != 0; }
bool SimpleService::isLeftRearDoorOpen() { return (mDoorStatus & LeftRearDoor) != 0; }
bool SimpleService::isRightRearDoorOpen() { return (mDoorStatus & RightRearDoor) != 0; }
bool SimpleService::isLeftFrontDoorOpen() { return (mDoorStatus & LeftFrontDoor) != 0; }
bool SimpleService::isRightFrontDoorOpen() { return (mDoorStatus & RightFrontDoor) != 0; }

int SimpleService::getRotate() { return mRotate; }
int SimpleService::getCoolantTemp() { return mCoolantTemp; }
QString SimpleService::getCoolantTempUnit() { return Translator::translate(kCelsius); }

int SimpleService::getTireAlertType() { return mTireAlertType; }
int SimpleService::getTireStatusFR() { return mTireStatus[FrontRightTire]; }
int SimpleService::getTireStatusFL() { return mTireStatus[FrontLeftTire]; }
int SimpleService::getTireStatusRL() { return mTireStatus[RearLeftTire]; }
int SimpleService::getTireStatusRR() { return mTireStatus[RearRightTire]; }
float SimpleService::getTirePressureValueFR() { return mTirePressure[FrontRightTire]; }
float SimpleService::getTirePressureValueFL() { return mTirePressure[FrontLeftTire]; }
float SimpleService::getTirePressureValueRL() { return mTirePressure[RearLeftTire]; }
float SimpleService::getTirePressureValueRR() { return mTirePressure[RearRightTire]; }
QString SimpleService::getTireUnit() { return Translator::translate(kKilopascal); }

float SimpleService::getBatteryVoltageValue() { return mBatteryVoltage; }
QString SimpleService::getBatteryVoltageUnit() { return Translator::translate(kVolt); }
int SimpleService::getBatteryVoltageAlertType() { return mBatteryAlertType; }

int SimpleService::getFuelConsumptionData(FuelConsumptionData &data)
{
    data = mFuelConsumptionData;
    return 0;
}

int SimpleService::getDrivingData(DrivingData &data)
{
    CHECK_THREAD();
    data = mDrivingData;
    return 0;
}

int SimpleService::getOtherInfoData(OtherInfoData &data)
{
    data = mOtherInfoData;
    return 0;
}

int SimpleService::getVehicleData(QMap<QString, QString> &) { return 0; }

} // namespace canservice
