// The CAN service for Ford decoder boxes.
//
// One class with all behaviour; its members are spread over the folders by subject, and the
// declaration follows them: folder by folder, file by file. Frame handlers are called do...,
// builders of frames send..., the host's report requests requset... (the interface's own spelling).
// Everything runs in the thread that made the object: nothing is locked.
#pragma once

#include "plugin/lazytimer.h"
#include "protocol/frame.h"

#include <canservicebase.h>
#include <serialport.h>

#include <QByteArray>
#include <QTimer>

#include <array>
#include <utility>

namespace canservice {

class SimpleService : public CanServiceBase
{
    Q_OBJECT
    Q_INTERFACES(CanServiceBase)
    Q_PLUGIN_METADATA(IID "com.quendal.CanServicePlugin")

public:
    // plugin/simpleservice.cpp -----------------------------------------------------------------
    /// Opens the serial line and wires the timers; sends nothing.
    SimpleService();
    ~SimpleService() override;

    /// Wakes the box and asks for its version, then every 2 s until it answers.
    void start() override;
    /// Sends the box to sleep. The supervision of the link goes on.
    void stop() override;
    /// Adds 19 radar positions without a reading and sets ambient colour and level to 0.
    void initData();

    // protocol/dispatch.cpp --------------------------------------------------------------------
    /// Hands a good frame to its handler, after the link-alive step. \p dataType is 0 to 255.
    void dispatchEvent(int dataType, QByteArray &payload);

    // protocol/outbound.cpp --------------------------------------------------------------------
    /// The checksum of data type, length and payload, without the head; 0xFF for no bytes.
    quint8 getCheckSum(QByteArray &bytes);
    void sendStart();
    void sendStop();
    /// \p index is the low byte of the hardware car model index; the second byte is not sent.
    void sendCarSelect(unsigned char index, unsigned char unused);
    void sendSetSettings(unsigned char command, unsigned char value);
    void sendUnitSet(unsigned char command, unsigned char value);
    void requsetGauges() override;
    void requsetClimate() override;
    void requsetParkAssist() override;
    void requsetVehicleInfo() override;
    void requsetCarSetting() override;
    void requsetDrinvingData() override;
    void requsetMaintenance() override;
    void requsetFuel() override;
    void requsetUnitSettings() override;
    void requsetOtherInfo() override;
    /// Sends the bytes as they are, without head, length and checksum.
    void sendAnyData(QByteArray &data) override;

    // protocol/version.cpp ---------------------------------------------------------------------
    void requestVersion();
    /// Frame 0x30, any length: UTF-8 text up to the first zero byte.
    void doVersion(int dataType, QByteArray &payload);
    /// The box's version text; empty until its first answer.
    QString version() override;

    // climate/climatestate.cpp -----------------------------------------------------------------
    /// Frame 0x21, 10 bytes: kept whole, decoded by the getters.
    void doClimate(int dataType, QByteArray &payload);
    bool isPowerOff() override;         ///< Byte 0 bit 7.
    bool isPowerOffRear() override;     ///< Always false.
    bool isRearClimate() override;      ///< Byte 4 bit 7.
    bool isAcMax() override;            ///< Byte 4 bit 2.
    bool isAc() override;               ///< Byte 0 bit 6.
    bool isInside() override;           ///< Byte 0 bit 5.
    bool isAuto() override;             ///< Byte 0 bit 3.
    bool isDual() override;             ///< Byte 0 bit 2, inverted.
    bool isRearDefrost() override;      ///< Byte 0 bit 0.
    bool isFrontDefrost() override;     ///< Byte 4 bit 5.
    int getAcFrontLeftHeat() override;  ///< 0 to 3, from byte 8 bits 3..0.
    int getAcFrontRightHeat() override; ///< 0 to 3, from byte 8 bits 7..4.
    int getAcRearLeftHeat() override;   ///< Always 0.
    int getAcRearRightHeat() override;  ///< Always 0.
    bool isAcSwcHeat() override;        ///< Byte 4 bit 3.
    bool isAcGlassHeat() override;      ///< Always false.
    bool isAirCareActive() override;    ///< Always false.
    int getAirConProfile() override;    ///< Always 0.
    int getLeftVentilation() override;  ///< 0 to 3, from byte 8 bits 3..0.
    int getRightVentilation() override; ///< 0 to 3, from byte 8 bits 7..4.
    int getAcWindMode() override;       ///< 0 to 7, from byte 1 bits 7..5 by table.
    int getAcWindScale() override;      ///< 0 to 7, byte 1 bits 2..0.
    int getAcWindModeRear() override;   ///< Always 0.
    int getAcWindScaleRear() override;  ///< Always 0.

    // climate/modelrules.cpp -------------------------------------------------------------------
    // Each rule asks the host for the selected car model at each call.
    /// Whether the model has the newer climate control, on which every climate key exists.
    bool isNewModelCtrl();
    /// Whether the model has the climate key.
    bool isSupportAcCtrl(int key);
    /// How the blowing-mode key cycles now: 2 on newer climate controls, else 1 or 0 by wind mode.
    int AcBlowingModeCtrl();
    /// Whether the model's radar frames carry two codes per sensor.
    bool isHighEnd();

    // climate/climatekeys.cpp ------------------------------------------------------------------
    /// Sends a climate command if the model has the key of the latest sendAcKey().
    void sendAcSet(unsigned char command, unsigned char value);
    /// Presses a climate key, 0 to 34. \p value is only logged. \returns 0.
    int sendAcKey(int key, int value) override;

    // climate/temperature.cpp ------------------------------------------------------------------
    /// Set temperature of the left zone, from byte 2 of the climate frame.
    /// \returns 15.5 to 29.5 degrees Celsius in steps of 0.5, converted to Fahrenheit when byte 4
    ///          bit 6 says so; -100 for code 0x00, -101 for 0x7F, -1 for any other code.
    float getAcTemperature() override;
    /// The same for the right zone, from byte 3.
    float getAcRightTemperature() override;
    float getAcRearTemperature() override; ///< Always 0.
    QString getAcTemperatureUnit() override;
    QString getAcRightTemperatureUnit() override;
    int getAcTemperatureIndex();      ///< Byte 6.
    int getAcRightTemperatureIndex(); ///< Byte 6.
    int getAcRearTemperatureIndex();  ///< Byte 6.

    // vehicle/radar.cpp ------------------------------------------------------------------------
    /// Frame 0x22, 8 bytes: distance codes of the rear bumper.
    void doRearRadar(int dataType, QByteArray &payload);
    /// Frame 0x23, 8 bytes: distance codes of the front bumper.
    void doFontRadar(int dataType, QByteArray &payload);
    // Distances: 1 (nearest), 2, 3, 4, 5 or 7; 255 for no obstacle or no reading.
    int getFrontRadarLeftDistance() override;
    int getFrontRadarMiddleLeftDistance() override;
    int getFrontRadarMiddleRightDistance() override;
    int getFrontRadarRightDistance() override;
    int getRearRadarLeftDistance() override;
    int getRearRadarMiddleLeftDistance() override;
    int getRearRadarMiddleRightDistance() override;
    int getRearRadarRightDistance() override;
    int getLeftRadarFrontDistance() override;
    int getLeftRadarMiddleFrontDistance() override;
    int getLeftRadarMiddleRearDistance() override;
    int getLeftRadarRearDistance() override;
    int getRightRadarFrontDistance() override;
    int getRightRadarMiddleFrontDistance() override;
    int getRightRadarMiddleRearDistance() override;
    int getRightRadarRearDistance() override;

    // vehicle/vehicleinfo.cpp ------------------------------------------------------------------
    /// Frame 0x63, 18 bytes: odometer, range, consumption, tyres.
    void doCarInformationData1(int dataType, QByteArray &payload);
    /// Frame 0x69, 5 bytes: speed, battery.
    void doCarInformationData2(int dataType, QByteArray &payload);

    // vehicle/basicstatus.cpp ------------------------------------------------------------------
    /// Frame 0x24, 7 bytes: doors.
    void doCarBasicInfor(int dataType, QByteArray &payload);
    int getDoorStatus() override;         ///< Always 1.
    bool isFrontDoorOpen() override;      ///< Always false.
    bool isRearDoorOpen() override;       ///< Byte 0 bit 3.
    bool isLeftRearDoorOpen() override;   ///< Byte 0 bit 4.
    bool isRightRearDoorOpen() override;  ///< Byte 0 bit 5.
    bool isLeftFrontDoorOpen() override;  ///< Byte 0 bit 6.
    bool isRightFrontDoorOpen() override; ///< Byte 0 bit 7.
    int getRotate() override;             ///< Engine speed: always -1, no frame carries it.
    int getCoolantTemp() override;        ///< Always -1, no frame carries it.
    QString getCoolantTempUnit() override;
    int getTireAlertType() override; ///< 1 if any state is not 0, -1 before the first report.
    int getTireStatusFR() override;  ///< 0, 1 or 2.
    int getTireStatusFL() override;
    int getTireStatusRL() override;
    int getTireStatusRR() override;
    float getTirePressureValueFR() override; ///< kPa in steps of 2.75, -1 for no reading.
    float getTirePressureValueFL() override;
    float getTirePressureValueRL() override;
    float getTirePressureValueRR() override;
    QString getTireUnit() override;
    float getBatteryVoltageValue() override; ///< 3.0 to 17.9 V, -1 before the first report.
    QString getBatteryVoltageUnit() override;
    int getBatteryVoltageAlertType() override; ///< Always 0.
    int getFuelConsumptionData(FuelConsumptionData &data) override;
    int getDrivingData(DrivingData &data) override;
    int getOtherInfoData(OtherInfoData &data) override;
    int getVehicleData(QMap<QString, QString> &data) override; ///< Leaves \p data alone.

    // vehicle/ambientlight.cpp -----------------------------------------------------------------
    /// Frame 0x61, 2 bytes: colour code, level.
    void doAmbientLight(int dataType, QByteArray &payload);

    // controls/carsettings.cpp -----------------------------------------------------------------
    /// Key 4 steps the ambient level by \p value, 1 or -1; key 5 selects the ambient colour with
    /// the host's index \p value. Everything else is ignored. \returns 0.
    int sendCarSettingKey(int key, int value) override;
    CarSettingData getCarSettingData() override;

    // controls/unitsettings.cpp ----------------------------------------------------------------
    /// Frame 0x28, 2 bytes: setting code, value.
    void doSettingStatus(int dataType, QByteArray &payload);
    int getUnitData(UnitData &data) override;
    /// Selects the next value of a unit setting: 3, temperature, or 5, pressure.
    void setUnitCmd(int command) override;

    // controls/steeringkeys.cpp ----------------------------------------------------------------
    /// Frame 0x20, 2 bytes: key code, action (1 pressed, 0 released).
    void doSwc(int dataType, QByteArray &payload);
    /// The same for the keys of a panel. No data type leads here.
    void doPanelKey(int dataType, QByteArray &payload);

    // controls/mediasource.cpp -----------------------------------------------------------------
    /// Reports the playing source to the car. \p type: 0 tuner, 3 and 4 text, 5 a fixed code.
    void onRadioSourceInformation(QString source, QStringList info, int type) override;
    void sendRadioStatus(QString source, QStringList info, int type);
    void sendSourceStatus(QString source, QStringList info, int type);

    // controls/clocksync.cpp -------------------------------------------------------------------
    /// Sends the clock to the car. \returns the packet's defaults.
    GPSTimePacket GPSTimeSend(GPSTime &time) override;

private slots:
    void onDataReady(QByteArray buf);
    void onLongPressTimeout();
    void onCheckConnectTmrout();
    void onRequestConnect();
    void onCartypeConnect();
    void onSendTmrout();
    void onmParseOutTmrout();

private:
    friend class ServiceProbe; // The tests' view of parser and timers.

    using Handler = void (SimpleService::*)(int dataType, QByteArray &payload);

    // plugin/linksupervision.cpp
    void keepLinkAlive();

    // protocol/receiveparser.cpp: the stored numbers appear in the log.
    enum ParseState { Idle = 0, AwaitLength = 2, AwaitType = 3, Payload = 4, AwaitChecksum = 5 };
    struct Chunk
    {
        const quint8 *begin, *end;
        Chunk *newer;
    };
    inline void appendChunk(Chunk &chunk);
    inline bool beginChunk();          ///< \returns false when no chunk waits.
    inline bool takeByte(quint8 byte); ///< \returns whether it is a frame's checksum.
    inline void takePayloadByte(quint8 byte);
    inline bool answerFrame(quint8 checksum); ///< \returns whether that is right.

    // protocol/dispatch.cpp
    // A frame is handled in steps, each of which ends with its signal. Newer bytes that come in
    // there find the steps that are left here, and take them before anything else.
    template <std::size_t count>
    void setSteps(const Handler (&steps)[count], int dataType, QByteArray &payload);
    void finishFrame();

    // protocol/version.cpp
    void selectCarEachSecond(int dataType, QByteArray &payload);

    // protocol/outbound.cpp
    void requestReport(canbox::Inbound dataType, bool flag);

    // climate/climatestate.cpp
    int rawWindMode() const; ///< Byte 1 bits 7..5.

    // climate/temperature.cpp
    float setTemperature(int code) const;

    // vehicle/radar.cpp
    void storeRadarCodes(int firstPosition, const std::array<quint8, 4> &codes);
    int radarDistance(int position) const;

    // vehicle/vehicleinfo.cpp: the steps of the two frames, each a value and its signal.
    struct BuiltFrom
    {
        int code = -1;
        QString unitText;
    };
    template <typename Number>
    void takeText(QString &text, BuiltFrom &source, int code, Number number, int unit);
    void takeOdometer(int dataType, QByteArray &payload);
    void takeRange(int dataType, QByteArray &payload);
    void takeConsumption(int dataType, QByteArray &payload);
    void takeTirePressures(int dataType, QByteArray &payload);
    void takeTireStates(int dataType, QByteArray &payload);
    void takeSpeed(int dataType, QByteArray &payload);
    void takeBatteryVoltage(int dataType, QByteArray &payload);

    // controls/steeringkeys.cpp
    void trackKey(int key, int action, bool fromSwc);

    SerialPort mSerialPort;

    LazyTimer mCheckConnectTmr; ///< 30 s after the last good frame.
    QTimer mRequestConnectTmr;  ///< Knocks every 2 s while the box is silent.
    QTimer mSendTmr;            ///< Waits in 300 ms ticks for an answer to the check.
    QTimer mCartypeTmr;         ///< Selects the car every second while the link is up.
    LazyTimer mLongPressTmr;    ///< 1500 ms after a key went down.
    LazyTimer mParseOutTmr;     ///< Gives up a frame that stays open for 500 ms.
    int mNoAnswerCount = -1;    ///< Ticks of mSendTmr without a good frame.

    const QByteArray mGoodReceipt{1, static_cast<char>(canbox::kReceiptGood)};
    const QByteArray mBadReceipt{1, static_cast<char>(canbox::kReceiptBad)};
    // What was received and has not been handled, in the line's order: the frame in hand, the rest
    // of its chunk, the chunks that wait behind it. Each chunk's bytes are its onDataReady()'s.
    bool mAccepted = false; ///< The frame has its receipt and has not been dispatched.
    struct
    {
        const Handler *next = nullptr, *end = nullptr;
        int dataType = 0;
        QByteArray *payload = nullptr;
    } mSteps;
    const quint8 *mNextByte = nullptr, *mEndOfChunk = nullptr;
    Chunk *mWaiting = nullptr; ///< The oldest.
    Chunk **mLastWaiting = &mWaiting;

    QByteArray mRecvPayload;   ///< Has its final size from the length byte on.
    char *mRecvNext = nullptr; ///< Where in it the next byte goes.
    int mParseState = Idle;
    int mRecvRemain = 0; ///< Payload bytes still expected.
    int mRecvDataType = 0;
    int mRecvSum = 0; ///< Of data type, length and payload so far; the low 8 bits count.

    QString mVersion{QLatin1String("")}; ///< Of the latest answer; empty, not null, before it.

    static constexpr int kClimateSize = 10;
    QByteArray mAcData; ///< The payload of the last climate frame; zeros before the first.
    int mAcKey = -1;    ///< The latest climate key from the host.

    static constexpr int kRadarPositions = 19;
    QByteArray mRadarData; ///< A level per sensor position; empty before the first start().
    FuelConsumptionData mFuelConsumptionData;
    DrivingData mDrivingData;
    BuiltFrom mOdometerSource, mRangeSource, mConsumptionSource, mSpeedSource;
    OtherInfoData mOtherInfoData;
    CarSettingData mCarSettingData;
    UnitData mUnitData;
    int mDoorStatus = 0; ///< Byte 0 of the door frame, bits 7..3 in place.
    // Tyres in the order front left, front right, rear left, rear right.
    int mTireAlertType = -1;
    int mTireStatus[4] = {0, 0, 0, 0};
    float mTirePressure[4] = {-1.0F, -1.0F, -1.0F, -1.0F};
    int mRotate = -1;
    int mCoolantTemp = -1;
    float mBatteryVoltage = -1.0F;
    int mBatteryAlertType = 0;

    int mCurrentKey = -1; ///< The key that is held; after a release, the release frame's key byte.
    bool mKeyFromSwc = false;
    bool mKeyPressed = false;
};

template <std::size_t count>
void SimpleService::setSteps(const Handler (&steps)[count], int dataType, QByteArray &payload)
{
    mSteps = {steps, steps + count, dataType, &payload};
}

inline void SimpleService::finishFrame()
{
    if (std::exchange(mAccepted, false))
        dispatchEvent(mRecvDataType, mRecvPayload);
    while (mSteps.next != mSteps.end) {
        const Handler step = *mSteps.next++;
        (this->*step)(mSteps.dataType, *mSteps.payload);
    }
}

} // namespace canservice
