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

/// A CAN service as its host sees it.
///
/// What is said of frames is what the service for Ford decoder boxes does. "0x24 byte 0 bit 3" is a
/// bit of the payload of the box's report with data type 0x24: bytes count from 0, bit 7 is the
/// most significant. "Lacking" marks a function that this service does not have; it answers what is
/// said here, always.
///
/// All calls, signals and bytes of the line belong to the thread that made the service. Nothing may
/// be called from another one, and the service may be deleted inside one of its own signals only by
/// deleteLater(). A getter answers from the last report: no call waits for the box. A lost link
/// leaves the values as they are, and so does a report of another length than its type has.
class CANSERVICE_EXPORT CanServiceBase : public QObject
{
    Q_OBJECT

public:
    /// A service with no state of its own; \p parent owns it.
    explicit CanServiceBase(QObject *parent = nullptr);
    /// Sends nothing; call stop() first to put the box to sleep.
    ~CanServiceBase() override;

    /// \name Life
    /// \{
    /// Wakes the box (frame 0x81) and asks for its version (0x90), then again every 2 s until it
    /// answers. Ambient colour and level fall back to 0. May be repeated.
    virtual void start() = 0;
    /// Sends the box to sleep (frame 0x81). The supervision of the link goes on: a box that still
    /// talks keeps the link up.
    virtual void stop() = 0;
    virtual int request(int command, int value); ///< Lacking. \returns -1.
    /// The version text of the box, from report 0x30: UTF-8 up to the first zero byte.
    /// \returns empty before the first report. Announced by sigVersionData().
    virtual QString version() = 0;
    /// \}

    /// \name Driving
    /// \{
    virtual void requestSpeed(); ///< Lacking: does nothing.
    virtual float getSpeed();    ///< Lacking: the speed is a text in getDrivingData(). \returns 0.
    virtual QString getSpeedUnit();       ///< Lacking. \returns a null text.
    virtual QString getTemperatureStr();  ///< Lacking. \returns a null text.
    virtual float getTemperature();       ///< Lacking. \returns -1.
    virtual QString getTemperatureUnit(); ///< Lacking. \returns an empty text.
    virtual float getTimeAllMileage();    ///< Lacking. \returns -1.
    virtual float getOilAllMileage();     ///< Lacking. \returns -1.
    /// Lacking: requsetDrinvingData() asks for them. \returns -1.
    virtual int requestDrivingData();
    virtual int requestMaintenanceData(); ///< Lacking. \returns -1.
    /// \}

    /// \name Vehicle data and settings
    /// \{
    /// No report carries such data: leaves \p data alone. \returns 0.
    virtual int getVehicleData(QMap<QString, QString> &data) = 0;
    /// Lacking: see sendCarSettingKey(). \returns -1.
    virtual int setSettings(int setting, int value);
    virtual int getEarGlonass();   ///< Lacking. \returns -1.
    virtual int getMileageUnits(); ///< Lacking. \returns -1.
    virtual int flushDebugFile();  ///< Lacking: the service writes no file. \returns -1.
    /// \}

    /// \name Engine
    /// \{
    /// Engine speed in revolutions a minute. No report carries it. \returns -1, unknown.
    virtual int getRotate() = 0;
    /// Coolant temperature. No report carries it. \returns -1, unknown.
    virtual int getCoolantTemp() = 0;
    /// Host text 990, degrees Celsius, whatever the unit settings say.
    virtual QString getCoolantTempUnit() = 0;
    /// \}

    /// \name Doors
    /// \{
    virtual int getDoorStatus() = 0;    ///< \returns 1: the doors have getters of their own.
    virtual bool isFrontDoorOpen() = 0; ///< No report carries it. \returns false.
    /// 0x24 byte 0 bit 3. False before the first report. Announced by doorChanged().
    virtual bool isRearDoorOpen() = 0;
    /// 0x24 byte 0 bit 4. False before the first report. Announced by doorChanged().
    virtual bool isLeftRearDoorOpen() = 0;
    /// 0x24 byte 0 bit 5. False before the first report. Announced by doorChanged().
    virtual bool isRightRearDoorOpen() = 0;
    /// 0x24 byte 0 bit 6. False before the first report. Announced by doorChanged().
    virtual bool isLeftFrontDoorOpen() = 0;
    /// 0x24 byte 0 bit 7. False before the first report. Announced by doorChanged().
    virtual bool isRightFrontDoorOpen() = 0;
    /// \}

    /// \name Park-assist state
    /// \{
    virtual bool isRadarStatus(); ///< Lacking: the box is not asked. \returns true.
    /// \}

    /// \name Tyres
    /// FR, FL, RL, RR are front right, front left, rear left, rear right.
    /// \{
    /// Whether any tyre is not in order.
    /// \returns 1 if a state below is not 0, else 0; -1 before the first report 0x63. Announced by
    ///          tireAlert(), but for the step from -1 to 0.
    virtual int getTireAlertType() = 0;
    /// Front right: 0x63 byte 15 bits 3..0 as a state.
    /// \returns 2 for code 1, 1 for codes 2 and 7, 0 for any other code and before the first
    ///          report. Announced by tireAlert().
    virtual int getTireStatusFR() = 0;
    /// Front left: 0x63 byte 15 bits 7..4. States and signal as of getTireStatusFR().
    virtual int getTireStatusFL() = 0;
    /// Rear left: 0x63 byte 16 bits 7..4. States and signal as of getTireStatusFR().
    virtual int getTireStatusRL() = 0;
    /// Rear right: 0x63 byte 16 bits 3..0. States and signal as of getTireStatusFR().
    virtual int getTireStatusRR() = 0;
    /// Front right: 0x63 byte 8 in kPa.
    /// \returns 0 to 698.5 in steps of 2.75; -1 for code 0xFF, no reading, and before the first
    ///          report. Announced by tireDataChanged().
    virtual float getTirePressureValueFR() = 0;
    /// Front left: 0x63 byte 7. Range and signal as of getTirePressureValueFR().
    virtual float getTirePressureValueFL() = 0;
    /// Rear left: 0x63 byte 9. Range and signal as of getTirePressureValueFR().
    virtual float getTirePressureValueRL() = 0;
    /// Rear right: 0x63 byte 10. Range and signal as of getTirePressureValueFR().
    virtual float getTirePressureValueRR() = 0;
    virtual QString getTireUnit() = 0; ///< Host text 1006, kPa, whatever the unit settings say.
    /// \}

    /// \name Battery
    /// \{
    /// Volts, from 0x69 byte 4: code * 47 / 755 + 3.
    /// \returns 3.0 to 17.9; -1 before the first report. Announced by batteryVoltageChange().
    virtual float getBatteryVoltageValue() = 0;
    virtual QString getBatteryVoltageUnit() = 0;  ///< Host text 339, V.
    virtual int getBatteryVoltageAlertType() = 0; ///< No report carries an alert. \returns 0.
    /// \}

    /// \name Climate state
    /// From report 0x21, and as if all its bytes were 0 before the first one. Announced by
    /// acStatusChanged().
    /// \{
    virtual bool isPowerOff() = 0;     ///< The climate control is off: byte 0 bit 7.
    virtual bool isPowerOffRear() = 0; ///< \returns false: the rear control is not reported.
    virtual bool isRearClimate() = 0;  ///< Rear climate is on: byte 4 bit 7.
    virtual bool isAcMax() = 0;        ///< Maximum cooling: byte 4 bit 2.
    virtual bool isAc() = 0;           ///< Air conditioning is on: byte 0 bit 6.
    virtual bool isInside() = 0;       ///< Air circulates inside: byte 0 bit 5.
    virtual bool isAuto() = 0;         ///< Automatic mode: byte 0 bit 3.
    virtual bool isDual() = 0; ///< Two zones: byte 0 bit 2, inverted. True before the first report.
    virtual bool isRearDefrost() = 0;  ///< Rear defrost: byte 0 bit 0.
    virtual bool isFrontDefrost() = 0; ///< Front defrost: byte 4 bit 5.
    /// Heating of the left front seat, byte 8 bits 3..0.
    /// \returns 1, 2, 3 for codes 4, 5, 6; 0, off, for any other code.
    virtual int getAcFrontLeftHeat() = 0;
    /// Heating of the right front seat, byte 8 bits 7..4: codes as of the left one.
    virtual int getAcFrontRightHeat() = 0;
    virtual int getAcRearLeftHeat() = 0;  ///< \returns 0: not reported.
    virtual int getAcRearRightHeat() = 0; ///< \returns 0: not reported.
    virtual bool isAcSwcHeat() = 0;       ///< Heating of the steering wheel: byte 4 bit 3.
    virtual bool isAcGlassHeat() = 0;     ///< \returns false: not reported.
    virtual bool isAirCareActive() = 0;   ///< \returns false: not reported.
    virtual int getAirConProfile() = 0;   ///< \returns 0: not reported.
    /// Ventilation of the left front seat, byte 8 bits 3..0.
    /// \returns 1, 2, 3 for codes 1, 2, 3; 0, off, for any other code.
    virtual int getLeftVentilation() = 0;
    /// Ventilation of the right front seat, byte 8 bits 7..4: codes as of the left one.
    virtual int getRightVentilation() = 0;
    /// Where the air goes, byte 1 bits 7..5.
    /// \returns 0, 2, 1, 3, 7, 5, 4, 6 for the wind modes 0 to 7 of the report.
    virtual int getAcWindMode() = 0;
    virtual int getAcWindScale() = 0;     ///< Fan speed 0 to 7, byte 1 bits 2..0.
    virtual int getAcWindModeRear() = 0;  ///< \returns 0: not reported.
    virtual int getAcWindScaleRear() = 0; ///< \returns 0: not reported.
    virtual int getAcShowRequest();       ///< Lacking. \returns -1.
    /// \}

    /// \name Climate temperatures
    /// From report 0x21. Announced by acStatusChanged().
    /// \{
    /// Set temperature of the left zone, byte 2.
    /// \returns 15.5 to 29.5 in steps of 0.5 degrees Celsius for codes 0x1F to 0x3B, the same in
    ///          Fahrenheit when byte 4 bit 6 is set; -100, low, for code 0x00 and before the first
    ///          report; -101, high, for 0x7F; -1, unknown, for any other code.
    virtual float getAcTemperature() = 0;
    /// Set temperature of the right zone, byte 3: codes as of the left one.
    virtual float getAcRightTemperature() = 0;
    virtual float getAcRearTemperature() = 0; ///< \returns 0: not reported.
    /// Host text 993, Fahrenheit, when byte 4 bit 6 is set, else 990, Celsius.
    virtual QString getAcTemperatureUnit() = 0;
    /// The same text as getAcTemperatureUnit(): there is one unit.
    virtual QString getAcRightTemperatureUnit() = 0;
    virtual int getAcAirClearStatus(); ///< Lacking. \returns -1.
    /// \}

    /// \name Keys from the host
    /// \{
    /// Presses a key of the climate control: frame 0xC6 with the key's command, then with command
    /// 0, if the selected car model has the key; else nothing. See docs/models.md.
    /// \param key 0 to 34; any other number is no key.
    /// \param value is not used.
    /// \returns 0, sent or not. The effect shows with the next report 0x21.
    virtual int sendAcKey(int key, int value) = 0;
    /// Changes the ambient light: frame 0xC5. Nothing is sent for any other key.
    /// \param key 4 steps the level, 5 selects the colour.
    /// \param value for key 4: 1 up, -1 down, between 0 and 20; nothing is sent beyond. For key 5:
    ///              the host's colour index 0 to 7, see docs/models.md; any other is sent as the
    ///              box's code 0.
    /// \returns 0, sent or not. The effect shows with the next report 0x61.
    virtual int sendCarSettingKey(int key, int value) = 0;
    virtual int sendCameraKey(int key, CameraData data); ///< Lacking. \returns -1.
    /// \}

    /// \name Further climate state
    /// \{
    virtual int getManualClimateMode();     ///< Lacking. \returns -1.
    virtual int getDualControllableState(); ///< Lacking. \returns 1.
    /// \}

    /// \name Park-assist distances
    /// 1 (nearest), 2, 3, 4, 5 or 7; 255 for nothing near, for no reading and before the first
    /// report. High-end models send two codes a sensor, see docs/models.md. Announced by
    /// sigRadarChanged().
    /// \{
    /// Front bumper, left: report 0x23, byte 0 on most models.
    virtual int getFrontRadarLeftDistance() = 0;
    /// Front bumper, middle left: report 0x23, byte 1 on most models.
    virtual int getFrontRadarMiddleLeftDistance() = 0;
    /// Front bumper, middle right: report 0x23, byte 2 on most models.
    virtual int getFrontRadarMiddleRightDistance() = 0;
    /// Front bumper, right: report 0x23, byte 3 on most models.
    virtual int getFrontRadarRightDistance() = 0;
    /// Rear bumper, left: report 0x22, byte 0 on most models.
    virtual int getRearRadarLeftDistance() = 0;
    /// Rear bumper, middle left: report 0x22, byte 1 on most models.
    virtual int getRearRadarMiddleLeftDistance() = 0;
    /// Rear bumper, middle right: report 0x22, byte 2 on most models.
    virtual int getRearRadarMiddleRightDistance() = 0;
    /// Rear bumper, right: report 0x22, byte 3 on most models.
    virtual int getRearRadarRightDistance() = 0;
    /// Left side, front. No report carries it. \returns 255.
    virtual int getLeftRadarFrontDistance() = 0;
    /// Left side, middle front. No report carries it. \returns 255.
    virtual int getLeftRadarMiddleFrontDistance() = 0;
    /// Left side, middle rear. No report carries it. \returns 255.
    virtual int getLeftRadarMiddleRearDistance() = 0;
    /// Left side, rear. No report carries it. \returns 255.
    virtual int getLeftRadarRearDistance() = 0;
    /// Right side, front. No report carries it. \returns 255.
    virtual int getRightRadarFrontDistance() = 0;
    /// Right side, middle front. No report carries it. \returns 255.
    virtual int getRightRadarMiddleFrontDistance() = 0;
    /// Right side, middle rear. No report carries it. \returns 255.
    virtual int getRightRadarMiddleRearDistance() = 0;
    /// Right side, rear. No report carries it. \returns 255.
    virtual int getRightRadarRearDistance() = 0;
    /// \}

    /// \name Camera and ambient light
    /// \{
    virtual int getCameraMode();    ///< Lacking. \returns -1.
    virtual int getAmbientStatus(); ///< Lacking: the box is not asked. \returns 1.
    /// Ambient colour and level, from report 0x61: a copy. Announced by sigAmbientChanged().
    virtual CarSettingData getCarSettingData() = 0;
    /// \}

    /// \name Records and unit settings
    /// \{
    /// Copies the driving data, from reports 0x63 and 0x69, to \p data. \returns 0. Announced by
    /// drivingDataChanged().
    virtual int getDrivingData(DrivingData &data) = 0;
    virtual QString getDrivingDataTitle1();    ///< Lacking. \returns an empty text.
    virtual QString getDrivingDataTitle2();    ///< Lacking. \returns an empty text.
    virtual QString getDrivingDataTitle3();    ///< Lacking. \returns an empty text.
    virtual void setDrivingDataPage(int page); ///< Lacking: does nothing.
    /// Lacking: leaves \p data alone. \returns -1.
    virtual int getMaintenanceData(VehicleMaintenanceData &data);
    /// No report carries such data: sets \p data to its defaults. \returns 0.
    virtual int getFuelConsumptionData(FuelConsumptionData &data) = 0;
    /// Copies the vehicle's display units, from report 0x28, to \p data. \returns 0. Announced by
    /// unitDataChanged().
    virtual int getUnitData(UnitData &data) = 0;
    /// Selects the next value of a display unit of the vehicle: frame 0xC9. The value steps at
    /// once, its text and the signal come with the next report 0x28.
    /// \param command 3: temperature, 0 Celsius and 1 Fahrenheit. 5: pressure, 0 psi, 1 kPa and 2
    ///                bar. Any other does nothing.
    virtual void setUnitCmd(int command) = 0;
    /// No report carries such data: sets \p data to its defaults. \returns 0.
    virtual int getOtherInfoData(OtherInfoData &data) = 0;
    /// \}

    /// \name Media source and driving position
    /// \{
    /// Tells the car what plays: frame 0xC0 or two frames 0xC1, sent at once and each time.
    /// \param source FM1, FM2, FM3, AM1 or AM2 for type 0, where any other sends nothing; else not
    ///               used.
    /// \param info type 0: entry 0 is the frequency with a unit of three characters, such as
    ///             87.50MHz or 1008KHz. Types 3 and 4: three entries, of which 0 and 1 are the
    ///             lines of text; with another number of entries the lines are empty. Texts are cut
    ///             at 125 UTF-16 units.
    /// \param type 0: the tuner. 3, 4: a source with two lines of text. 5: a source by a fixed
    ///             code. Any other sends nothing.
    virtual void onRadioSourceInformation(QString source, QStringList info, int type) = 0;
    virtual void setCanDrivingPosition(int position); ///< Lacking: does nothing.
    virtual int getCanDrivingPosition();              ///< Lacking. \returns -1.
    /// \}

    /// \name Report requests to the box
    /// Frame 0x90 with the data type that is asked for. The answer comes as the report.
    /// \{
    virtual void requsetGauges() = 0;  ///< Sends nothing: there is no such report.
    virtual void requsetClimate() = 0; ///< Asks for 0x21, the climate.
    /// Asks for 0x22 and 0x23, the rear and the front bumper.
    virtual void requsetParkAssist() = 0;
    /// Asks for 0x63 and 0x69, driving data, tyres and battery.
    virtual void requsetVehicleInfo() = 0;
    virtual void requsetCarSetting() = 0; ///< Asks for 0x61, the ambient light.
    /// Asks for 0x63 and 0x69, driving data, tyres and battery.
    virtual void requsetDrinvingData() = 0;
    virtual void requsetMaintenance() = 0;  ///< Sends nothing: there is no such report.
    virtual void requsetFuel() = 0;         ///< Sends nothing: there is no such report.
    virtual void requsetUnitSettings() = 0; ///< Asks for 0x28, the display units.
    virtual void requsetOtherInfo() = 0;    ///< Asks for 0x63, driving data and tyres.
    /// \}

    /// \name Clock and raw bytes
    /// \{
    /// Sets the vehicle's clock: frame 0x82, sent at once and each time.
    /// \param time is only read.
    /// \returns the packet's defaults.
    virtual GPSTimePacket GPSTimeSend(GPSTime &time) = 0;
    /// Sends \p data as it is, without head, length and checksum.
    virtual void sendAnyData(QByteArray &data) = 0;
    /// \}

signals:
    /// The state of the link. 3: the box answers, with every good frame, before what the
    /// frame brings. 0: the link is lost, once a loss: 31.2 s after the last good frame.
    void notifyCanbusStatus(int status);
    void sigVersionData();       ///< With every report 0x30: version().
    void acStatusChanged();      ///< With every report 0x21: the climate getters.
    void sigRadarChanged();      ///< A distance of the park assist has changed: reports 0x22, 0x23.
    void doorChanged();          ///< A door has changed: report 0x24.
    void drivingDataChanged();   ///< Once for each text of getDrivingData() that has changed.
    void tireDataChanged();      ///< A tyre pressure has changed: report 0x63.
    void tireAlert();            ///< A tyre state has changed: report 0x63.
    void batteryVoltageChange(); ///< The battery voltage has changed: report 0x69.
    void sigAmbientChanged();    ///< With every report 0x61: getCarSettingData().
    void unitDataChanged();      ///< With every report 0x28: getUnitData().
    /// A key of the steering wheel: report 0x20.
    /// \param key 0 to 255, the box's code.
    /// \param state 0 pressed, 1 released within 1.5 s, 2 held for 1.5 s, 3 released after that.
    /// \param fromSwc true: the key is on the steering wheel.
    void keyEvent(int key, int state, bool fromSwc);
};

Q_DECLARE_INTERFACE(CanServiceBase, "com.quendal.canservicebase/1.0")
