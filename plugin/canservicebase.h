// The interface between a head unit's host and a CAN service.
//
// The host calls the operations by their place in the virtual table and is compiled elsewhere: the
// order of the declarations, the argument types and the result types are the contract. Misspelt
// names are the contract's own. An operation with a body answers that a service lacks the function.
//
// There is one thread: that of the event loop in which the service was made. Every call comes from
// there, every signal goes out there, and nothing is locked; the service cannot be moved to
// another. To delete it from within one of its signals, call deleteLater().
#pragma once

#include "hostexport.h"
#include "records.h"

#include <QMap>
#include <QObject>

class CANSERVICE_EXPORT CanServiceBase : public QObject
{
    Q_OBJECT

public:
    explicit CanServiceBase(QObject *parent = nullptr);
    ~CanServiceBase() override;

    // Life.
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual int request(int command, int value);
    virtual QString version() = 0;

    // Driving.
    virtual void requestSpeed();
    virtual float getSpeed();
    virtual QString getSpeedUnit();
    virtual QString getTemperatureStr();
    virtual float getTemperature();
    virtual QString getTemperatureUnit();
    virtual float getTimeAllMileage();
    virtual float getOilAllMileage();
    virtual int requestDrivingData();
    virtual int requestMaintenanceData();

    // Vehicle data and settings.
    virtual int getVehicleData(QMap<QString, QString> &data) = 0;
    virtual int setSettings(int setting, int value);
    virtual int getEarGlonass();
    virtual int getMileageUnits();
    virtual int flushDebugFile();

    // Engine.
    virtual int getRotate() = 0;
    virtual int getCoolantTemp() = 0;
    virtual QString getCoolantTempUnit() = 0;

    // Doors.
    virtual int getDoorStatus() = 0;
    virtual bool isFrontDoorOpen() = 0;
    virtual bool isRearDoorOpen() = 0;
    virtual bool isLeftRearDoorOpen() = 0;
    virtual bool isRightRearDoorOpen() = 0;
    virtual bool isLeftFrontDoorOpen() = 0;
    virtual bool isRightFrontDoorOpen() = 0;

    // Park-assist state.
    virtual bool isRadarStatus();

    // Tyres: FR, FL, RL, RR are front right, front left, rear left, rear right.
    virtual int getTireAlertType() = 0;
    virtual int getTireStatusFR() = 0;
    virtual int getTireStatusFL() = 0;
    virtual int getTireStatusRL() = 0;
    virtual int getTireStatusRR() = 0;
    virtual float getTirePressureValueFR() = 0;
    virtual float getTirePressureValueFL() = 0;
    virtual float getTirePressureValueRL() = 0;
    virtual float getTirePressureValueRR() = 0;
    virtual QString getTireUnit() = 0;

    // Battery.
    virtual float getBatteryVoltageValue() = 0;
    virtual QString getBatteryVoltageUnit() = 0;
    virtual int getBatteryVoltageAlertType() = 0;

    // Climate state.
    virtual bool isPowerOff() = 0;
    virtual bool isPowerOffRear() = 0;
    virtual bool isRearClimate() = 0;
    virtual bool isAcMax() = 0;
    virtual bool isAc() = 0;
    virtual bool isInside() = 0;
    virtual bool isAuto() = 0;
    virtual bool isDual() = 0;
    virtual bool isRearDefrost() = 0;
    virtual bool isFrontDefrost() = 0;
    virtual int getAcFrontLeftHeat() = 0;
    virtual int getAcFrontRightHeat() = 0;
    virtual int getAcRearLeftHeat() = 0;
    virtual int getAcRearRightHeat() = 0;
    virtual bool isAcSwcHeat() = 0;
    virtual bool isAcGlassHeat() = 0;
    virtual bool isAirCareActive() = 0;
    virtual int getAirConProfile() = 0;
    virtual int getLeftVentilation() = 0;
    virtual int getRightVentilation() = 0;
    virtual int getAcWindMode() = 0;
    virtual int getAcWindScale() = 0;
    virtual int getAcWindModeRear() = 0;
    virtual int getAcWindScaleRear() = 0;
    virtual int getAcShowRequest();

    // Climate temperatures.
    virtual float getAcTemperature() = 0;
    virtual float getAcRightTemperature() = 0;
    virtual float getAcRearTemperature() = 0;
    virtual QString getAcTemperatureUnit() = 0;
    virtual QString getAcRightTemperatureUnit() = 0;
    virtual int getAcAirClearStatus();

    // Keys from the host.
    virtual int sendAcKey(int key, int value) = 0;
    virtual int sendCarSettingKey(int key, int value) = 0;
    virtual int sendCameraKey(int key, CameraData data);

    // Further climate state.
    virtual int getManualClimateMode();
    virtual int getDualControllableState();

    // Park-assist distances: 1 (nearest) to 7, 255 for nothing.
    virtual int getFrontRadarLeftDistance() = 0;
    virtual int getFrontRadarMiddleLeftDistance() = 0;
    virtual int getFrontRadarMiddleRightDistance() = 0;
    virtual int getFrontRadarRightDistance() = 0;
    virtual int getRearRadarLeftDistance() = 0;
    virtual int getRearRadarMiddleLeftDistance() = 0;
    virtual int getRearRadarMiddleRightDistance() = 0;
    virtual int getRearRadarRightDistance() = 0;
    virtual int getLeftRadarFrontDistance() = 0;
    virtual int getLeftRadarMiddleFrontDistance() = 0;
    virtual int getLeftRadarMiddleRearDistance() = 0;
    virtual int getLeftRadarRearDistance() = 0;
    virtual int getRightRadarFrontDistance() = 0;
    virtual int getRightRadarMiddleFrontDistance() = 0;
    virtual int getRightRadarMiddleRearDistance() = 0;
    virtual int getRightRadarRearDistance() = 0;

    // Camera and ambient light.
    virtual int getCameraMode();
    virtual int getAmbientStatus();
    virtual CarSettingData getCarSettingData() = 0;

    // Records and unit settings.
    virtual int getDrivingData(DrivingData &data) = 0;
    virtual QString getDrivingDataTitle1();
    virtual QString getDrivingDataTitle2();
    virtual QString getDrivingDataTitle3();
    virtual void setDrivingDataPage(int page);
    virtual int getMaintenanceData(VehicleMaintenanceData &data);
    virtual int getFuelConsumptionData(FuelConsumptionData &data) = 0;
    virtual int getUnitData(UnitData &data) = 0;
    virtual void setUnitCmd(int command) = 0;
    virtual int getOtherInfoData(OtherInfoData &data) = 0;

    // Media source and driving position.
    virtual void onRadioSourceInformation(QString source, QStringList info, int type) = 0;
    virtual void setCanDrivingPosition(int position);
    virtual int getCanDrivingPosition();

    // Report requests to the box.
    virtual void requsetGauges() = 0;
    virtual void requsetClimate() = 0;
    virtual void requsetParkAssist() = 0;
    virtual void requsetVehicleInfo() = 0;
    virtual void requsetCarSetting() = 0;
    virtual void requsetDrinvingData() = 0;
    virtual void requsetMaintenance() = 0;
    virtual void requsetFuel() = 0;
    virtual void requsetUnitSettings() = 0;
    virtual void requsetOtherInfo() = 0;

    // Clock and raw bytes.
    virtual GPSTimePacket GPSTimeSend(GPSTime &time) = 0;
    virtual void sendAnyData(QByteArray &data) = 0;

signals:
    void notifyCanbusStatus(int status); ///< 3: the box answers. 0: the link is lost.
    void sigVersionData();
    void acStatusChanged();
    void sigRadarChanged();
    void doorChanged();
    void drivingDataChanged();
    void tireDataChanged();
    void tireAlert();
    void batteryVoltageChange();
    void sigAmbientChanged();
    void unitDataChanged();
    /// \param state 0 pressed, 1 released early, 2 long press reached, 3 released after it.
    void keyEvent(int key, int state, bool fromSwc);
};

Q_DECLARE_INTERFACE(CanServiceBase, "com.quendal.canservicebase/1.0")
