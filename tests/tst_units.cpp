// Display units: the box's report, and the host's toggles.
#include "servicetest.h"

namespace {

// Value and text of the two settings; and the other entries when they are not what they began as.
QString unitsOf(ServiceTest &test)
{
    UnitData data;
    data.values = {9};
    if (test.service.getUnitData(data) != 0 || data.texts.size() != 6 || data.values.size() != 6)
        return "broken";
    QString text = QString::number(data.values[3]) + data.texts[3] + ' ' +
                   QString::number(data.values[5]) + data.texts[5];
    for (const int index : {0, 1, 2, 4})
        if (data.values[index] != 0 || data.texts[index] != "" || data.texts[index].isNull())
            text += " others";
    return data.reserved == QList<int>{0, 0, 0, 0, 0, 0} ? text : text + " first list";
}

} // namespace

class UnitsTest : public QObject
{
    Q_OBJECT

private slots:
    // Each report follows those of Fahrenheit and kPa; unknown settings and values change nothing.
    void reports()
    {
        const QStringList temperatures{"0\u00B0C", "1\u00B0F"}, pressures{"0psi", "1kPa", "2bar"};
        ServiceTest test;
        QCOMPARE(unitsOf(test), "0 0");
        for (const int setting : {0x72, 0x70, 0x00, 0x71, 0xF0, 0xF2}) {
            for (int value = 0; value < 256; ++value) {
                const QByteArray report =
                    QByteArray(1, static_cast<char>(setting)) + static_cast<char>(value);
                for (const QByteArray &payload : {hex("7201"), hex("7001"), report, report})
                    QCOMPARE(test.dispatch(0x28, payload), "unitDataChanged");
                test.service.start(); // Restarts leave the units alone.
                test.service.stop();
                QCOMPARE(unitsOf(test),
                         temperatures.value(setting == 0x72 ? value : 1, "1\u00B0F") + ' ' +
                             pressures.value(setting == 0x70 ? value : 1, "1kPa"));
            }
        }
    }

    // The value steps at once; text and signal wait for the box's report.
    void toggles()
    {
        ServiceTest test;
        test.dispatch(0x28, hex("7200"));
        test.dispatch(0x28, hex("7000"));
        const struct
        {
            int command;
            QString sent, units;
        } steps[] = {
            {3, "2ec9027201c1 !", "1\u00B0C 0psi"},
            {3, "2ec9027200c2 !", "0\u00B0C 0psi"},
            {5, "2ec9027001c3 !", "0\u00B0C 1psi"},
            {5, "2ec9027002c2 !", "0\u00B0C 2psi"},
            {5, "2ec9027000c4 !", "0\u00B0C 0psi"},
            {4, "", "0\u00B0C 0psi"},
            {-1, "", "0\u00B0C 0psi"},
        };
        for (const auto &step : steps) {
            test.service.setUnitCmd(step.command);
            QCOMPARE(test.taken(), step.sent);
            QCOMPARE(unitsOf(test), step.units);
        }
        QCOMPARE(test.dispatch(0x28, hex("7001")), "unitDataChanged");
        QCOMPARE(unitsOf(test), "0\u00B0C 1kPa");
    }
};

QTEST_GUILESS_MAIN(UnitsTest)
#include "tst_units.moc"
