// The virtual box and car against literal frames, without a line between them and the test.
#include "virtualbox.h"

#include <QSignalSpy>
#include <QTest>

using bench::VirtualBox;
using bench::VirtualCar;

namespace {

QByteArray hex(const char *text) { return QByteArray::fromHex(text); }

const QByteArray kStart = hex("2e8101017c");
const QByteArray kStop = hex("2e8101007d");
const QByteArray kAskVersion = hex("2e90023000 3d");
const QByteArray kVersionFrame = hex("2e3008 56424f582d312e30 cc");

// A box whose output is collected.
struct Bench
{
    Bench()
    {
        QObject::connect(&box, &VirtualBox::transmit, [this](const QByteArray &b) { sent += b; });
    }

    // Whether exactly `expected` was sent. The version frame that is asked for last marks the end.
    void expect(const QByteArray &expected)
    {
        QCoreApplication::processEvents(); // Reports of changes go out now.
        box.receive(kAskVersion);
        QTRY_VERIFY(sent.endsWith(kVersionFrame));
        QCOMPARE(sent.left(sent.size() - kVersionFrame.size()).toHex(' '), expected.toHex(' '));
        sent.clear();
    }

    VirtualCar car;
    VirtualBox box{&car};
    QByteArray sent;
};

} // namespace

class VirtualBoxTest : public QObject
{
    Q_OBJECT

private slots:
    void answersRequests_data();
    void answersRequests();
    void carObeysCommands_data();
    void carObeysCommands();
    void reportsChangesWhileStarted();
    void reportsEveryKeyStroke();
    void resendsOnceAfterABadReceipt();
    void survivesBadBytes_data();
    void survivesBadBytes();
    void keepsTheSpeedOfTheLine();
    void dropsOutdatedReports();
    void refusesValuesOutOfRange();
};

void VirtualBoxTest::answersRequests_data()
{
    QTest::addColumn<QStringList>("settings");
    QTest::addColumn<int>("carModel");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("answer");

    QTest::newRow("no key is held")
        << QStringList() << 0 << hex("2e9002 2000 4d") << hex("2e2002 0000 dd");
    QTest::newRow("climate in every byte")
        << QStringList{"climate.power=off",       "climate.ac=on",
                       "climate.auto=off",        "climate.dual=off",
                       "climate.mode=5",          "climate.fan=7",
                       "climate.left=29.5",       "climate.right=low",
                       "climate.unit=fahrenheit", "climate.wheel_heat=on",
                       "climate.left_seat=vent1", "climate.right_seat=heat3"}
        << 0 << hex("2e9002 2100 4c") << hex("2e210a c4a73b0048000000 6100 85");
    QTest::newRow("rear radar, a code per sensor")
        << QStringList{"radar.rear.left=1", "radar.rear.right=31"} << 0 << hex("2e9002 2200 4b")
        << hex("2e2208 0100001f00000000 b5");
    QTest::newRow("rear radar, two codes per sensor")
        << QStringList{"radar.rear.left=1", "radar.rear.middle_left=2", "radar.rear.middle_right=3",
                       "radar.rear.right=4"}
        << 1 << hex("2e9002 2200 4b") << hex("2e2208 0202030301010404 c1");
    QTest::newRow("front radar, two codes per sensor")
        << QStringList{"radar.front.left=1", "radar.front.middle_left=2",
                       "radar.front.middle_right=3", "radar.front.right=4"}
        << 1 << hex("2e9002 2300 4a") << hex("2e2308 0202030304010104 c0");
    QTest::newRow("doors") << QStringList{"door.right_front=open", "door.left_front=open",
                                          "door.rear=open"}
                           << 0 << hex("2e9002 2400 49") << hex("2e2407 c8000000000000 0c");
    QTest::newRow("units are a frame each")
        << QStringList{"unit.temperature=fahrenheit", "unit.pressure=bar"} << 0
        << hex("2e9002 2800 45") << hex("2e2802 7201 62 2e2802 7002 63");
    QTest::newRow("ambient light") << QStringList{"ambient.colour=5", "ambient.level=60"} << 0
                                   << hex("2e9002 6100 0c") << hex("2e6102 053c 5b");
    QTest::newRow("driving data and tyres")
        << QStringList{"drive.odometer=66051",          "drive.range=999",
                       "drive.consumption=29.9",        "tyre.front_left.pressure=698.5",
                       "tyre.rear_right.pressure=none", "tyre.front_left.state=state1",
                       "tyre.rear_right.state=state2"}
        << 0 << hex("2e9002 6300 0a")
        << hex("2e6312 010203 03e7 95 00 fe5450ff 00000000 20 01 00 43");
    QTest::newRow("speed and battery") << QStringList{"drive.speed=254", "battery.voltage=3.06"}
                                       << 0 << hex("2e9002 6900 04") << hex("2e6905 fe00000001 92");
    QTest::newRow("a type that nothing reports")
        << QStringList() << 0 << hex("2e9002 2500 48") << QByteArray();
}

void VirtualBoxTest::answersRequests()
{
    QFETCH(QStringList, settings);
    QFETCH(int, carModel);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, answer);

    Bench bench;
    bench.car.setTwoCodesPerSensor(VirtualCar::hasTwoCodesPerSensor(carModel));
    for (const QString &setting : settings)
        QCOMPARE(bench.car.set(setting.section('=', 0, 0), setting.section('=', 1)), QString());
    bench.box.receive(request);
    bench.expect(answer);
}

void VirtualBoxTest::carObeysCommands_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("text");

    QTest::newRow("power key") << hex("2ec603ac0100 89") << "climate.power"
                               << "off";
    QTest::newRow("warmer") << hex("2ec603ac1a00 70") << "climate.left"
                            << "22 \u00B0C";
    QTest::newRow("blowing mode") << hex("2ec603ac2500 65") << "climate.mode"
                                  << "5";
    QTest::newRow("seat heating starts at its first level")
        << hex("2ec603ac0700 83") << "climate.left_seat"
        << "heat1";
    QTest::newRow("released climate key changes nothing")
        << hex("2ec603ac0000 8a") << "climate.power"
        << "on";
    QTest::newRow("ambient level") << hex("2ec502 0564 cf") << "ambient.level"
                                   << "100";
    QTest::newRow("temperature unit reaches the climate display")
        << hex("2ec902 7201 c1") << "climate.unit"
        << "fahrenheit";
    QTest::newRow("pressure unit") << hex("2ec902 7002 c2") << "unit.pressure"
                                   << "bar";
    QTest::newRow("pressure unit out of range") << hex("2ec902 7003 c1") << "unit.pressure"
                                                << "kpa";
    QTest::newRow("FM") << hex("2ec00501002e2200e9") << "source"
                        << "FM1 87.50 MHz";
    QTest::newRow("AM") << hex("2ec0050110f0030036") << "source"
                        << "AM 1008 kHz";
    QTest::newRow("text beyond ASCII") << hex("2ec109 01 00000000 00e4 20ac 84") << "line1"
                                       << "\u00E4\u20AC";
    QTest::newRow("clock") << hex("2e820619060f0a1e0021") << "clock"
                           << "2025-06-15 10:30";
}

void VirtualBoxTest::carObeysCommands()
{
    QFETCH(QByteArray, command);
    QFETCH(QString, value);
    QFETCH(QString, text);

    Bench bench;
    bench.box.receive(command);
    const bench::Cluster &cluster = bench.car.cluster();
    const QMap<QString, QString> shown{
        {"source", cluster.source}, {"line1", cluster.lines[0]}, {"clock", cluster.clock}};
    const bench::CarValueInfo *info = bench::findCarValue(value);
    QCOMPARE(info ? bench.car.text(info->id) : shown.value(value), text);
}

void VirtualBoxTest::reportsChangesWhileStarted()
{
    Bench bench;
    bench.car.set("door.rear", "open");
    bench.expect(QByteArray());

    bench.box.receive(kStart);
    QTRY_COMPARE(bench.box.sent().size(), 9); // Eight reports, and the version of before.
    QTRY_VERIFY(bench.sent.contains(hex("2e240708000000000000cc")));
    QTRY_VERIFY(bench.sent.endsWith(hex("2e6905 0000000097 fa")));
    bench.sent.clear();

    // Two changes in a row of one report are one frame.
    bench.car.set("door.rear", "closed");
    bench.car.set("door.left_rear", "open");
    bench.expect(hex("2e240710000000000000c4"));

    bench.box.receive(kStop);
    bench.car.set("door.left_rear", "closed");
    bench.expect(QByteArray());
}

void VirtualBoxTest::reportsEveryKeyStroke()
{
    Bench bench;
    bench.box.receive(kStart);
    QTRY_VERIFY(bench.sent.endsWith(hex("2e6905 0000000097 fa")));
    bench.sent.clear();

    bench.car.pressKey(0xF0);
    bench.car.pressKey(5);
    bench.car.releaseKey();
    bench.car.releaseKey();
    bench.expect(hex("2e2002f001ec 2e2002f000ed 2e20020501d7 2e20020500d8"));
}

void VirtualBoxTest::resendsOnceAfterABadReceipt()
{
    const QByteArray ambient = hex("2e6102 0232 68");
    Bench bench;
    bench.box.report(0x61);
    QTRY_COMPARE(bench.sent.toHex(), ambient.toHex());
    bench.box.receive(hex("f0"));
    QTRY_COMPARE(bench.sent.toHex(), (ambient + ambient).toHex());
    bench.sent.clear();

    bench.box.receive(hex("f0"));
    bench.expect(QByteArray());
    bench.box.receive(hex("ff f0")); // The second one follows no frame.
    bench.expect(QByteArray());
    QCOMPARE(bench.box.resent(), 1);
    QCOMPARE(bench.box.received().badReceipts, 3);
    QCOMPARE(bench.box.received().goodReceipts, 1);
}

void VirtualBoxTest::survivesBadBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("noise and receipts between frames") << hex("00 ff 41 f0 81");
    QTest::newRow("bad checksum") << hex("2e8101017d");
    QTest::newRow("unknown command") << hex("2e420101bb");
    QTest::newRow("no payload") << hex("2e81007e");
    QTest::newRow("start with a long payload") << hex("2e8102 0101 7a");
    QTest::newRow("request without its second byte") << hex("2e9001244a");
    QTest::newRow("climate command in a wrong length") << hex("2ec602ac018a");
    QTest::newRow("text of half a character") << hex("2ec106 010000000041 f6");
    QTest::newRow("text for a third line") << hex("2ec105 0300000000 36");
    QTest::newRow("the longest payload") << hex("2ec5ff") + QByteArray(255, '\1') + hex("3c");
}

void VirtualBoxTest::survivesBadBytes()
{
    QFETCH(QByteArray, bytes);
    Bench bench;
    QSignalSpy changes(&bench.car, &VirtualCar::reportChanged);
    QSignalSpy shown(&bench.car, &VirtualCar::clusterChanged);

    bench.box.receive(bytes);
    bench.expect(QByteArray());
    QVERIFY(!bench.box.isStarted());
    QCOMPARE(changes.size() + shown.size(), 0);
}

void VirtualBoxTest::keepsTheSpeedOfTheLine()
{
    Bench bench;
    QElapsedTimer clock;
    qint64 lastByte = 0;
    connect(&bench.box, &VirtualBox::transmit, this, [&] { lastByte = clock.elapsed(); });
    clock.start();
    bench.box.reportAll();
    QTRY_COMPARE(bench.sent.size(), 98);
    QVERIFY2(lastByte >= 25, "98 bytes of 10 bits at 38400 baud take 25.5 ms");
}

void VirtualBoxTest::dropsOutdatedReports()
{
    Bench bench;
    bench.box.receive(kStart);
    QTRY_VERIFY(bench.sent.endsWith(hex("2e6905 0000000097 fa")));

    bench.box.sendRaw(QByteArray(400, '\0')); // Holds the line for 100 ms.
    for (const char *state : {"open", "closed", "open"}) {
        bench.car.set("door.left_rear", state);
        QCoreApplication::processEvents();
    }
    QTRY_VERIFY(bench.sent.endsWith(hex("2e240710000000000000c4")));
    QCOMPARE(bench.box.sent().value(0x24), 2); // With the one of the start.
}

void VirtualBoxTest::refusesValuesOutOfRange()
{
    VirtualCar car;
    for (const char *text : {"30", "15", "nan", "1e300", "", "warm"})
        QCOMPARE(car.set("climate.left", text),
                 QString("climate.left cannot be '%1'; possible: 15.5 to 29.5 \u00B0C, low, high, "
                         "none")
                     .arg(text));
    QCOMPARE(car.text(bench::CarValue::ClimateLeft), "21.5 \u00B0C");
    QVERIFY(car.set("door.sideways", "open").contains("door.sideways"));
}

QTEST_GUILESS_MAIN(VirtualBoxTest)
#include "tst_virtualbox.moc"
