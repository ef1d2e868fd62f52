// What the handlers of the vehicle's frames share: one exact length, and no byte that breaks them.
#include "serviceprobe.h"

using canservice::SimpleService;

namespace {

// What the frames leave behind: of every store at least what the rows below differ in.
QString stateOf(ServiceTest &test)
{
    SimpleService &s = test.service;
    DrivingData driving;
    UnitData units;
    s.getDrivingData(driving);
    s.getUnitData(units);
    const AmbientLightData light = s.getCarSettingData().ambient;
    QString state;
    QDebug(&state) << driving.speed << driving.range << driving.consumption << driving.odometer
                   << units.texts << test.probe.radarData.toHex() << s.isAc() << s.getAcWindMode()
                   << s.getAcTemperature() << s.getAcRightTemperature() << s.getAcTemperatureIndex()
                   << s.getAcFrontLeftHeat() << s.isRearClimate() << s.isRightRearDoorOpen()
                   << s.isRearDoorOpen() << s.getTirePressureValueFL() << s.getTireStatusFL()
                   << s.getTireStatusRR() << s.getBatteryVoltageValue() << light.colour
                   << light.level << test.probe.currentKey << test.probe.longPress.isActive();
    return state;
}

const struct
{
    const char *name;
    int dataType;
    const char *before, *other; // Two payloads that lead to different states,
    const char *everySignal;    // and the signal of every frame, if it has one.
} kHandlers[] = {
    {"doSwc", 0x20, "0501", "0500", nullptr},
    {"doClimate", 0x21, "40822021000007002500", "2001303180000900120f", "acStatusChanged"},
    {"doRearRadar", 0x22, "0102080e00000000", "0e08020100000000", nullptr},
    {"doFontRadar", 0x23, "0102080e00000000", "0e08020100000000", nullptr},
    {"doCarBasicInfor", 0x24, "20000000000000", "08000000000000", nullptr},
    {"doSettingStatus", 0x28, "7201", "7200", "unitDataChanged"},
    {"doAmbientLight", 0x61, "0264", "0332", "sigAmbientChanged"},
    {"doCarInformationData1", 0x63, "000001000203000102030400000000177200",
     "000002000304000506070800000000210100", nullptr},
    {"doCarInformationData2", 0x69, "3000000040", "3100000041", nullptr},
};

} // namespace

class HandlersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { selectCar(5); }

    void wrongLength_data() { addRows(kHandlers); }
    void wrongLength()
    {
        const auto &row = currentRow(kHandlers);
        const auto type = static_cast<quint8>(row.dataType);
        const QByteArray other = hex(row.other);
        ServiceTest test;
        test.dispatch(type, hex(row.before));
        const QString state = stateOf(test);
        for (const QByteArray &payload : {other.chopped(1), other + '\0', other + other,
                                          QByteArray(1, '\0'), QByteArray(255, '\x55')}) {
            const LogCapture log(false);
            test.receive(canbox::buildFrame(type, payload));
            QCOMPARE(test.taken(), "ff !, notifyCanbusStatus 3");
            QCOMPARE(stateOf(test), state);
            QCOMPARE(log.items(), QStringList("")); // One line, without a word.
            const LogCapture::Line &line = log.lines().front();
            QVERIFY(line.type == QtCriticalMsg && line.text.startsWith("[ERR] "));
            QVERIFY(line.function.contains(QByteArray("SimpleService::") + row.name + '('));
        }
        // The payload would have made a difference, had it been taken.
        test.receive(canbox::buildFrame(type, other));
        QVERIFY(stateOf(test) != state);
    }

    void everyByteValue_data() { addRows(kHandlers); }
    void everyByteValue()
    {
        const auto &row = currentRow(kHandlers);
        ServiceTest test;
        const LogCapture log(false);
        for (int byte = 0; byte < hex(row.before).size(); ++byte)
            for (int value = 0; value < 256; ++value) {
                QByteArray payload = hex(row.before);
                payload[byte] = static_cast<char>(value);
                const QString signalled = test.dispatch(row.dataType, payload);
                QVERIFY(!row.everySignal || signalled == row.everySignal);
            }
        QVERIFY(log.lines().empty());
    }
};

QTEST_GUILESS_MAIN(HandlersTest)
#include "tst_handlers.moc"
