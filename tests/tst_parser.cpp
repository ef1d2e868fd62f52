// The receive parser: the same bytes in every chunking, then the parse-out timer and re-entrance.
#include "serviceprobe.h"

#include <thread>

namespace {

const QString kGood = "ff !";
const QString kBad = "f0 !";
const QString kAlive = "notifyCanbusStatus 3";

// The bytes in one chunk, after noise, byte by byte, and split at every place.
QList<QList<QByteArray>> feeds(const QByteArray &bytes)
{
    QList<QByteArray> single;
    QList<QList<QByteArray>> all{{bytes}, {hex("00ff41f0"), bytes}, {hex("00ff41f0") + bytes}};
    for (int place = 0; place < bytes.size(); ++place) {
        single << bytes.mid(place, 1);
        all << QList<QByteArray>{bytes.left(place), bytes.mid(place)};
    }
    return all << single;
}

} // namespace

class ParserTest : public QObject
{
    Q_OBJECT

private slots:
    void framesComeOutOfAnyChunks_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("version");

        const QStringList good{kGood, kAlive};
        const QStringList version{kGood, kAlive, "sigVersionData", kAlive};
        const QByteArray longest = hex("2e30ff") + QByteArray(255, 'A') + hex("11");

        QTest::newRow("the receipt comes before the link signal, and that before the handler's")
            << hex("2e240708000000000000cc") << QStringList{kGood, kAlive, "doorChanged"} << 0
            << "";
        QTest::newRow("a type that nobody handles") << hex("2e250105d4") << good << 0 << "";
        QTest::newRow("a length that the handler refuses") << hex("2e210105d8") << good << 0 << "";
        QTest::newRow("bad checksum") << hex("2e210105d9") << QStringList{kBad} << 0 << "";
        QTest::newRow("no frame at all") << hex("00ff2f") << QStringList() << 0 << "";
        QTest::newRow("0x2E as type, length and payload")
            << hex("2e2e2e") + QByteArray(46, '\x2e') + hex("5f") << good << 0 << "";
        QTest::newRow("0x2E as checksum") << hex("2e2e022e732e") << good << 0 << "";
        QTest::newRow("0x2E as bad checksum opens no frame")
            << hex("2e2501052e 250105d4") << QStringList{kBad} << 0 << "";
        QTest::newRow("text up to its first zero byte")
            << hex("2e300656312e320041a1") << version << 0 << "V1.2";
        QTest::newRow("text of nothing") << hex("2e300300414249") << version << 0 << "";
        QTest::newRow("text in UTF-8") << hex("2e3002c3a466") << version << 0 << "\u00E4";
        QTest::newRow("the longest payload") << longest << version << 0 << QString(255, 'A');
        QTest::newRow("back to back, a bad one between, the last one open")
            << hex("2e3002563146 2e250105d5 2e3002563245 2e3002")
            << version + QStringList{kBad} + version << 4 << "V2";
    }
    void framesComeOutOfAnyChunks()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, events);
        QFETCH(int, state);
        QFETCH(QString, version);

        for (const QList<QByteArray> &chunks : feeds(bytes)) {
            ServiceTest test;
            LogCapture silence(false);
            for (const QByteArray &chunk : chunks)
                test.receive(chunk);
            QCOMPARE(test.take(), events);
            QCOMPARE(test.probe.parseState, state);
            QCOMPARE(test.service.version(), version);
            QVERIFY(!test.service.version().isNull());
        }
    }

    void lengthZeroStaysOpenAndDoesNotGrow()
    {
        ServiceTest test;
        test.receive(hex("2e2100de"));
        test.receive(QByteArray(100000, '\x2e'));
        test.receive(hex("2e250105d4"));
        QCOMPARE(test.take(), QStringList());
        QCOMPARE(test.probe.parseState, 4);
        QCOMPARE(test.probe.recvPayload.size(), 0);
        QVERIFY(test.probe.parseOut.isActive());

        test.timeout("onmParseOutTmrout");
        test.receive(hex("2e250105d4"));
        QCOMPARE(test.take(), QStringList({kGood, kAlive}));
    }

    void onlyAChunkThatFindsAFrameOpenArmsParseOut()
    {
        ServiceTest test;
        LazyTimer &parseOut = test.probe.parseOut;
        connect(&test.service, &CanServiceBase::notifyCanbusStatus, this,
                [&parseOut] { QVERIFY2(!parseOut.isActive(), "the link signal came first"); });
        test.receive(hex("ff00"));
        test.receive(hex("2e250105d4"));
        test.receive(hex("2e25"));
        QVERIFY(!parseOut.isActive());
        test.receive(hex("02"));
        QVERIFY(parseOut.isActive());

        while (parseOut.remainingTime() > 490)
            std::this_thread::yield(); // Not the event loop, which might run the time-out.
        const int rest = parseOut.remainingTime();
        test.receive(hex("01"));
        QVERIFY2(parseOut.remainingTime() <= rest, "a running timer was restarted");
        test.receive(hex("0200 2e250105")); // A bad checksum leaves it running.
        QCOMPARE(test.take(), QStringList({kGood, kAlive, kBad}));
        QVERIFY(parseOut.isActive());
        test.receive(hex("d4"));
        QCOMPARE(test.take(), QStringList({kGood, kAlive}));
        QVERIFY(!parseOut.isActive());
    }

    void parseOutDropsTheOpenFrame()
    {
        for (const char *open : {"2e", "2e25", "2e2501", "2e250105"}) {
            ServiceTest test;
            test.receive(hex(open));
            test.timeout("onmParseOutTmrout");
            QCOMPARE(test.probe.parseState, 0);
            test.receive(hex("2e210105d8"));
            QCOMPARE(test.take(), QStringList({kGood, kAlive}));
        }
    }

    void hostSlotMayLetTheNextFrameIn()
    {
        ServiceTest test;
        auto once = std::make_shared<QMetaObject::Connection>();
        *once = connect(&test.service, &CanServiceBase::notifyCanbusStatus, this, [&test, once] {
            disconnect(*once);
            test.receive(hex("2e240708000000000000cc"));
        });
        test.receive(hex("2e210a00002500000000000000af 2e3002563146"));
        QCOMPARE(test.take(),
                 QStringList({kGood, kAlive, kGood, kAlive, "doorChanged", "acStatusChanged", kGood,
                              kAlive, "sigVersionData", kAlive}));
        QVERIFY(test.service.isRearDoorOpen());
        QCOMPARE(test.service.getAcTemperature(), 18.5F);
        QCOMPARE(test.service.version(), QString("V1"));
    }

    void hostSlotMayLetHalfAFrameIn()
    {
        ServiceTest test;
        const auto connection = connect(&test.service, &CanServiceBase::acStatusChanged, this,
                                        [&test] { test.receive(hex("2e2407080000")); });
        test.receive(hex("2e210a00002500000000000000af"));
        disconnect(connection);
        QCOMPARE(test.probe.parseState, 4);
        test.receive(hex("00000000cc"));
        QCOMPARE(test.take(),
                 QStringList({kGood, kAlive, "acStatusChanged", kGood, kAlive, "doorChanged"}));
        QCOMPARE(test.service.getAcTemperature(), 18.5F);
    }
};

QTEST_GUILESS_MAIN(ParserTest)
#include "tst_parser.moc"
