// The climate frame: every getter over it, and the set temperatures.
#include "servicetest.h"

using canservice::SimpleService;

namespace {

// The flags that are set, a letter each: power off, air conditioning, inside air, automatic, dual,
// rear defrost, rear climate, front defrost, wheel heat, maximum. Then wind mode and scale, heat
// and ventilation of the left and of the right seat.
QString climateOf(SimpleService &s)
{
    const bool flags[] = {s.isPowerOff(),  s.isAc(),          s.isInside(),      s.isAuto(),
                          s.isDual(),      s.isRearDefrost(), s.isRearClimate(), s.isFrontDefrost(),
                          s.isAcSwcHeat(), s.isAcMax()};
    QString text;
    for (std::size_t i = 0; i < std::size(flags); ++i)
        text += flags[i] ? QString("paiudrcfwm"[i]) : QString();
    return text + QString::asprintf(" %d %d %d%d %d%d", s.getAcWindMode(), s.getAcWindScale(),
                                    s.getAcFrontLeftHeat(), s.getLeftVentilation(),
                                    s.getAcFrontRightHeat(), s.getRightVentilation());
}

const Case kFrames[] = {
    {"nothing is on", "00000000000000000000", "d 0 0 00 00"},
    {"power is off", "80000000000000000000", "pd 0 0 00 00"},
    {"air conditioning", "40000000000000000000", "ad 0 0 00 00"},
    {"inside air", "20000000000000000000", "id 0 0 00 00"},
    {"automatic", "08000000000000000000", "ud 0 0 00 00"},
    {"not dual", "04000000000000000000", " 0 0 00 00"},
    {"rear defrost", "01000000000000000000", "dr 0 0 00 00"},
    {"rear climate", "00000000800000000000", "dc 0 0 00 00"},
    {"front defrost", "00000000200000000000", "df 0 0 00 00"},
    {"wheel heat", "00000000080000000000", "dw 0 0 00 00"},
    {"maximum", "00000000040000000000", "dm 0 0 00 00"},
    {"bits that nobody reads", "1218ffff53ffffff00ff", "d 0 0 00 00"},
    {"every bit", "ffffffffffffffffffff", "paiurcfwm 6 7 00 00"},
    {"wind 0; left ventilation 1, right heat 1", "00000000000000004100", "d 0 0 01 10"},
    {"wind 1; left ventilation 2, right heat 2", "00210000000000005200", "d 2 1 02 20"},
    {"wind 2; left ventilation 3, right heat 3", "00420000000000006300", "d 1 2 03 30"},
    {"wind 3; left heat 1, right ventilation 1", "00630000000000001400", "d 3 3 10 01"},
    {"wind 4; left heat 2, right ventilation 2", "00840000000000002500", "d 7 4 20 02"},
    {"wind 5; left heat 3, right ventilation 3", "00a50000000000003600", "d 5 5 30 03"},
    {"wind 6; seat code 7 does neither", "00c60000000000007700", "d 4 6 00 00"},
    {"wind 7; seat codes 8 and 15 do neither", "00e0000000000000f800", "d 6 0 00 00"},
};

// The code, and its temperature in Celsius and in Fahrenheit.
const Case kTemperatures[] = {
    {"lowest", "00", "-100 -100"},        {"above lowest", "01", "-1 -1"},
    {"below first", "1e", "-1 -1"},       {"first", "1f", "15.5 59.9000015"},
    {"in the middle", "2d", "22.5 72.5"}, {"one more", "2e", "23 73.4000015"},
    {"last", "3b", "29.5 85.0999985"},    {"above last", "3c", "-1 -1"},
    {"below highest", "7e", "-1 -1"},     {"highest", "7f", "-101 -101"},
    {"above highest", "80", "-1 -1"},     {"none", "ff", "-1 -1"},
};

} // namespace

class ClimateTest : public QObject
{
    Q_OBJECT

private slots:
    void startsWithZeros()
    {
        ServiceTest test;
        QCOMPARE(climateOf(test.service), "d 0 0 00 00");
        QCOMPARE(test.service.getAcTemperature(), -100.0F);
        QCOMPARE(test.service.getAcRightTemperatureUnit(), "\u00B0C");
    }

    void frame_data() { addRows(kFrames); }
    void frame()
    {
        const auto &row = currentRow(kFrames);
        ServiceTest test;
        test.dispatch(0x21, hex("55aaaa55aa55aaaa2255"));
        for (int repetition = 0; repetition < 2; ++repetition) {
            QCOMPARE(test.dispatch(0x21, hex(row.given)), "acStatusChanged");
            QCOMPARE(climateOf(test.service), row.expected);
            test.service.start(); // Restarts leave the climate alone.
            test.service.stop();
        }
    }

    void temperature_data() { addRows(kTemperatures); }
    void temperature()
    {
        const auto &row = currentRow(kTemperatures);
        const char code = hex(row.given).at(0);
        ServiceTest test;
        for (const bool fahrenheit : {false, true}) {
            const QString expected = QString(row.expected).section(' ', fahrenheit, fahrenheit);
            QByteArray payload = hex(fahrenheit ? "00007f00400000000000" : "00007f00bf0000000000");
            payload[3] = code;
            test.dispatch(0x21, payload);
            const LogCapture log;
            QCOMPARE(exact(test.service.getAcRightTemperature()), expected);
            QCOMPARE(exact(test.service.getAcTemperature()), "-101");
            payload.replace(2, 2, QByteArray(1, code) + '\0');
            test.service.doClimate(0x21, payload);
            QCOMPARE(exact(test.service.getAcTemperature()), expected);
            QCOMPARE(exact(test.service.getAcRightTemperature()), "-100");
            QCOMPARE(log.items().count("_____________0xFF____________"), code == '\xff' ? 2 : 0);

            const QString unit = fahrenheit ? "\u00B0F" : "\u00B0C";
            QCOMPARE(test.service.getAcTemperatureUnit(), unit);
            QCOMPARE(test.service.getAcRightTemperatureUnit(), unit);
        }
    }

    void windModeAndIndexAreLogged()
    {
        ServiceTest test;
        test.dispatch(0x21, hex("018003040506c8070809"));
        const LogCapture log;
        QCOMPARE(test.service.getAcWindMode(), 7);
        QCOMPARE(test.service.getAcTemperatureIndex(), 200);
        QCOMPARE(test.service.getAcRightTemperatureIndex(), 200);
        QCOMPARE(test.service.getAcRearTemperatureIndex(), 200);
        QCOMPARE(log.items(), QStringList({"4", "7", "200", "200", "200"}));
    }
};

QTEST_GUILESS_MAIN(ClimateTest)
#include "tst_climate.moc"
