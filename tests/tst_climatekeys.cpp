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

// Models by what they can: what each key from 0 sends, which is its command and the zero command,
// 00 for the zero command alone, nothing for two points; and what key 31, pressed in wind mode 0
// there, sends in each raw wind mode.
const struct ModelGroup
{
    const char *models, *keys, *cycle;
} kGroups[] = {
    {"14", "01..020418170303..06....2022211e1f....1a1b1c1d................22....11..",
     "2221202222222525"},
    {"16", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709....0b..25........",
     "2525202325252525"},
    {"17", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709....0b..25........",
     "2525202222222525"},
    {"19-20", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709........22....11..",
     "2221202222222525"},
    {"85", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709........25....11..",
     "2525202325252525"},
    {"22", "......0418..............2022211e1f....1a1b1c1d................25........",
     "2525202325252525"},
    {"24-25 91-95", "01..0204181703030506080a2022211e1f....1a1b1c1d....0709........22........",
     "2221202222222525"},
    {"45 107", "01..0204....0303........2022211e1f....1a1b1c1d................22........",
     "2221202222222525"},
    {"68-73", "01..0204181703030506....2022211e1f....1a1b........0709........25........",
     "2525202325252525"},
    {"74-75", "01..020418170303..06080a2022211e1f....1a1b1c1d....0709....0b..22........",
     "2221202222222525"},
    {"97-102", "01..0204..1703030506080a2022211e1f....1a1b1c1d....0709........22........",
     "2221222222222525"},
    {"1-3 6-7 15 18 21 23 30-32 35-38 42-44 46 76-84 90 96 103 105-106 109-117 119-121",
     "01000204181703030506080a2022211e1f00001a1b1c1d0000070900000b002200001100",
     "2221202325222222"},
    {"", // All others.
     "........................................................................",
     "................"},
};

// Who refuses a key on a model: sendAcKey() those that it does not know, isSupportAcCtrl() those
// that are in no list, at the zero command.
const struct
{
    const char *name;
    int model, key;
    const char *writers;
} kRefusals[] = {
    {"by the key", 1, 32, "sendAcKey"},
    {"by the key, the next", 1, 33, "sendAcKey"},
    {"by the key, beyond the table", 1, 35, "sendAcKey"},
    {"by key and rule", 14, -1, "sendAcKey isSupportAcCtrl"},
    {"by the rule alone", 14, 30, "isSupportAcCtrl"},
    {"known to a new control", 1, 30, ""},
    {"known, but in no model", 14, 17, ""},
    {"known, but not in this model", 16, 34, ""},
};

// What the two digits at a place of a row stand for.
QString frames(const char *row, int place)
{
    const QByteArray command = QByteArray(row).mid(2 * place, 2);
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
    // The selection changes under one service, which asks for it at each call.
    void modelsKnowTheirKeys()
    {
        ServiceTest test;
        QCOMPARE(test.probe.acKey, -1);
        for (const int model : kModels) {
            const ModelGroup *group = kGroups;
            while (*group->models && !ids(group->models).contains(model))
                ++group;
            selectCar(model);
            const auto check = [&](int key, const QString &frames) {
                test.service.sendAcKey(key, key % 7); // The value changes nothing.
                const auto where = QStringLiteral("model %1, key %2: ").arg(model).arg(key);
                QCOMPARE(where + test.taken(), where + frames);
                QCOMPARE(test.probe.acKey, key);
            };
            for (int mode = 7; mode >= 0; --mode) {
                QByteArray climate(10, '\xff');
                climate[1] = static_cast<char>(mode << 5 | 0x1F);
                test.dispatch(0x21, climate);
                check(31, frames(group->cycle, mode));
            }
            for (int key = 0; key < 36; ++key)
                check(key, frames(group->keys, key));
            for (const int key : {-1, 64, 128, 256, INT_MAX, INT_MIN})
                check(key, frames(group->keys, 35)); // As a key that nobody knows.
        }
        selectCar(1);
        test.service.sendAcSet(1, 2);
        QCOMPARE(test.taken(), "2ec603ac010287");
    }

    void refusalsAreLogged_data() { addRows(kRefusals); }
    void refusalsAreLogged()
    {
        const auto &row = currentRow(kRefusals);
        selectCar(row.model);
        ServiceTest test;
        const LogCapture log;
        test.service.sendAcKey(row.key, 9);
        QStringList writers;
        for (const LogCapture::Line &line : log.lines())
            if (line.text.endsWith(
                    QStringLiteral("-- Function not supported,KEY =  %1").arg(row.key)))
                writers << QString(line.function).section("SimpleService::", 1).section('(', 0, 0);
        QCOMPARE(writers.join(' '), row.writers);
        QCOMPARE(log.items().first(), QStringLiteral("%1 %1 9").arg(row.key));
    }
};

QTEST_GUILESS_MAIN(ClimateKeysTest)
#include "tst_climatekeys.moc"
