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

    QString cluster() const
    {
        const bench::Cluster &shown = car.cluster();
        return QStringList{shown.source, shown.lines[0], shown.lines[1], shown.clock}.join('|');
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

// A command of the host with its payload, and how a person is told of it. Then a value of the car
// as it reads after each of so many of them, or what the cluster shows after the first: source, two
// lines and clock. What is set before stands behind the name.
const struct
{
    const char *name, *command, *meaning, *value, *texts;
} kCommands[] = {
    {"key up", "c6 ac0000", "the key came up", "climate.power", "on"},
    {"power", "c6 ac0100", "the next of climate.power", "climate.power", "off, on"},
    {"air conditioning", "c6 ac0200", "the next of climate.ac", "climate.ac", "on, off"},
    {"air", "c6 ac0300", "the next of climate.inside_air", "climate.inside_air", "on, off"},
    {"automatic", "c6 ac0400", "the next of climate.auto", "climate.auto", "off, on"},
    {"maximum", "c6 ac0500", "the next of climate.max", "climate.max", "on, off"},
    {"dual", "c6 ac0600", "the next of climate.dual", "climate.dual", "off, on"},
    {"left heat", "c6 ac0700", "the next of climate.left_seat", "climate.left_seat",
     "heat1, heat2, heat3, off"},
    {"heat after ventilation: climate.left_seat=vent2", "c6 ac0700",
     "the next of climate.left_seat", "climate.left_seat", "heat1, heat2"},
    {"right heat", "c6 ac0800", "the next of climate.right_seat", "climate.right_seat",
     "heat1, heat2, heat3, off"},
    {"left ventilation", "c6 ac0900", "the next of climate.left_seat", "climate.left_seat",
     "vent1, vent2, vent3, off"},
    {"ventilation after heat: climate.right_seat=heat3", "c6 ac0a00",
     "the next of climate.right_seat", "climate.right_seat", "vent1, vent2, vent3, off"},
    {"wheel", "c6 ac0b00", "the next of climate.wheel_heat", "climate.wheel_heat", "on, off"},
    {"rear climate", "c6 ac1100", "the next of climate.rear", "climate.rear", "on, off"},
    {"windscreen", "c6 ac1700", "the next of climate.front_defrost", "climate.front_defrost",
     "on, off"},
    {"rear window", "c6 ac1800", "the next of climate.rear_defrost", "climate.rear_defrost",
     "on, off"},
    {"warmer: climate.left=28.5", "c6 ac1a00", "climate.left up", "climate.left",
     "29 \u00B0C, 29.5 \u00B0C, 29.5 \u00B0C"},
    {"colder: climate.left=16.5", "c6 ac1b00", "climate.left down", "climate.left",
     "16 \u00B0C, 15.5 \u00B0C, 15.5 \u00B0C"},
    {"right warmer", "c6 ac1c00", "climate.right up", "climate.right", "22.5 \u00B0C, 23 \u00B0C"},
    {"right colder", "c6 ac1d00", "climate.right down", "climate.right", "21.5 \u00B0C"},
    {"more air: climate.fan=5", "c6 ac1e00", "climate.fan up", "climate.fan", "6, 7, 7"},
    {"less air: climate.fan=2", "c6 ac1f00", "climate.fan down", "climate.fan", "1, 0, 0"},
    {"mode of 0x20", "c6 ac2000", "climate.mode 1", "climate.mode", "1, 1"},
    {"mode of 0x21", "c6 ac2100", "climate.mode 3", "climate.mode", "3"},
    {"mode of 0x22: climate.mode=0", "c6 ac2200", "climate.mode 2", "climate.mode", "2"},
    {"mode of 0x23", "c6 ac2300", "climate.mode 4", "climate.mode", "4"},
    {"mode of 0x25", "c6 ac2500", "climate.mode 5", "climate.mode", "5"},
    {"no climate key", "c6 ac2600", "", "climate.mode", "2"},
    {"temperature unit", "c9 7201", "unit.temperature fahrenheit, climate.unit fahrenheit",
     "climate.unit", "fahrenheit"},
    {"temperature unit out of range", "c9 7202", "", "unit.temperature", "celsius"},
    {"pressure unit", "c9 7002", "unit.pressure bar", "unit.pressure", "bar"},
    {"pressure unit out of range", "c9 7003", "", "unit.pressure", "kpa"},
    {"ambient light", "c5 0364", "ambient.colour 3, ambient.level 100", "ambient.colour", "3"},
    {"ambient light of three bytes", "c5 036400", "", "ambient.level", "50"},
    {"another source", "c0 07", "source 7", "", "source 7|||"},
    {"FM1", "c0 01002e2200", "FM1 87.50 MHz", "", "FM1 87.50 MHz|||"},
    {"FM3", "c0 0102302a00", "FM3 108.00 MHz", "", "FM3 108.00 MHz|||"},
    {"AM", "c0 0110f00300", "AM 1008 kHz", "", "AM 1008 kHz|||"},
    {"radio of four bytes", "c0 01002e22", "", "", "|||"},
    {"radio of another kind", "c0 02002e2200", "", "", "|||"},
    {"line 1", "c1 010000000000410042", "line 1 'AB'", "", "text|AB||"},
    {"line 2 beyond ASCII", "c1 020000000000e420ac", "line 2 '\u00E4\u20AC'", "",
     "text||\u00E4\u20AC|"},
    {"an empty line", "c1 0100000000", "line 1 ''", "", "text|||"},
    {"line 0", "c1 00000000000041", "", "", "|||"},
    {"clock", "82 19060f0a1e00", "2025-06-15 10:30", "", "|||2025-06-15 10:30"},
    {"clock of a byte less", "82 19060f0a1e", "", "", "|||"},
    {"start", "81 01", "start", "climate.power", "on"},
    {"stop", "81 00", "stop", "climate.power", "on"},
    {"neither start nor stop", "81 02", "", "climate.power", "on"},
    {"request", "90 2100", "climate", "climate.power", "on"},
    {"request of a byte", "90 21", "", "climate.power", "on"},
    {"car selection", "91 34", "index 52", "climate.power", "on"},
    {"car selection of two bytes", "91 3412", "", "climate.power", "on"},
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
        const QByteArray bytes = hex(row.command);
        const canbox::Outbound command{canbox::byteAt(bytes, 0)};
        QCOMPARE(VirtualBox::meaning(command, bytes.mid(1)), QString(row.meaning));

        Bench bench;
        const QString before = QString(row.name).section(": ", 1);
        if (!before.isEmpty())
            QCOMPARE(bench.set(before.section('=', 0, 0), before.section('=', 1)), QString());
        QSignalSpy shown(&bench.car, &VirtualCar::clusterChanged);
        const auto id = bench::findValue(row.value);
        for (const QString &text : QString(row.texts).split(", ")) {
            bench.box.receive(canbox::buildFrame(canbox::byteAt(bytes, 0), bytes.mid(1)));
            QCOMPARE(id ? bench.car.text(*id) : bench.cluster(), text);
        }
        QCOMPARE(bench.box.misunderstood(), *row.meaning ? 0 : 1);

        // The cluster changes once, however often it is told the same.
        bench.box.receive(canbox::buildFrame(canbox::byteAt(bytes, 0), bytes.mid(1)));
        QCOMPARE(shown.size(), !id && *row.meaning ? 1 : 0);
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

    void aReceiptMayTakeASecond()
    {
        bench::ManualClock clock;
        VirtualCar car;
        VirtualBox box(&car, clock);
        QByteArray sent;
        connect(&box, &VirtualBox::transmit, this, [&](const QByteArray &bytes) { sent += bytes; });
        for (const bool inTime : {true, false}) {
            box.report(canbox::Inbound::AmbientLight);
            QVERIFY(!box.isQuiet());
            clock.advance(inTime ? 1'000'000'000 : 1'001'000'000);
            QTRY_COMPARE(sent, hex("2e6102 0232 68"));
            sent.clear();
            QCOMPARE(box.isQuiet(), !inTime);
            box.receive(hex("f0"));
            QCOMPARE(box.resent(), 1);
            clock.advance(10'000'000);
            QTRY_COMPARE(sent.size(), inTime ? 6 : 0);
            sent.clear();
            box.receive(hex("ff"));
            QVERIFY(box.isQuiet());
        }
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
        clock.advance(1'000'000'000);
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
