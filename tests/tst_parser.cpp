// The receive parser: the same bytes in every chunking, then the parse-out timer.
#include "servicetest.h"

#include <climits>
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

const QStringList kTaken{kGood, kAlive};
const QStringList kVersion{kGood, kAlive, "sigVersionData", kAlive};

const struct
{
    const char *name;
    QByteArray bytes;
    QStringList events;
    QString version;
} kStreams[] = {
    {"the receipt comes before the link signal, and that before the handler's",
     hex("2e240708000000000000cc"), kTaken + QStringList{"doorChanged"}, ""},
    {"a type that nobody handles", hex("2e250105d4"), kTaken, ""},
    {"a length that the handler refuses", hex("2e210105d8"), kTaken, ""},
    {"bad checksum", hex("2e210105d9"), {kBad}, ""},
    {"no frame at all", hex("00ff2f"), {}, ""},
    {"0x2E as type, length and payload", hex("2e2e2e") + QByteArray(46, '\x2e') + hex("5f"), kTaken,
     ""},
    {"0x2E as checksum", hex("2e2e022e732e"), kTaken, ""},
    {"0x2E as bad checksum opens no frame", hex("2e2501052e 250105d4"), {kBad}, ""},
    {"text up to its first zero byte", hex("2e300656312e320041a1"), kVersion, "V1.2"},
    {"text of nothing", hex("2e300300414249"), kVersion, ""},
    {"text in UTF-8", hex("2e3002c3a466"), kVersion, "\u00E4"},
    {"the longest payload", hex("2e30ff") + QByteArray(255, 'A') + hex("11"), kVersion,
     QString(255, 'A')},
    {"back to back, a bad one between", hex("2e3002563146 2e250105d5 2e3002563245"),
     kVersion + QStringList{kBad} + kVersion, "V2"},
};

} // namespace

class ParserTest : public QObject
{
    Q_OBJECT

private slots:
    void framesComeOutOfAnyChunks_data() { addRows(kStreams); }
    void framesComeOutOfAnyChunks()
    {
        const auto &row = currentRow(kStreams);
        for (const QList<QByteArray> &chunks : feeds(row.bytes)) {
            ServiceTest test;
            LogCapture silence(false);
            for (const QByteArray &chunk : chunks)
                test.receive(chunk);
            QCOMPARE(test.take(), row.events);
            QCOMPARE(test.probe.parseState, 0);
            QCOMPARE(test.service.version(), row.version);
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
        canservice::LazyTimer &parseOut = test.probe.parseOut;
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

    void typesBeyondAByteHaveNoHandler()
    {
        ServiceTest test;
        for (const int type : {-1, 0x121, INT_MIN + 0x21})
            QCOMPARE(test.dispatch(type, QByteArray(10, '\1')), "");
    }
};

QTEST_GUILESS_MAIN(ParserTest)
#include "tst_parser.moc"
