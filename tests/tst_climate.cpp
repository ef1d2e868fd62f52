// The climate frame: every getter over it, and the set temperatures.
#include "servicetest.h"

namespace {

// The flags that are set, a letter each: power off, air conditioning, inside air, automatic, dual,
// rear defrost, rear climate, front defrost, wheel heat, maximum. Then wind mode and scale, heat
// and ventilation of the left and of the right seat.
QString climateOf(canservice::SimpleService &s)
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

// The same from the payload. The letters are those of bytes 0 and 4, from bit 7 down.
QString meaningOf(const QByteArray &payload)
{
    const quint8 *bytes = canbox::bytesOf(payload);
    const char letters[] = "pai.ud.rc.f.wm..";
    QString text;
    for (int i = 0; i < 16; ++i) {
        const bool set = (bytes[i < 8 ? 0 : 4] & 0x80 >> i % 8) != 0;
        if (letters[i] != '.' && set != (letters[i] == 'd')) // Dual is a zero.
            text += letters[i];
    }
    const char heat[] = "0000123000000000", ventilation[] = "0123000000000000";
    const int left = bytes[8] & 15, right = bytes[8] >> 4;
    return text + QString::asprintf(" %c %d %c%c %c%c", "02137546"[bytes[1] >> 5], bytes[1] & 7,
                                    heat[left], ventilation[left], heat[right], ventilation[right]);
}

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

    void everyBitHasItsMeaning()
    {
        ServiceTest test;
        for (int place = 0; place < 10; ++place) {
            for (int byte = 0; byte < 512; ++byte) {
                QByteArray payload(10, byte < 256 ? '\0' : '\xff');
                payload[place] = static_cast<char>(byte & 0xFF);
                QCOMPARE(test.dispatch(0x21, payload), "acStatusChanged");
                QCOMPARE(climateOf(test.service), meaningOf(payload));
            }
        }
        const QString before = climateOf(test.service);
        test.service.start(); // Restarts leave the climate alone.
        test.service.stop();
        QCOMPARE(climateOf(test.service), before);
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
