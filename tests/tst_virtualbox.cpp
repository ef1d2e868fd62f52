// The virtual box and car against literal frames, without a line between them and the test.
#include "rows.h"

#include "bench/box/virtualbox.h"

#include <QSignalSpy>

using bench::VirtualBox;
using bench::VirtualCar;

namespace {

const QByteArray kStart = hex("2e8101017c");
const QByteArray kStop = hex("2e8101007d");
const QByteArray kAskVersion = hex("2e90023000 3d");
const QByteArray kVersionFrame = hex("2e3008 56424f582d312e30 cc");
const QByteArray kLastReport = hex("2e6905 0000000097 fa"); // Of those at the start.

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

    // A value by its name and text; \returns what is wrong with them.
    QString set(const QString &name, const QString &text)
    {
        const auto id = bench::findValue(name);
        int raw = 0;
        QString error = id ? QString() : "no such value";
        if (id && parseValue(bench::fieldOf(*id), text, &raw, &error))
            car.setRaw(*id, raw);
        return error;
    }

    VirtualCar car;
    bench::SteadyClock clock;
    VirtualBox box{&car, clock};
    QByteArray sent;
};

// The car's values and the request; the answer. What scenarios show is not among them. The radar is
// that of a model with two codes per sensor where the middle sensors are set.
const struct
{
    const char *name, *settings, *request, *answer;
} kReports[] = {
    {"no key is held", "", "2e9002 2000 4d", "2e2002 0000 dd"},
    {"climate in every byte",
     "climate.power=off climate.ac=on climate.auto=off climate.dual=off climate.mode=5 "
     "climate.fan=7 climate.left=29.5 climate.right=low climate.unit=fahrenheit "
     "climate.wheel_heat=on climate.left_seat=vent1 climate.right_seat=heat3",
     "2e9002 2100 4c", "2e210a c4a73b0048000000 6100 85"},
    {"front radar, two codes per sensor",
     "radar.front.left=1 radar.front.middle_left=2 radar.front.middle_right=3 radar.front.right=4",
     "2e9002 2300 4a", "2e2308 0202030304010104 c0"},
    {"rear radar, two codes per sensor",
     "radar.rear.left=1 radar.rear.middle_left=2 radar.rear.middle_right=3 radar.rear.right=4",
     "2e9002 2200 4b", "2e2208 0202030301010404 c1"},
    {"units are a frame each", "unit.temperature=fahrenheit unit.pressure=bar", "2e9002 2800 45",
     "2e2802 7201 62 2e2802 7002 63"},
    {"driving data and tyres",
     "drive.odometer=66051 drive.range=999 drive.consumption=29.9 tyre.front_left.pressure=698.5 "
     "tyre.rear_right.pressure=none tyre.front_left.state=state1 tyre.rear_right.state=state2",
     "2e9002 6300 0a", "2e6312 010203 03e7 95 00 fe5450ff 00000000 20 01 00 43"},
    {"a type that nothing reports", "", "2e9002 2500 48", ""},
};

// A command, and the car's value that follows it; without a name, the cluster's first line.
const struct
{
    const char *name, *command, *value, *text;
} kCommands[] = {
    {"released climate key changes nothing", "2ec603ac0000 8a", "climate.power", "on"},
    {"temperature unit reaches the climate", "2ec902 7201 c1", "climate.unit", "fahrenheit"},
    {"pressure unit out of range", "2ec902 7003 c1", "unit.pressure", "kpa"},
    {"text beyond ASCII", "2ec109 01 00000000 00e4 20ac 84", "", "\u00E4\u20AC"},
};

const struct
{
    const char *name;
    QByteArray bytes;
} kBadBytes[] = {
    {"noise and receipts between frames", hex("00 ff 41 f0 81")},
    {"bad checksum", hex("2e8101017d")},
    {"unknown command", hex("2e420101bb")},
    {"no payload", hex("2e81007e")},
    {"start with a long payload", hex("2e8102 0101 7a")},
    {"request without its second byte", hex("2e9001244a")},
    {"unknown climate command", hex("2ec603ac0c007e")},
    {"climate command of another kind", hex("2ec603ab01008a")},
    {"climate command in a wrong length", hex("2ec602ac018a")},
    {"text of half a character", hex("2ec106 010000000041 f6")},
    {"text for a third line", hex("2ec105 0300000000 36")},
    {"the longest payload", hex("2ec5ff") + QByteArray(255, '\1') + hex("3c")},
};

} // namespace

class VirtualBoxTest : public QObject
{
    Q_OBJECT

private slots:
    void answersRequests_data() { addRows(kReports); }
    void answersRequests()
    {
        const auto &row = currentRow(kReports);
        const QString settings = row.settings;
        const int model = settings.contains("middle") ? 1 : 0;
        Bench bench;
        bench.car.setTwoCodesPerSensor(bench::hasTwoCodesPerSensor(model));
        for (const QString &setting : settings.split(' ', Qt::SkipEmptyParts))
            QCOMPARE(bench.set(setting.section('=', 0, 0), setting.section('=', 1)), QString());
        bench.box.receive(hex(row.request));
        bench.expect(hex(row.answer));
    }

    void carObeysCommands_data() { addRows(kCommands); }
    void carObeysCommands()
    {
        const auto &row = currentRow(kCommands);
        Bench bench;
        bench.box.receive(hex(row.command));
        const auto id = bench::findValue(row.value);
        QCOMPARE(id ? bench.car.text(*id) : bench.car.cluster().lines[0], QString(row.text));
    }

    void reportsChangesWhileStarted()
    {
        Bench bench;
        bench.set("door.rear", "open");
        bench.expect(QByteArray());

        bench.box.receive(kStart);
        const auto reports =
            std::count_if(std::begin(bench::kReports), std::end(bench::kReports),
                          [](const bench::Report &report) { return report.atStart; });
        QTRY_COMPARE(bench.box.sent().size(), int(reports) + 1); // And the version of before.
        QTRY_VERIFY(bench.sent.contains(hex("2e240708000000000000cc")));
        QTRY_VERIFY(bench.sent.endsWith(kLastReport));
        bench.sent.clear();

        // Two changes in a row of one report are one frame. Every key stroke is one of its own.
        bench.set("door.rear", "closed");
        bench.set("door.left_rear", "open");
        bench.expect(hex("2e240710000000000000c4"));
        bench.car.pressKey(0xF0);
        bench.car.pressKey(5);
        bench.car.releaseKey();
        bench.car.releaseKey();
        bench.expect(hex("2e2002f001ec 2e2002f000ed 2e20020501d7 2e20020500d8"));

        bench.box.receive(kStop);
        bench.set("door.left_rear", "closed");
        bench.expect(QByteArray());
    }

    void resendsOnceAfterABadReceipt()
    {
        const QByteArray ambient = hex("2e6102 0232 68");
        Bench bench;
        bench.box.report(canbox::Inbound::AmbientLight);
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

    void survivesBadBytes_data() { addRows(kBadBytes); }
    void survivesBadBytes()
    {
        Bench bench;
        QSignalSpy changes(&bench.car, &VirtualCar::reportChanged);
        QSignalSpy shown(&bench.car, &VirtualCar::clusterChanged);
        bench.box.receive(currentRow(kBadBytes).bytes);
        bench.expect(QByteArray());
        QVERIFY(!bench.box.isStarted());
        QCOMPARE(changes.size() + shown.size(), 0);
    }

    void keepsTheSpeedOfTheLine()
    {
        bench::ManualClock clock;
        bench::LinePacer pacer(38400, clock);
        int sent = 0;
        connect(&pacer, &bench::LinePacer::chunk, this,
                [&](const QByteArray &b) { sent += b.size(); });
        pacer.send(QByteArray(98, 'x')); // Of 10 bits: 25.52 ms.
        for (const auto &[microseconds, due] :
             {std::pair(260, 0), {1, 1}, {9739, 38}, {15520, 97}, {1, 98}}) {
            clock.advance(microseconds * 1000);
            pacer.tick();
            QCOMPARE(sent, due);
        }
        QVERIFY(pacer.isIdle());
    }

    void dropsOutdatedReports()
    {
        Bench bench;
        bench.box.receive(kStart);
        QTRY_VERIFY(bench.sent.endsWith(kLastReport));

        bench.box.sendRaw(QByteArray(400, '\0')); // Holds the line for 100 ms.
        for (const char *state : {"open", "closed", "open"}) {
            bench.set("door.left_rear", state);
            QCoreApplication::processEvents();
        }
        QTRY_VERIFY(bench.sent.endsWith(hex("2e240710000000000000c4")));
        QCOMPARE(bench.box.sent().value(0x24), 2); // With the one of the start.
    }
};

QTEST_GUILESS_MAIN(VirtualBoxTest)
#include "tst_virtualbox.moc"
