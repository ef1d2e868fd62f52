// The host's climate keys as frames to the box.
#include "servicetest.h"

namespace {

// The command of each climate key from 0; 00 is the zero command alone, which older controls do not
// send for it.
const char kCommands[] = "01000204181703030506080a2022211e1f00001a1b1c1d0000070900000b00..00001100";
constexpr int kCyclingKey = 31;
const QVector<int> kUnknownKeys{-1, 32, 33, 35, 64, 128, 256, INT_MAX, INT_MIN};

// Models by what they can: the keys that they lack, and what the cycling key sends in each raw wind
// mode. Those that lack none have the newer control.
const struct ModelGroup
{
    const char *models, *lacking, *cycle;
} kGroups[] = {
    {"14", "8 10-11 25-26 29", "2221202222222525"},
    {"16", "34", "2525202325252525"},
    {"17", "34", "2525202222222525"},
    {"19-20", "29", "2221202222222525"},
    {"85", "29", "2525202325252525"},
    {"22", "0 2 5-11 25-26 29 34", "2525202325252525"},
    {"24-25 91-95", "29 34", "2221202222222525"},
    {"45 107", "4-5 8-11 25-26 29 34", "2221202222222525"},
    {"68-73", "10-11 21-22 29 34", "2525202325252525"},
    {"74-75", "8 34", "2221202222222525"},
    {"97-102", "4 29 34", "2221222222222525"},
    {"1-3 6-7 15 18 21 23 30-32 35-38 42-44 46 76-84 90 96 103 105-106 109-117 119-121", "",
     "2221202325222222"},
    {"", "0-35", "................"}, // All others.
};

QString frame(int command)
{
    return QString::asprintf("2ec603ac%02x00%02x", command, 0x8A - command);
}

// What a key sends: its command, if it has one, and the zero command, which releases it.
QString frames(const ModelGroup &group, int key, int windMode)
{
    const int known = kUnknownKeys.contains(key) ? 35 : key;
    const QByteArray digits = key == kCyclingKey ? QByteArray(group.cycle).mid(2 * windMode, 2)
                                                 : QByteArray(kCommands).mid(2 * known, 2);
    const int command = digits.toInt(nullptr, 16);
    if (ids(group.lacking).contains(known) || (command == 0 && *group.lacking))
        return QString();
    return command == 0 ? frame(0) : frame(command) + ", " + frame(0);
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
            const auto check = [&](int key, int windMode) {
                test.service.sendAcKey(key, key % 7); // The value changes nothing.
                const auto where = QStringLiteral("model %1, key %2: ").arg(model).arg(key);
                QCOMPARE(where + test.taken(), where + frames(*group, key, windMode));
                QCOMPARE(test.probe.acKey, key);
            };
            for (int mode = 7; mode >= 0; --mode) {
                QByteArray climate(10, '\xff');
                climate[1] = static_cast<char>(mode << 5 | 0x1F);
                test.dispatch(0x21, climate);
                check(kCyclingKey, mode);
            }
            for (const int key : ids("0-35") + kUnknownKeys)
                check(key, 0);
        }
        selectCar(1);
        test.service.sendAcSet(1, 2);
        QCOMPARE(test.taken(), "2ec603ac010287");
    }

    // By sendAcKey() those that it does not know, by isSupportAcCtrl() those that are in no list,
    // at the zero command.
    void refusalsAreLogged()
    {
        ServiceTest test;
        for (const int model : {1, 14, 16}) {
            selectCar(model);
            for (int key = -1; key < 36; ++key) {
                const LogCapture log;
                test.service.sendAcKey(key, 9);
                QStringList writers;
                for (const LogCapture::Line &line : log.lines())
                    if (line.text.endsWith(
                            QStringLiteral("-- Function not supported,KEY =  %1").arg(key)))
                        writers << QString(line.function).section("SimpleService::", 1);
                QStringList expected;
                if (kUnknownKeys.contains(key))
                    expected << "sendAcKey(int, int)";
                if (model != 1 && (key == 1 || key == 30 || kUnknownKeys.contains(key)))
                    expected << "isSupportAcCtrl(int)";
                QCOMPARE(writers, expected);
                QCOMPARE(log.items().first(), QStringLiteral("%1 %1 9").arg(key));
            }
        }
    }
};

QTEST_GUILESS_MAIN(ClimateKeysTest)
#include "tst_climatekeys.moc"
