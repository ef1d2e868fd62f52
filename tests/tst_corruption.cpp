// No corrupt frame is taken: each byte of a frame of each type is replaced by every other value.
// The single-bit flips are among them.
#include "serviceprobe.h"

#include "getters.h"

class CorruptionTest : public QObject
{
    Q_OBJECT

private slots:
    // A line per byte would be the most of the test.
    void initTestCase() { QLoggingCategory::setFilterRules("default*=false"); }
    // No length byte below the true one finds its checksum by chance, and the head's value occurs
    // as head alone: what follows a broken frame is noise.
    void replacedByteChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QString>("effect");
        QTest::newRow("steering-wheel key") << hex("2e20020501d7") << "keyEvent 5 0 true";
        QTest::newRow("climate") << hex("2e210ac8852930a8000000620024") << "acStatusChanged";
        QTest::newRow("rear radar") << hex("2e2208141a001f0000000088") << "sigRadarChanged";
        QTest::newRow("front radar") << hex("2e23080102080e00000000bb") << "sigRadarChanged";
        QTest::newRow("doors") << hex("2e2407a80000000000002c") << "doorChanged";
        QTest::newRow("unit settings") << hex("2e2802720162") << "unitDataChanged";
        QTest::newRow("version") << hex("2e30055631323500dc")
                                 << "sigVersionData,notifyCanbusStatus 3";
        QTest::newRow("ambient light") << hex("2e6102053c5b") << "sigAmbientChanged";
        QTest::newRow("vehicle information 1")
            << hex("2e631201020303e7955501020304000000001207008d")
            << "drivingDataChanged,drivingDataChanged,drivingDataChanged,tireDataChanged,tireAlert";
        QTest::newRow("vehicle information 2")
            << hex("2e6905fe000000ff94") << "drivingDataChanged,batteryVoltageChange";
    }
    void replacedByteChangesNothing()
    {
        QFETCH(QByteArray, frame);
        QFETCH(QString, effect);
        constexpr int kLengthAt = 2;
        const quint8 length = canbox::byteAt(frame, kLengthAt);

        ServiceTest test;
        test.service.start();
        test.take();
        const bench::Snapshot before(test.service);
        const int keyBefore = test.probe.currentKey;

        for (int place = 0; place < frame.size(); ++place) {
            for (int value = 0; value < 256; ++value) {
                if (value == canbox::byteAt(frame, place))
                    continue;
                QByteArray corrupt = frame;
                corrupt[place] = static_cast<char>(value);
                test.receive(corrupt);

                // A wrong head is noise; a length that is 0 or too great waits for bytes that do
                // not come; anything else is a wrong checksum.
                const bool noise = place == 0;
                const bool open = place == kLengthAt && (value == 0 || value > length);
                const QStringList receipt = noise || open ? QStringList() : QStringList("f0 !");
                const QByteArray what =
                    "byte " + QByteArray::number(place) + " as " + QByteArray::number(value);
                QVERIFY2(test.take() == receipt, what);
                QVERIFY2((test.probe.parseState != 0) == open, what);
                QVERIFY2(bench::Snapshot(test.service).changesSince(before).isEmpty(), what);
                QVERIFY2(test.probe.currentKey == keyBefore, what);
                test.timeout("onmParseOutTmrout");
            }
        }

        test.receive(frame);
        QCOMPARE(test.take().join(','), "ff !,notifyCanbusStatus 3," + effect);
        QVERIFY(!bench::Snapshot(test.service).changesSince(before).isEmpty() ||
                test.probe.currentKey != keyBefore);
    }

    void whatTheSumCannotSeeIsLeftToTheHandlers()
    {
        ServiceTest test;
        const bench::Snapshot before(test.service);

        // Length 18 arrives as 13, and the byte after the 13th happens to be the sum: the frame
        // counts as good, and its length alone keeps it out.
        test.receive(hex("2e630d01020303e795000102030400000000120700e2"));
        QCOMPARE(test.take(), QStringList({"ff !", "notifyCanbusStatus 3"}));
        QVERIFY(bench::Snapshot(test.service).changesSince(before).isEmpty());

        // Two errors that cancel out, here two bytes that changed places, are beyond any sum.
        test.receive(hex("2e6102053c5b"));
        test.receive(hex("2e61023c055b"));
        QCOMPARE(test.take().count("ff !"), 2);
        QCOMPARE(int(test.service.getCarSettingData().ambient.level), 1);
    }
};

QTEST_GUILESS_MAIN(CorruptionTest)
#include "tst_corruption.moc"
