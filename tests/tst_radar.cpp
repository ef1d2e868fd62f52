// Park-assist radar: both bumpers, both kinds of frames, the bands.
#include "servicetest.h"

namespace {

constexpr int kOneCode = 5;  // A model whose frames carry a code per sensor,
constexpr int kTwoCodes = 1; // and one with two.

// Front, then rear, from left to right.
QString distances(canservice::SimpleService &s)
{
    return QString::asprintf("%d %d %d %d, %d %d %d %d", s.getFrontRadarLeftDistance(),
                             s.getFrontRadarMiddleLeftDistance(),
                             s.getFrontRadarMiddleRightDistance(), s.getFrontRadarRightDistance(),
                             s.getRearRadarLeftDistance(), s.getRearRadarMiddleLeftDistance(),
                             s.getRearRadarMiddleRightDistance(), s.getRearRadarRightDistance());
}

// One byte of a pair is the nearest, beside a partner that must not show.
const struct
{
    const char *name, *payload, *rear, *front; // What each bumper tells for it.
} kPairs[] = {
    {"unsigned, and nothing beats an obstacle", "80190001fe80031f", "255 5 255 2", "2 5 255 7"},
    {"the nearer ones in even bytes", "0119021908190e19", "3 1 2 4", "4 1 2 3"},
    {"the nearer ones in odd bytes", "190119021908190e", "3 1 2 4", "3 1 2 4"},
};

} // namespace

class RadarTest : public QObject
{
    Q_OBJECT

private slots:
    void pairs_data() { addRows(kPairs); }
    void pairs()
    {
        const auto &row = currentRow(kPairs);
        selectCar(kTwoCodes);
        for (const bool started : {false, true}) {
            ServiceTest test;
            if (started)
                test.service.start();
            QCOMPARE(distances(test.service), "255 255 255 255, 255 255 255 255");
            QCOMPARE(test.dispatch(0x22, hex(row.payload)), "sigRadarChanged");
            QCOMPARE(distances(test.service), QString("255 255 255 255, ") + row.rear);
            QCOMPARE(test.dispatch(0x23, hex(row.payload)), "sigRadarChanged");
            QCOMPARE(distances(test.service), QString(row.front) + ", " + row.rear);
        }
    }

    void bands()
    {
        const QMap<int, int> firstCodes{{0, 255}, {1, 1},  {2, 2},  {8, 3},
                                        {14, 4},  {20, 5}, {26, 7}, {32, 255}};
        selectCar(kOneCode);
        ServiceTest test;
        int expected = 0;
        for (int code = 0; code < 256; ++code) {
            expected = firstCodes.value(code, expected);
            const QByteArray payload = QByteArray(4, static_cast<char>(code)) + hex("01010101");
            test.dispatch(0x22, payload);
            test.dispatch(0x23, payload);
            const QString four = QString("%1 %1 %1 %1").arg(expected);
            QCOMPARE(distances(test.service), four + ", " + four);
        }
    }

    void signalsChangesOnly()
    {
        const QString changed = "sigRadarChanged";
        selectCar(kOneCode);
        ServiceTest test;
        QCOMPARE(test.dispatch(0x22, hex("0202020200000000")), changed);
        test.service.start(); // Restarts leave the levels alone, but every start adds positions.
        test.service.stop();
        test.service.start();
        QCOMPARE(test.probe.radarData.size(), 3 * 19);
        QCOMPARE(test.dispatch(0x22, hex("0202020200000000")), "");
        QCOMPARE(test.dispatch(0x22, hex("0203070205060708")), ""); // Other codes, same bands.
        QCOMPARE(test.dispatch(0x22, hex("0202020800000000")), changed);
        QCOMPARE(test.dispatch(0x23, hex("0000000000000000")), "");
        QCOMPARE(test.dispatch(0x23, hex("1a1b1c1d00000000")), changed);
        selectCar(kTwoCodes); // The same bytes mean something else to another model.
        QCOMPARE(test.dispatch(0x23, hex("1a1b1c1d00000000")), changed);
        QCOMPARE(distances(test.service), "255 7 7 255, 2 2 2 3");
    }

    void modelsWithTwoCodesPerSensor()
    {
        const QVector<int> models = ids("1 11 27 30 35 39 47 51 55 58 65 68-69 76 79 82 86 92 "
                                        "97-98 111-112 119");
        ServiceTest test;
        for (const int model : kModels) {
            selectCar(model);
            QVERIFY2(test.service.isHighEnd() == models.contains(model), QByteArray::number(model));
        }
    }
};

QTEST_GUILESS_MAIN(RadarTest)
#include "tst_radar.moc"
