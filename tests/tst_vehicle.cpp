// Driving data, tyres, battery and doors, and the getters over them.
#include "servicetest.h"

#include <translator.h>

using canservice::SimpleService;

// The host's texts, in a language that the test chooses: these stand before the host library's.
static char sLanguage = '#';
QString Translator::translate(int id) { return sLanguage + QString::number(id); }

namespace {

// Odometer, range, consumption, speed; and the rest, which no frame sets.
QString drivingData(SimpleService &service)
{
    DrivingData data;
    data.reserved2 = "of the caller";
    service.getDrivingData(data);
    return QStringList{data.odometer, data.range, data.consumption, data.speed}.join(' ') +
           data.reserved2 +
           QStringList(std::begin(data.reserved5), std::end(data.reserved5)).join("");
}

// Pressures and states from front left to rear right, and the type of the alert.
QString tires(SimpleService &s)
{
    const QStringList pressures{
        exact(s.getTirePressureValueFL()), exact(s.getTirePressureValueFR()),
        exact(s.getTirePressureValueRL()), exact(s.getTirePressureValueRR())};
    return pressures.join(' ') + QString::asprintf(", %d%d%d%d %d", s.getTireStatusFL(),
                                                   s.getTireStatusFR(), s.getTireStatusRL(),
                                                   s.getTireStatusRR(), s.getTireAlertType());
}

// Each row follows a frame of zeros and differs from it in the bytes at the offset.
const char kDriving[] = "drivingDataChanged";
const char kTwoDriving[] = "drivingDataChanged, drivingDataChanged";
const char kTires[] = "tireDataChanged";
const char kAlert[] = "tireAlert";
const char kZero[] = "0#997 0#997 0.1#1002 ";
const char kFlat[] = "0 0 0 0, 0000 0";
const struct
{
    const char *name;
    int offset;
    const char *bytes, *driving, *tires, *signalled;
} kInfo1[] = {
    {"bytes that nobody reads", 6, "ff00000000ffffffff0000ff", kZero, kFlat, ""},
    {"odometer, big-endian", 0, "010203", "66051#997 0#997 0.1#1002 ", kFlat, kDriving},
    {"last range and consumption", 3, "03e795", "0#997 999#997 29.9#1002 ", kFlat, kTwoDriving},
    {"range alone, out of range", 3, "03e8", "0#997 -- 0.1#1002 ", kFlat, kDriving},
    {"no limit, unsigned", 0, "ffffffffff", "16777215#997 -- 0.1#1002 ", kFlat, kTwoDriving},
    {"consumption alone, out of range", 5, "96", "0#997 0#997 -- ", kFlat, kDriving},
    {"a pressure alone", 7, "fe", kZero, "698.5 0 0 0, 0000 0", kTires},
    {"pressures, one unknown", 7, "01ff5580", kZero, "2.75 -1 233.75 352, 0000 0", kTires},
    {"front right and rear left state", 15, "0270", kZero, "0 0 0 0, 0110 1", kAlert},
    {"state codes 3 to 6 are no alert", 15, "3456", kZero, kFlat, ""},
    {"nor are 8 to 11", 15, "89ab", kZero, kFlat, ""},
    {"nor are 12 to 15", 15, "cdef", kZero, kFlat, ""},
};

// Each row follows speed 0 and battery code 240.
const Case kInfo2[] = {
    {"bytes that nobody reads", "00fffffff0", "0#992, 17.8999996, "},
    {"last speed", "fe000000f0", "254#992, 17.8999996, drivingDataChanged"},
    {"speed unknown", "ff000000f0", "--, 17.8999996, drivingDataChanged"},
    {"both", "8000000000", "128#992, 3, drivingDataChanged, batteryVoltageChange"},
    {"code 238", "00000000ee", "0#992, 17.8158951, batteryVoltageChange"},
    {"last step", "00000000ef", "0#992, 17.8781471, batteryVoltageChange"},
    {"highest code", "00000000ff", "0#992, 17.8999996, "},
};

const char kThreeTexts[] = "drivingDataChanged, drivingDataChanged, drivingDataChanged";

} // namespace

class VehicleTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { sLanguage = '#'; }

    void startsWithoutReadings()
    {
        ServiceTest test;
        SimpleService &s = test.service;
        s.start();
        QCOMPARE(drivingData(s), "   ");
        QCOMPARE(tires(s), "-1 -1 -1 -1, 0000 -1");
        QCOMPARE(exact(s.getBatteryVoltageValue()), "-1");

        // The records that no frame feeds overwrite the caller's; the map is left to the caller.
        FuelConsumptionData fuel;
        OtherInfoData other;
        fuel.reserved[5] = other.reserved[8] = "of the caller";
        other.flag = false;
        QMap<QString, QString> map{{"of", "the caller"}};
        QCOMPARE(s.getFuelConsumptionData(fuel) + s.getOtherInfoData(other), 0);
        s.getVehicleData(map);
        QVERIFY(fuel.reserved[5].isNull() && other.reserved[8].isNull() && other.flag);
        QCOMPARE(map.size(), 1);
    }

    void info1_data() { addRows(kInfo1); }
    void info1()
    {
        const auto &row = currentRow(kInfo1);
        ServiceTest test;
        QByteArray payload(18, '\0');
        QCOMPARE(test.dispatch(0x63, payload), QString(kThreeTexts) + ", tireDataChanged");
        QCOMPARE(tires(test.service), kFlat); // No alert, but its type is known by now.
        const QByteArray bytes = hex(row.bytes);
        QCOMPARE(test.dispatch(0x63, payload.replace(row.offset, bytes.size(), bytes)),
                 row.signalled);
        QCOMPARE(drivingData(test.service), row.driving);
        QCOMPARE(tires(test.service), row.tires);
    }

    // A slot that reads the state finds what the signal tells of, and nothing of what comes later.
    void signalsFollowTheirValues()
    {
        ServiceTest test;
        test.dispatch(0x63, QByteArray(18, '\0'));
        QStringList seen;
        const auto note = [&](void (CanServiceBase::*signal)(), QString (*state)(SimpleService &)) {
            connect(&test.service, signal, [&, state] { seen << state(test.service); });
        };
        note(&CanServiceBase::drivingDataChanged, drivingData);
        note(&CanServiceBase::tireDataChanged, tires);
        note(&CanServiceBase::tireAlert, tires);
        QCOMPARE(test.dispatch(0x63, hex("000001000203000102030400000000177100")),
                 QString(kThreeTexts) + ", tireDataChanged, tireAlert");
        const QStringList expected{"1#997 0#997 0.1#1002 ", "1#997 2#997 0.1#1002 ",
                                   "1#997 2#997 0.7#1002 ", "2.75 5.5 8.25 11, 0000 0",
                                   "2.75 5.5 8.25 11, 2112 1"};
        QCOMPARE(seen, expected);

        // One warning less is an alert; so is the end of the last, which clears the type.
        QCOMPARE(test.dispatch(0x63, hex("000001000203000102030400000000100000")), kAlert);
        QCOMPARE(seen.last(), "2.75 5.5 8.25 11, 2000 1");
        QCOMPARE(test.dispatch(0x63, hex("000001000203000102030400000000330000")), kAlert);
        QCOMPARE(seen.last(), "2.75 5.5 8.25 11, 0000 0");
    }

    void asksForUnitTextsAtEveryFrame()
    {
        ServiceTest test;
        test.dispatch(0x63, QByteArray(18, '\0'));
        test.dispatch(0x69, QByteArray(5, '\0'));
        sLanguage = '?';
        QCOMPARE(test.dispatch(0x63, QByteArray(18, '\0')), kThreeTexts);
        QCOMPARE(test.dispatch(0x69, QByteArray(5, '\0')), kDriving);
        QCOMPARE(drivingData(test.service), "0?997 0?997 0.1?1002 0?992");
    }

    void info2_data() { addRows(kInfo2); }
    void info2()
    {
        const auto &row = currentRow(kInfo2);
        ServiceTest test;
        QCOMPARE(test.dispatch(0x69, hex("00000000f0")),
                 "drivingDataChanged, batteryVoltageChange");
        const QString signalled = test.dispatch(0x69, hex(row.given));
        QCOMPARE(drivingData(test.service).trimmed() + ", " +
                     exact(test.service.getBatteryVoltageValue()) + ", " + signalled,
                 row.expected);
    }

    void doors()
    {
        ServiceTest test;
        SimpleService &s = test.service;
        for (int byte = 0; byte < 256; ++byte) { // Bits 2..0 and the other bytes do not matter.
            const QByteArray payload = QByteArray(1, static_cast<char>(byte)) +
                                       QByteArray(6, byte % 2 != 0 ? '\xff' : '\0');
            const bool changed = byte % 8 == 0 && byte > 0;
            QCOMPARE(test.dispatch(0x24, payload), changed ? "doorChanged" : "");
            QCOMPARE(s.isRightFrontDoorOpen() << 7 | s.isLeftFrontDoorOpen() << 6 |
                         s.isRightRearDoorOpen() << 5 | s.isLeftRearDoorOpen() << 4 |
                         s.isRearDoorOpen() << 3,
                     byte & 0xF8);
        }
    }
};

QTEST_GUILESS_MAIN(VehicleTest)
#include "tst_vehicle.moc"
