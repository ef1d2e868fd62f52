// Ambient light: the box's report, and the host's keys that start from it.
#include "servicetest.h"

namespace {

// "colour level"
QString ambientOf(ServiceTest &test)
{
    const AmbientLightData ambient = test.service.getCarSettingData().ambient;
    return QString::asprintf("%d %d", ambient.colour, ambient.level);
}

// The host's index of each box code, and the frame of each code at level 12.
constexpr int kOwn[8] = {7, 6, 1, 5, 3, 0, 2, 4};
constexpr int kCommon[8] = {7, 1, 3, 2, 4, 5, 0, 6};
const QString kFrameOfCode[8] = {"2ec502003cfc !", "2ec502013cfb !", "2ec502023cfa !",
                                 "2ec502033cf9 !", "2ec502043cf8 !", "2ec502053cf7 !",
                                 "2ec502063cf6 !", "2ec502073cf5 !"};

// A key that follows a report.
const struct
{
    const char *name, *report;
    int key, value;
    const char *frame;
} kKeys[] = {
    {"up from the lowest", "0600", 4, 1, "2ec50206052d !"},
    {"a level in part counts as none", "0604", 4, 1, "2ec50206052d !"},
    {"up to the highest", "0663", 4, 1, "2ec5020664ce !"},
    {"not above the highest", "0664", 4, 1, ""},
    {"not up from beyond", "06ff", 4, 1, ""},
    {"down to the lowest", "0605", 4, -1, "2ec502060032 !"},
    {"not below the lowest", "0604", 4, -1, ""},
    {"down from beyond", "06ff", 4, -1, "2ec50206fa38 !"},
    {"no step", "0632", 4, 0, ""},
    {"two steps up", "0632", 4, 2, ""},
    {"two steps down", "0632", 4, -2, ""},
    {"a colour keeps a level beyond", "02ff", 5, 0, "2ec50206ff33 !"},
    {"key 0", "0632", 0, 1, ""},
    {"key 260 is not key 4", "0632", 260, 1, ""},
};

} // namespace

class AmbientTest : public QObject
{
    Q_OBJECT

private slots:
    void everyModelHasItsPalette()
    {
        for (const int model : kModels) {
            const auto &indexOfCode = model >= 97 && model <= 102 ? kOwn : kCommon;
            selectCar(model);
            ServiceTest test;
            for (int byte = 0; byte < 256; ++byte) {
                const QByteArray payload = QByteArray(1, static_cast<char>(byte)) + '\x3e';
                QCOMPARE(test.dispatch(0x61, payload), "sigAmbientChanged");
                const int code = byte & 0x7F; // Bit 7 does not matter.
                const int index = code < 8 ? indexOfCode[code] : 0;
                QVERIFY2(ambientOf(test) == QString::asprintf("%d 12", index),
                         QByteArray::number(model));
            }
            for (int key = 0; key < 15; ++key) {
                constexpr int kNone[] = {8, -1, 255, 256, 263, INT_MIN, INT_MAX};
                const int index = key < 8 ? indexOfCode[key] : kNone[key - 8];
                QCOMPARE(test.service.sendCarSettingKey(5, index), 0);
                QCOMPARE(test.taken(), kFrameOfCode[key < 8 ? key : 0]);
            }
        }
    }

    void keys_data() { addRows(kKeys); }
    void keys()
    {
        const auto &row = currentRow(kKeys);
        selectCar(40);
        ServiceTest test;
        test.dispatch(0x61, hex(row.report));
        const QString before = ambientOf(test);
        for (int press = 0; press < 2; ++press) { // Both start from the report.
            const LogCapture log;
            QCOMPARE(test.service.sendCarSettingKey(row.key, row.value), 0);
            QCOMPARE(test.taken(), row.frame);
            QCOMPARE(ambientOf(test), before);
            QCOMPARE(log.items().first(),
                     QString::asprintf("ggggggggggg %d %d", row.key, row.value));
        }
    }

    // The record's defaults are 255: the level is sent in 8 bits, the colour is in no palette.
    void beforeAnyReport()
    {
        selectCar(100);
        ServiceTest test;
        QCOMPARE(ambientOf(test), "255 255");
        test.service.sendCarSettingKey(4, 1);
        test.service.sendCarSettingKey(4, -1);
        test.service.sendCarSettingKey(5, 7);
        QCOMPARE(test.taken(), "2ec50200f642 !, 2ec50200fb3d !");
        test.service.start();
        QCOMPARE(ambientOf(test), "0 0");
        test.take();
        test.service.sendCarSettingKey(4, 1);
        QCOMPARE(test.taken(), "2ec50205052e !");
    }
};

QTEST_GUILESS_MAIN(AmbientTest)
#include "tst_ambient.moc"
