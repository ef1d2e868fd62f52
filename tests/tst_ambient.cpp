// Ambient light: the box's report, and the host's keys that start from it.
#include "servicetest.h"

namespace {

// "colour level"
QString ambientOf(ServiceTest &test)
{
    const AmbientLightData ambient = test.service.getCarSettingData().ambient;
    return QString::asprintf("%d %d", ambient.colour, ambient.level);
}

// The host's index of each box code.
constexpr int kOwn[8] = {7, 6, 1, 5, 3, 0, 2, 4};
constexpr int kCommon[8] = {7, 1, 3, 2, 4, 5, 0, 6};

QString frame(int code, int level)
{
    return QString::asprintf("2ec502%02x%02x%02x !", code, level, (0x38 - code - level) & 0xFF);
}

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
                QCOMPARE(test.taken(), frame(key < 8 ? key : 0, 60));
            }
        }
    }

    // A level is five of the box's steps, those in part do not count, and 20 is the highest. Every
    // key starts from the report and leaves it alone.
    void keysFollowTheReport()
    {
        constexpr int kCodes[] = {0, 0, 6, 1, 3}; // Of the indices from -2 on; 6 is reported.
        selectCar(40);
        ServiceTest test;
        for (int byte = 0; byte < 256; ++byte) {
            test.dispatch(0x61, QByteArray(1, '\6') + static_cast<char>(byte));
            const QString before = ambientOf(test);
            const int level = byte / 5;
            for (const int key : {0, 3, 4, 5, 6, 260}) {
                for (int value = -2; value <= 2; ++value) {
                    const LogCapture log;
                    QCOMPARE(test.service.sendCarSettingKey(key, value), 0);
                    const bool steps = (value == 1 && level < 20) || (value == -1 && level > 0);
                    QCOMPARE(test.taken(), key == 5            ? frame(kCodes[value + 2], level * 5)
                                           : key == 4 && steps ? frame(6, (level + value) * 5)
                                                               : QString(""));
                    QCOMPARE(ambientOf(test), before);
                    QCOMPARE(log.items().first(),
                             QString::asprintf("ggggggggggg %d %d", key, value));
                }
            }
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
    }
};

QTEST_GUILESS_MAIN(AmbientTest)
#include "tst_ambient.moc"
