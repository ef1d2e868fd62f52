// The oracle of the fuzz targets: what a service does with bytes, calls and time-outs, written a
// second time and another way, from the wire. Nothing is included from the plug-in. Its lists (car
// models, colour codes) are the same numbers once more, which no way of writing makes independent:
// a wrong number in both is for the tests of the subject to find.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <deque>
#include <functional>
#include <vector>

using Bytes = std::vector<quint8>;

/// A whole frame; the payload has at most 255 bytes.
QByteArray frameOf(quint8 dataType, const Bytes &payload);

class ServiceModel
{
public:
    enum Timer { Check, Knock, Watchdog, CarType, LongPress, ParseOut, TimerCount };

    // What happens to a service.
    void receive(const QByteArray &chunk);
    void fire(Timer timer);
    void start();
    void stop();
    void request(std::initializer_list<quint8> dataTypes);
    void ambientKey(int key, int value);
    void unitKey(int key);

    int carModel = 0;
    int carIndex = 0;

    // What comes of it.
    QStringList journal;                      ///< In the form of ServiceTest's.
    std::function<void()> afterEvent = [] {}; ///< What a host does within each of these.
    QVector<double> numbers() const;
    QStringList texts() const;
    bool running[TimerCount] = {};
    int noAnswerCount = -1;
    int key = -1;
    bool isIdle() const { return mOpen.empty(); }

private:
    void write(quint8 dataType, const Bytes &payload, bool flag);
    void note(const QString &event);
    void takeChunk(const QByteArray &chunk);
    void alive();
    void selectCar();
    void wakeUp();
    void take(const Bytes &frame);
    void handle(quint8 dataType, const Bytes &payload);
    void handleKey(quint8 code, quint8 action);
    void handleRadar(const Bytes &payload, bool rear);
    void handleVehicle1(const Bytes &payload);
    void handleVehicle2(const Bytes &payload);
    bool hasOwnPalette() const { return carModel >= 97 && carModel <= 102; }

    std::deque<QByteArray> mLine; ///< Chunks; the first is being taken.
    Bytes mOpen;                  ///< The frame that is being received, from its head on.
    bool mHeld = false;
    bool mFromWheel = false;
    QString mVersion;
    Bytes mClimate = Bytes(10, 0);
    int mDistance[8] = {255, 255, 255, 255, 255, 255, 255, 255}; ///< Front, then rear.
    int mDoors = 0;
    int mLevel = 255;
    int mColour = 255;
    int mTemperatureUnit = 0;
    int mPressureUnit = 0;
    QString mTemperatureText = QStringLiteral("");
    QString mPressureText = QStringLiteral("");
    QString mOdometer, mRange, mConsumption, mSpeed;
    int mPressureCode[4] = {255, 255, 255, 255};
    int mTireState[4] = {0, 0, 0, 0};
    int mTireAlert = -1;
    int mBatteryCode = -1; ///< 240 for every code from there on.
};
