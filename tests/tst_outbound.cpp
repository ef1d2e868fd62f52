// The builder of frames at its limits. What the host and the timers have built is held by the tests
// of these.
#include "servicetest.h"

using canservice::SimpleService;

namespace {

const struct
{
    const char *name;
    void (*build)(SimpleService &);
    const char *written;
} kBuilders[] = {
    {"car select without its second argument", [](SimpleService &s) { s.sendCarSelect(5, 0xFF); },
     "2e91010568"},
    {"highest car index", [](SimpleService &s) { s.sendCarSelect(0xFF, 0); }, "2e9101ff6e"},
    {"sum above 8 bits", [](SimpleService &s) { s.sendSetSettings(0xFF, 0xFF); }, "2ec502ffff3a !"},
};

} // namespace

class OutboundTest : public QObject
{
    Q_OBJECT

private slots:
    void buildersWriteFrames_data() { addRows(kBuilders); }
    void buildersWriteFrames()
    {
        const auto &row = currentRow(kBuilders);
        ServiceTest test;
        row.build(test.service);
        QCOMPARE(test.taken(), row.written);
    }

    void checkSumIsThatOfAllBytes()
    {
        SimpleService service;
        const auto sum = [&service](QByteArray bytes) { return int(service.getCheckSum(bytes)); };
        QCOMPARE(sum(QByteArray()), 0xFF);
        QCOMPARE(sum(hex("90023000")), 0x3D);
        QCOMPARE(sum(hex("ffff")), 0x01);
        QCOMPARE(sum(QByteArray(257, '\xff')), 0x00);
    }

    void payloadIsCutToWhatTheLengthCanTell()
    {
        const QByteArray frame = canbox::buildFrame(0xC1, QByteArray(300, '\0'));
        QCOMPARE(frame.toHex(), (hex("2ec1ff") + QByteArray(255, '\0') + hex("3f")).toHex());
    }
};

QTEST_GUILESS_MAIN(OutboundTest)
#include "tst_outbound.moc"
