#include "comparison.h"

#include "bench/wire/reports.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// In the order of ServiceModel::numbers().
QVector<double> numbersOf(canservice::SimpleService &s, const canservice::ServiceProbe &probe)
{
    UnitData units;
    s.getUnitData(units);
    const CarSettingData settings = s.getCarSettingData();
    QVector<double> all;
    all.reserve(64);
    for (const bool flag :
         {s.isPowerOff(), s.isAc(), s.isInside(), s.isAuto(), s.isDual(), s.isRearDefrost(),
          s.isRearClimate(), s.isFrontDefrost(), s.isAcSwcHeat(), s.isAcMax()})
        all << flag;
    for (const int number :
         {s.getAcWindMode(), s.getAcWindScale(), s.getAcFrontLeftHeat(), s.getAcFrontRightHeat(),
          s.getLeftVentilation(), s.getRightVentilation()})
        all << number;
    all << double(s.getAcTemperature()) << double(s.getAcRightTemperature());
    for (const int number : {s.getFrontRadarLeftDistance(), s.getFrontRadarMiddleLeftDistance(),
                             s.getFrontRadarMiddleRightDistance(), s.getFrontRadarRightDistance(),
                             s.getRearRadarLeftDistance(), s.getRearRadarMiddleLeftDistance(),
                             s.getRearRadarMiddleRightDistance(), s.getRearRadarRightDistance()})
        all << number;
    for (const bool flag : {s.isRearDoorOpen(), s.isLeftRearDoorOpen(), s.isRightRearDoorOpen(),
                            s.isLeftFrontDoorOpen(), s.isRightFrontDoorOpen()})
        all << flag;
    for (const int number :
         {s.getTireStatusFL(), s.getTireStatusFR(), s.getTireStatusRL(), s.getTireStatusRR()})
        all << number;
    for (const float number :
         {s.getTirePressureValueFL(), s.getTirePressureValueFR(), s.getTirePressureValueRL(),
          s.getTirePressureValueRR(), float(s.getTireAlertType()), s.getBatteryVoltageValue()})
        all << double(number);
    for (const int number : {units.values.at(3), units.values.at(5), int(settings.ambient.level),
                             int(settings.ambient.colour), probe.currentKey, probe.noAnswerCount})
        all << number;
    for (const bool flag :
         {probe.parseState == 0, probe.checkConnect.isActive(), probe.requestConnect.isActive(),
          probe.send.isActive(), probe.cartype.isActive(), probe.longPress.isActive(),
          probe.parseOut.isActive()})
        all << flag;
    return all;
}

QStringList textsOf(canservice::SimpleService &s)
{
    DrivingData driving;
    UnitData units;
    s.getDrivingData(driving);
    s.getUnitData(units);
    return {s.getAcTemperatureUnit(), s.version(),      driving.speed,     driving.range,
            driving.consumption,      driving.odometer, units.texts.at(3), units.texts.at(5)};
}

/// Whether a journal line is a frame of the data type, sound from head to checksum.
bool isFrame(const QString &line, quint8 dataType, bool flag)
{
    const QByteArray frame = QByteArray::fromHex(line.section(QLatin1Char(' '), 0, 0).toLatin1());
    const auto byte = [&frame](int index) { return static_cast<quint8>(frame.at(index)); };
    return frame.size() > 4 && byte(2) == frame.size() - 4 && byte(1) == dataType &&
           frame == frameOf(dataType, Bytes(frame.begin() + 3, frame.end() - 1)) &&
           line.endsWith(QLatin1String(" !")) == flag;
}

} // namespace

void prepareProcess(bool debug)
{
    static int argumentCount = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static QCoreApplication application(argumentCount, arguments);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, debug);
}

int randomCar(FuzzedDataProvider &data)
{
    return data.ConsumeBool() ? data.PickValueInArray({1, 97, 100}) : data.ConsumeIntegral<int>();
}

QByteArray randomFrame(FuzzedDataProvider &data)
{
    constexpr int kKinds = static_cast<int>(std::size(bench::kReports));
    const int kind = data.ConsumeIntegralInRange(0, kKinds); // The last is any type.
    const bench::Report *report = kind < kKinds ? &bench::kReports[kind] : nullptr;
    const bool isFit = report && data.ConsumeIntegralInRange(0, 7) > 0;
    const quint8 type = report ? static_cast<quint8>(report->type) : data.ConsumeIntegral<quint8>();
    const auto size = static_cast<size_t>(isFit && report->size != bench::kAnySize
                                              ? report->size
                                              : data.ConsumeIntegralInRange(0, 255));
    Bytes payload = data.ConsumeBytes<quint8>(size);
    payload.resize(size);
    // Most codes are small numbers.
    const quint8 mask = data.PickValueInArray<quint8>({0xFF, 0x1F, 0x03});
    for (quint8 &byte : payload)
        byte &= mask;
    return frameOf(type, payload);
}

void fail(const QStringList &got, const QStringList &expected)
{
    std::fprintf(stderr, "service: %s\nmodel:   %s\n", qPrintable(got.join(QLatin1String("; "))),
                 qPrintable(expected.join(QLatin1String("; "))));
    std::abort();
}

Comparison::Comparison(int carModel)
{
    model.carModel = carModel;
    CanBusManager::instance()->setCarModelId(model.carModel);
    CanBusManager::instance()->setHwdCarModelIndex(model.carIndex);
}

void Comparison::receive(const QByteArray &chunk)
{
    model.receive(chunk);
    test.receive(chunk);
}

void Comparison::fire(ServiceModel::Timer timer)
{
    static constexpr const char *kSlots[] = {"onCheckConnectTmrout", "onRequestConnect",
                                             "onSendTmrout",         "onCartypeConnect",
                                             "onLongPressTimeout",   "onmParseOutTmrout"};
    // A single-shot timer has stopped by the time of its slot.
    if (timer == ServiceModel::LongPress)
        test.probe.longPress.stop();
    if (timer == ServiceModel::ParseOut)
        test.probe.parseOut.stop();
    model.fire(timer);
    test.timeout(kSlots[timer]);
}

void Comparison::compareJournal()
{
    const QStringList journal = test.take();
    if (journal != model.journal)
        fail(journal, model.journal);
    model.journal.clear();
}

void Comparison::compareState()
{
    const QStringList texts = textsOf(test.service);
    if (texts != model.texts())
        fail(texts, model.texts());

    const QVector<double> got = numbersOf(test.service, test.probe);
    const QVector<double> expected = model.numbers();
    for (int i = 0; i < expected.size(); ++i)
        if (std::fabs(got.at(i) - expected.at(i)) > 1e-3)
            fail({QStringLiteral("number %1 is %2").arg(i).arg(got.at(i))},
                 {QString::number(expected.at(i))});
}

void Comparison::call(FuzzedDataProvider &data)
{
    auto &service = test.service;
    switch (data.ConsumeIntegralInRange(0, 14)) {
    case 0:
        service.start();
        return model.start();
    case 1:
        service.stop();
        return model.stop();
    case 2:
        service.requsetClimate();
        return model.request({0x21});
    case 3:
        service.requsetParkAssist();
        return model.request({0x22, 0x23});
    case 4:
        service.requsetVehicleInfo();
        return model.request({0x63, 0x69});
    case 5:
        service.requsetCarSetting();
        return model.request({0x61});
    case 6:
        service.requsetDrinvingData();
        return model.request({0x63, 0x69});
    case 7:
        service.requsetUnitSettings();
        return model.request({0x28});
    case 8:
        service.requsetOtherInfo();
        return model.request({0x63});
    case 9: {
        const int key = data.ConsumeIntegral<qint8>();
        return callClimateKey(key, data.ConsumeIntegral<int>());
    }
    case 10:
        return callMedia(data);
    default:
        return callSettings(data);
    }
}

void Comparison::callSettings(FuzzedDataProvider &data)
{
    auto &service = test.service;
    switch (data.ConsumeIntegralInRange(0, 4)) {
    case 0:
        model.carModel =
            data.ConsumeBool() ? data.ConsumeIntegral<int>() : data.ConsumeIntegralInRange(0, 127);
        model.carIndex = data.ConsumeIntegral<int>();
        selectCar(model.carModel);
        CanBusManager::instance()->setHwdCarModelIndex(model.carIndex);
        break;
    case 1: {
        const int key = data.ConsumeIntegralInRange(-1, 7);
        const int value =
            data.ConsumeBool() ? data.ConsumeIntegralInRange(-2, 9) : data.ConsumeIntegral<int>();
        service.sendCarSettingKey(key, value);
        model.ambientKey(key, value);
        break;
    }
    case 2: {
        const int key = data.ConsumeIntegral<qint8>();
        service.setUnitCmd(key);
        model.unitKey(key);
        break;
    }
    case 3: {
        const auto bytes = data.ConsumeBytes<quint8>(4);
        GPSTime time{0, 0, 0, 0, data.ConsumeIntegral<quint16>()};
        if (bytes.size() == 4)
            time = {bytes[0], bytes[1], bytes[2], bytes[3], time.year};
        service.GPSTimeSend(time);
        const auto year = static_cast<quint8>(time.year + 48);
        const QByteArray frame =
            frameOf(0x82, {year, time.field3, time.field2, time.field1, time.field0, 0});
        model.journal << QString::fromLatin1(frame.toHex());
        break;
    }
    default: {
        QByteArray bytes = QByteArray::fromStdString(data.ConsumeRandomLengthString());
        service.sendAnyData(bytes);
        model.journal << QString::fromLatin1(bytes.toHex());
        break;
    }
    }
}

// The rules by car model have exhaustive tests of their own: here the form must be right. A key
// that the model has ends with the zero command, any other sends nothing.
void Comparison::callClimateKey(int key, int value)
{
    compareJournal();
    test.service.sendAcKey(key, value);
    const QStringList frames = test.take();
    for (const QString &frame : frames)
        if (!isFrame(frame, 0xc6, false))
            fail(frames, {});
    if (frames.size() > 2 ||
        (!frames.isEmpty() && frames.last() != QLatin1String("2ec603ac00008a")))
        fail(frames, {});
}

void Comparison::callMedia(FuzzedDataProvider &data)
{
    static const QStringList bands{QStringLiteral("FM1"), QStringLiteral("FM2"),
                                   QStringLiteral("FM3"), QStringLiteral("AM1"),
                                   QStringLiteral("AM2")};
    const auto text = [&data] {
        const std::string bytes = data.ConsumeRandomLengthString();
        return QString::fromUtf16(reinterpret_cast<const ushort *>(bytes.data()),
                                  static_cast<int>(bytes.size() / 2));
    };
    const bool onBand = data.ConsumeBool();
    const QString source = onBand ? bands.at(data.ConsumeIntegralInRange(0, 4)) : text();
    QStringList info;
    for (int lines = data.ConsumeIntegralInRange(0, 4); lines > 0; --lines)
        info << (onBand && data.ConsumeBool()
                     ? QString::fromStdString(data.ConsumeRandomLengthString())
                     : text());
    const int type = data.ConsumeIntegralInRange(-1, 6);

    compareJournal();
    test.service.onRadioSourceInformation(source, info, type);
    const QStringList frames = test.take();
    const bool tuner = type == 0 && bands.contains(source);
    const bool lines = type == 3 || type == 4;
    if (frames.size() != (tuner || type == 5 ? 1 : lines ? 2 : 0))
        fail(frames, {source, QString::number(type)});
    for (int i = 0; i < frames.size(); ++i) {
        if (!isFrame(frames.at(i), lines ? 0xc1 : 0xc0, !lines))
            fail(frames, info);
        if (!lines)
            continue;
        // As much of the line as fits, and no half of a surrogate pair that the line has whole.
        const QString line = info.size() == 3 ? info.at(i) : QString();
        QString sent;
        const QByteArray payload = QByteArray::fromHex(frames.at(i).toLatin1()).mid(8).chopped(1);
        for (int unit = 0; unit < payload.size(); unit += 2)
            sent += QChar(static_cast<quint8>(payload.at(unit + 1)),
                          static_cast<quint8>(payload.at(unit)));
        const bool split =
            line.size() > 125 && line.at(124).isHighSurrogate() && line.at(125).isLowSurrogate();
        if (sent != line.left(split ? 124 : 125))
            fail({sent}, {line});
    }
}
