// The bench's table of the wire against the plug-in, by behaviour: what a payload means to the
// bench the service's getters answer, and none of them changes but with a signal that announces it.
#include "rows.h"

#include "bench/headunit/pluginhost.h"
#include "bench/headunit/statewatch.h"

#include <canbusmanager.h>

#include <QLoggingCategory>

#include <random>

using namespace bench;

namespace {

// Models with one and with two codes a sensor, and one with a palette of its own.
constexpr int kModels[] = {22, 1, 97};

// What a person may write for a value: the raw number that it stands for, or none.
constexpr struct
{
    const char *name, *texts;
} kTexts[] = {
    {"climate.ac", "on 1|true 1|1 1|off 0|false 0|0 0|ON 1|open|2|-1|"},
    {"climate.power", "on 0|true 0|1 0|off 1|false 1|0 1"}, // A bit that says what is off.
    {"door.rear", "open 1|closed 0|on 1|OPEN 1|high"},
    {"climate.left", "low 0|high 127|none 255|15.2|15.3 31|15.5 31|29.5 59|29.7 59|29.8|nan|inf"},
    {"climate.fan", "0 0|7 7|-1|8|full"},
    {"climate.left_seat", "off 0|vent1 1|heat3 6|0|7|on"},
    {"unit.pressure", "psi 0|kpa 1|bar 2|0"},
    {"drive.consumption", "none 255|0.1 0|29.9 149|30.1|0"},
    {"drive.range", "none 65535|0 0|65534 65534|65535"},
    {"tyre.rear_left.pressure", "2.75 1|698.5 254|none 255|701.25"},
    {"battery.voltage", "3 0|18.874172 255|2.9|19"},
    {"radar.rear.left", "none 0|1 1|31 31|0|32"},
};

/// The plug-in in a host of its own, and the watch over it.
struct HeadUnit
{
    HeadUnit()
    {
        QObject::connect(&host, &PluginHost::event, [this](int signal) {
            announced += signal == linkSignal() ? 0 : 1;
            changes += watch.changesWith(signal).size();
        });
    }
    ~HeadUnit()
    {
        watch.end();
        host.unload();
    }
    bool load(int carModel)
    {
        CanBusManager::instance()->setCarModelId(carModel);
        const QString problem = host.load(QStringLiteral(PLUGIN_FILE));
        if (!problem.isEmpty()) {
            qCritical("%s", qPrintable(problem));
            return false;
        }
        host.service()->start();
        watch.begin(host.service());
        return true;
    }
    void receive(Inbound type, const QByteArray &payload)
    {
        const QByteArray frame = canbox::buildFrame(static_cast<quint8>(type), payload);
        QMetaObject::invokeMethod(host.service(), "onDataReady", Q_ARG(QByteArray, frame));
        changes += watch.lookAround().size();
    }
    QVector<Value> readAll()
    {
        QVector<Value> values;
        for (int index = 0; index < getterCount(); ++index)
            values += getter(index).read(*host.service());
        return values;
    }

    /// The getters that have changed behind the watch's back.
    QStringList unannounced()
    {
        QStringList names;
        for (int index = 0; index < getterCount(); ++index) {
            const Getter &row = getter(index);
            if (!(row.read(*host.service()) == watch.value(row.name)) ||
                row.textOf(*host.service()) != watch.text(row.name))
                names += QLatin1String(row.name);
        }
        return names;
    }

    PluginHost host;
    StateWatch watch;
    int announced = 0; ///< Signals but the link's.
    int changes = 0;   ///< That the watch has seen.
};

/// All fields of a frame at their first value, but for one of them.
QByteArray payloadWith(const Report &report, const Field &field, int raw, bool twoCodes)
{
    QByteArray payload(report.size, '\0');
    for (const Field &other : report.fields)
        if (other.selector == field.selector)
            pack(other, &other == &field ? raw : other.initial, twoCodes, &payload);
    return payload;
}

/// Every one of a byte or less; else each bit alone, none and all.
QVector<int> rawValues(const Field &field)
{
    QVector<int> values;
    if (field.bits <= 8) {
        for (int raw = 0; raw <= field.mask(); ++raw)
            values += raw;
    } else {
        for (int bit = 0; bit < field.bits; ++bit)
            values += 1 << bit;
        values += {0, field.mask(), 999, 1000};
    }
    return values;
}

void addReports()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<int>("carModel");
    for (int report = 0; report < int(std::size(kReports)); ++report)
        for (const int carModel : kModels)
            QTest::addRow("%s, model %d", kReports[report].name, carModel) << report << carModel;
}

const Report &currentReport()
{
    QFETCH(int, report);
    return kReports[report];
}

} // namespace

class WireTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLoggingCategory::setFilterRules(QStringLiteral("default=false")); }

    // A report that the plug-in has and the bench has not would be tried by nobody.
    void everyOtherTypeMeansNothing()
    {
        HeadUnit unit;
        QVERIFY(unit.load(kModels[0]));
        const QVector<Value> before = unit.readAll();
        for (int type = 0; type <= 0xFF; ++type)
            for (int size = 1; size <= 32 && !findReport(Inbound(type)); ++size)
                unit.receive(Inbound(type), QByteArray(size, '\x0B'));
        QCOMPARE(unit.announced, 0);
        QVERIFY(unit.readAll() == before);
    }

    void everyReportIsInTheGuide()
    {
        QFile guide(QStringLiteral(WIRE_GUIDE));
        QVERIFY2(guide.open(QIODevice::ReadOnly), WIRE_GUIDE);
        const QString text = QString::fromUtf8(guide.readAll());
        for (const Report &report : kReports) {
            const QString size =
                report.size == kAnySize ? QStringLiteral("any") : QString::number(report.size);
            const auto type = static_cast<quint8>(report.type);
            const auto row =
                QStringLiteral("\n| %1 | %2 | %3 |").arg(hexByte(type), size, report.name);
            QVERIFY2(text.contains(row), qPrintable(row));
        }
    }

    void getterAnswersWhatTheWireMeans_data() { addReports(); }
    void getterAnswersWhatTheWireMeans()
    {
        QFETCH(int, carModel);
        const Report &report = currentReport();
        HeadUnit unit;
        QVERIFY(unit.load(carModel));
        for (const Field &field : report.fields) {
            const int own = findGetter(QLatin1String(field.name));
            if (report.strokes)
                continue;         // Keys are events, no state.
            bool isShown = false; // By the getter of its name, or by another, as units are.
            for (const int raw : rawValues(field)) {
                const QByteArray payload =
                    payloadWith(report, field, raw, hasTwoCodesPerSensor(carModel));
                const QVector<Value> before = unit.readAll();
                unit.receive(report.type, payload);
                const QVector<Value> after = unit.readAll();
                QCOMPARE(unit.unannounced(), QStringList());
                const PayloadWire wire(report.type, payload, carModel);
                for (int index = 0; index < getterCount(); ++index) {
                    const Getter &row = getter(index);
                    const bool isOwn = row.report == report.type && row.meaning;
                    const Value expected =
                        (isOwn ? row.meaning(wire) : std::nullopt).value_or(before.at(index));
                    QVERIFY2(after.at(index) == expected,
                             qPrintable(
                                 QStringLiteral("%1 is %2 instead of %3 for %4 of %5")
                                     .arg(row.name, plainText(after.at(index)), plainText(expected))
                                     .arg(raw)
                                     .arg(field.name)));
                }
                const Word *word = wordOf(field.words, raw); // Both speak of it alike.
                if (own >= 0 && getter(own).meaning && word)
                    QCOMPARE(getter(own).textOf(*unit.host.service()), QString(word->name));
                isShown = isShown || (own < 0 ? after != before : after.at(own) != before.at(own));
            }
            QVERIFY2(isShown, field.name);
        }
    }

    void textsStandForRawValues_data() { addRows(kTexts); }
    void textsStandForRawValues()
    {
        const auto &row = currentRow(kTexts);
        const Field &field = fieldOf(*findValue(row.name));
        for (const QString &text : QString(row.texts).split('|')) {
            const QString given = text.section(' ', 0, 0), expected = text.section(' ', 1);
            QString error;
            int raw = -1;
            QCOMPARE(parseValue(field, given, &raw, &error), !expected.isEmpty());
            QCOMPARE(expected.isEmpty() ? QString() : QString::number(raw), expected);
            QCOMPARE(error.contains("cannot be '" + given + "'; possible: " + valueRange(field)),
                     expected.isEmpty());
        }
    }

    // A model's radar has one or two codes per sensor, its ambient light a palette.
    void everyModelIsReadAsThePluginReadsIt()
    {
        HeadUnit unit;
        QVERIFY(unit.load(0));
        for (int model = -1; model < 256; ++model) {
            CanBusManager::instance()->setCarModelId(model);
            for (const auto &[type, bytes, name] :
                 {std::tuple(Inbound::RearRadar, "0802080208020802", "radar.rear.left"),
                  {Inbound::RearRadar, "0000000000000000", "radar.rear.left"},
                  {Inbound::AmbientLight, "0105", "ambient.colour"}}) {
                unit.receive(type, hex(bytes));
                const Getter &row = getter(findGetter(name));
                const Value expected = *row.meaning(PayloadWire(type, hex(bytes), model));
                QVERIFY2(row.read(*unit.host.service()) == expected, QByteArray::number(model));
            }
        }
    }

    void onlyWhatASignalAnnouncesChanges_data() { addReports(); }
    void onlyWhatASignalAnnouncesChanges()
    {
        QFETCH(int, carModel);
        const Report &report = currentReport();
        HeadUnit unit;
        QVERIFY(unit.load(carModel));
        std::mt19937 random(1);
        for (int round = 0; round < 500; ++round) {
            // Mostly small numbers, which mean something in most of the bytes.
            QByteArray payload(report.size == kAnySize ? 1 + round % 20 : report.size, '\0');
            for (char &byte : payload)
                byte = static_cast<char>(random() & (random() % 2 == 0 ? 0x0F : 0xFF));
            if (report.type == Inbound::UnitSettings)
                payload[0] = round % 2 == 0 ? '\x70' : '\x72';
            unit.receive(report.type, payload);
            QCOMPARE(unit.unannounced(), QStringList());
        }
        QVERIFY(unit.announced > 0);
        QVERIFY(unit.changes > 0 || report.strokes);
    }

    void otherSizeMeansNothing_data() { addReports(); }
    void otherSizeMeansNothing()
    {
        QFETCH(int, carModel);
        const Report &report = currentReport();
        QCOMPARE(isReport(report.type, 0xFF), report.size == kAnySize);
        if (report.size == kAnySize)
            return;
        HeadUnit unit;
        QVERIFY(unit.load(carModel));
        const QVector<Value> before = unit.readAll();
        const QByteArray payload = report.type == Inbound::UnitSettings ? QByteArray("\x70\x02")
                                   : report.strokes                     ? QByteArray("\x05\x01")
                                                    : QByteArray(report.size, '\x0B');
        unit.receive(report.type, payload.chopped(1));
        unit.receive(report.type, payload + '\x0B');
        QVERIFY(unit.readAll() == before);
        QCOMPARE(unit.announced, 0);

        unit.receive(report.type, payload);
        QVERIFY(unit.announced > 0);
        QVERIFY((unit.readAll() == before) == report.strokes);
    }
};

QTEST_GUILESS_MAIN(WireTest)
#include "tst_wire.moc"
