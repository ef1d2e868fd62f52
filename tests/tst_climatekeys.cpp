// The host's climate keys as frames to the box.
#include "servicetest.h"

namespace {

const QString kZero("2ec603ac00008a");
const QMap<int, QString> kFrameOfCommand{
    {0x01, "2ec603ac010089"}, {0x02, "2ec603ac020088"}, {0x03, "2ec603ac030087"},
    {0x04, "2ec603ac040086"}, {0x05, "2ec603ac050085"}, {0x06, "2ec603ac060084"},
    {0x07, "2ec603ac070083"}, {0x08, "2ec603ac080082"}, {0x09, "2ec603ac090081"},
    {0x0A, "2ec603ac0a0080"}, {0x0B, "2ec603ac0b007f"}, {0x11, "2ec603ac110079"},
    {0x17, "2ec603ac170073"}, {0x18, "2ec603ac180072"}, {0x1A, "2ec603ac1a0070"},
    {0x1B, "2ec603ac1b006f"}, {0x1C, "2ec603ac1c006e"}, {0x1D, "2ec603ac1d006d"},
    {0x1E, "2ec603ac1e006c"}, {0x1F, "2ec603ac1f006b"}, {0x20, "2ec603ac20006a"},
    {0x21, "2ec603ac210069"}, {0x22, "2ec603ac220068"}, {0x23, "2ec603ac230067"},
    {0x25, "2ec603ac250065"},
};

// What each key from 0 sends on a model: its command and the zero command, 00 for the zero command
// alone, nothing for two points. Key 31 is pressed in wind mode 0.
const Case kModels[] = {
    {"14", "14", "01..020418170303..06....2022211e1f....1a1b1c1d................22....11.."},
    {"16 17", "16", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709....0b..25........"},
    {"19 20 85", "19", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709........22....11.."},
    {"22", "22", "......0418..............2022211e1f....1a1b1c1d................25........"},
    {"24 etc.", "24", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709........22........"},
    {"45 107", "45", "01..0204....0303........2022211e1f....1a1b1c1d................22........"},
    {"68-73", "68", "01..0204181703030506....2022211e1f....1a1b........0709........25........"},
    {"74 75", "74", "01..020418170303..06080a2022211e1f....1a1b1c1d....0709....0b..22........"},
    {"97-102", "97", "01..0204..1703030506080a2022211e1f....1a1b1c1d....0709........22........"},
    {"newer", "1", "01000204181703030506080a2022211e1f00001a1b1c1d0000070900000b002200001100"},
    {"none", "200", "........................................................................"},
};

// The command of key 31 on a model in each raw wind mode. No model is of class 1 in modes 6 and 7.
const Case kCycles[] = {
    {"class 0", "17", "2525202222222525"},
    {"class 1 in modes 0 and 1", "14", "2221202222222525"},
    {"class 1 in modes 0 to 2", "97", "2221222222222525"},
    {"class 1 in modes 3 to 5", "16", "2525202325252525"},
    {"class 2", "1", "2221202325222222"},
};

// Who refuses a key on a model: sendAcKey() those that it does not know, isSupportAcCtrl() those
// that are in no list, at the zero command.
const Case kRefusals[] = {
    {"by the key", "1 32", "sendAcKey"},
    {"by the key, the next", "1 33", "sendAcKey"},
    {"by the key, beyond the table", "1 35", "sendAcKey"},
    {"by key and rule", "14 -1", "sendAcKey isSupportAcCtrl"},
    {"by the rule alone", "14 30", "isSupportAcCtrl"},
    {"known to a new control", "1 30", ""},
    {"known, but in no model", "14 17", ""},
    {"known, but not in this model", "16 34", ""},
};

QString frames(const QByteArray &command)
{
    if (command == "..")
        return QString();
    const int number = command.toInt(nullptr, 16);
    return number == 0 ? kZero : kFrameOfCommand.value(number) + ", " + kZero;
}

} // namespace

class ClimateKeysTest : public QObject
{
    Q_OBJECT

private slots:
    void models_data() { addRows(kModels); }
    void models()
    {
        const auto &row = currentRow(kModels);
        selectCar(QByteArray(row.given).toInt());
        ServiceTest test;
        QCOMPARE(test.probe.acKey, -1);
        for (int key = 0; key < 36; ++key)
            for (const int value : {0, 5}) { // The value changes nothing.
                QCOMPARE(test.service.sendAcKey(key, value), 0);
                QCOMPARE(test.taken(), frames(QByteArray(row.expected).mid(2 * key, 2)));
                QCOMPARE(test.probe.acKey, key);
            }
        for (const int key : {-1, 256, INT_MAX, INT_MIN}) {
            QCOMPARE(test.service.sendAcKey(key, 0), 0);
            QCOMPARE(test.taken(), row.given == QByteArray("1") ? kZero : QString());
        }
    }

    void cycle_data() { addRows(kCycles); }
    void cycle()
    {
        const auto &row = currentRow(kCycles);
        selectCar(QByteArray(row.given).toInt());
        ServiceTest test;
        for (int mode = 0; mode < 8; ++mode) {
            QByteArray climate(10, '\xff');
            climate[1] = static_cast<char>(mode << 5 | 0x1F);
            test.dispatch(0x21, climate);
            test.service.sendAcKey(31, 0);
            QCOMPARE(test.taken(), frames(QByteArray(row.expected).mid(2 * mode, 2)));
        }
    }

    void refusalsAreLogged_data() { addRows(kRefusals); }
    void refusalsAreLogged()
    {
        const auto &row = currentRow(kRefusals);
        const int key = QByteArray(row.given).split(' ').at(1).toInt();
        selectCar(QByteArray(row.given).split(' ').at(0).toInt());
        ServiceTest test;
        const LogCapture log;
        test.service.sendAcKey(key, 9);
        QStringList writers;
        for (const LogCapture::Line &line : log.lines())
            if (line.text.endsWith(QStringLiteral("-- Function not supported,KEY =  %1").arg(key)))
                writers << QString(line.function).section("SimpleService::", 1).section('(', 0, 0);
        QCOMPARE(writers.join(' '), row.expected);
        QCOMPARE(log.items().first(), QStringLiteral("%1 %1 9").arg(key));
    }

    void commandNeedsASupportedKey()
    {
        ServiceTest test;
        selectCar(14);
        test.service.sendAcSet(1, 2);
        QCOMPARE(test.taken(), "");
        selectCar(1);
        test.service.sendAcSet(1, 2);
        QCOMPARE(test.taken(), "2ec603ac010287");
    }
};

QTEST_GUILESS_MAIN(ClimateKeysTest)
#include "tst_climatekeys.moc"
