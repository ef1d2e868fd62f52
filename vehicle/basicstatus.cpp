// The door frame, and the host's view of doors, engine, tyres, battery and records.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <translator.h>

namespace canservice {

namespace {

constexpr int kFrameSize = 7;

// Payload byte 0; the bits are kept in place.
enum Door {
    RightFront = 0x80,
    LeftFront = 0x40,
    RightRear = 0x20,
    LeftRear = 0x10,
    Rear = 0x08,
    AllDoors = 0xF8,
};

enum Tire { FrontLeft, FrontRight, RearLeft, RearRight };

// Unit texts of the host. They are fixed: no unit setting changes them.
constexpr int kVolt = 339;
constexpr int kCelsius = 990;
constexpr int kKilopascal = 1006;

} // namespace

// Payload: [0] bits 7..3 the doors, bits 2..0 unused; [1..6] unused.
void SimpleService::doCarBasicInfor(int, QByteArray &payload)
{
    if (payload.size() != kFrameSize) {
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
bool SimpleService::isRearDoorOpen() { return (mDoorStatus & Rear) != 0; }
bool SimpleService::isLeftRearDoorOpen() { return (mDoorStatus & LeftRear) != 0; }
bool SimpleService::isRightRearDoorOpen() { return (mDoorStatus & RightRear) != 0; }
bool SimpleService::isLeftFrontDoorOpen() { return (mDoorStatus & LeftFront) != 0; }
bool SimpleService::isRightFrontDoorOpen() { return (mDoorStatus & RightFront) != 0; }

int SimpleService::getRotate() { return mRotate; }
int SimpleService::getCoolantTemp() { return mCoolantTemp; }
QString SimpleService::getCoolantTempUnit() { return Translator::translate(kCelsius); }

int SimpleService::getTireAlertType() { return mTireAlertType; }
int SimpleService::getTireStatusFR() { return mTireStatus[FrontRight]; }
int SimpleService::getTireStatusFL() { return mTireStatus[FrontLeft]; }
int SimpleService::getTireStatusRL() { return mTireStatus[RearLeft]; }
int SimpleService::getTireStatusRR() { return mTireStatus[RearRight]; }
float SimpleService::getTirePressureValueFR() { return mTirePressure[FrontRight]; }
float SimpleService::getTirePressureValueFL() { return mTirePressure[FrontLeft]; }
float SimpleService::getTirePressureValueRL() { return mTirePressure[RearLeft]; }
float SimpleService::getTirePressureValueRR() { return mTirePressure[RearRight]; }
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
