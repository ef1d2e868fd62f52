// Frames: read from the same bytes in every chunking, and built at their limits.
#include "servicetest.h"

#include <numeric>

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

const QStringList kVersion{kGood, kAlive, "sigVersionData", kAlive};

const struct
{
    const char *name;
    QByteArray bytes;
    QStringList events;
    QString version;
} kStreams[] = {
    {"the receipt comes before the link signal, and that before the handler's",
     hex("2e240708000000000000cc"),
     {kGood, kAlive, "doorChanged"},
     ""},
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

    // Each byte in each state of the parser, and with each number of payload bytes to come: what is
    // expected follows from the open frame's own bytes. The data type is one that nobody handles.
    void everyByteInEveryState()
    {
        const LogCapture silence(false);
        ServiceTest test;
        int cases = 0;
        const auto check = [&](const QByteArray &open) {
            for (int byte = 0; byte < 256; ++byte, ++cases) {
                test.receive(open);
                test.take();
                const QByteArray now = open + static_cast<char>(byte);
                test.receive(now.right(1));

                const int length = now.size() > 2 ? canbox::byteAt(now, 2) : 0;
                const bool ends = length > 0 && now.size() == length + 4;
                const int sum =
                    std::accumulate(canbox::bytesOf(now) + 1, canbox::bytesOf(now) + now.size(), 0);
                const int states[] = {0, 3, 2, 4}; // By the bytes of the open frame.
                const bool noise = now.size() == 1 && byte != 0x2e;
                const int state = noise || ends ? 0
                                  : length > 0 && now.size() == length + 3
                                      ? 5
                                      : states[qMin(now.size(), 3)];
                QCOMPARE(test.taken(), !ends ? "" : sum % 256 == 255 ? "ff !, " + kAlive : kBad);
                QCOMPARE(test.probe.parseState, state);
                QVERIFY(state != 4 || (test.probe.recvRemain == qMax(0, length + 3 - now.size()) &&
                                       test.probe.recvPayload.size() == length));
                test.timeout("onmParseOutTmrout");
                QCOMPARE(test.probe.parseState, 0);
            }
        };
        for (const char *open : {"", "2e", "2e25", "2e2500", "2e2500112233"})
            check(hex(open));
        for (int length = 1; length < 256; ++length) { // Payload bytes, and checksums.
            check(hex("2e25ff") + QByteArray(255 - length, '\xa7'));
            check(hex("2e25") + static_cast<char>(length) + QByteArray(length, '\xa7'));
        }
        QCOMPARE(cases, 256 * (5 + 255 + 255));
    }

    void typesBeyondAByteHaveNoHandler()
    {
        ServiceTest test;
        for (const int type : {-1, 0x121, INT_MIN + 0x21})
            for (const int size : {2, 10}) // Which the first and most handlers would take.
                QCOMPARE(test.dispatch(type, QByteArray(size, '\1')), "");
    }

    void checkSumIsThatOfAllBytes()
    {
        canservice::SimpleService service;
        const auto sum = [&service](QByteArray bytes) { return int(service.getCheckSum(bytes)); };
        QCOMPARE(sum(QByteArray()), 0xFF);
        QCOMPARE(sum(hex("90023000")), 0x3D);
        QCOMPARE(sum(QByteArray(257, '\xff')), 0x00);
    }

    void framesAreBuilt()
    {
        ServiceTest test;
        test.service.sendCarSelect(0xFF, 0); // Whose second argument is not sent.
        test.service.sendSetSettings(0xFF, 0xFF);
        QCOMPARE(test.taken(), "2e9101ff6e, 2ec502ffff3a !");
        const QByteArray longest = canbox::buildFrame(0xC1, QByteArray(300, '\0'));
        QCOMPARE(longest.toHex(), (hex("2ec1ff") + QByteArray(255, '\0') + hex("3f")).toHex());
    }
};

QTEST_GUILESS_MAIN(ParserTest)
#include "tst_parser.moc"
