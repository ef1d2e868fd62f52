// Frames that are damaged: each byte of a frame of each type is replaced by every other value, the
// single-bit flips among them, and payloads have every other length. None of it is taken. And
// frames that come in while another is handled: all of them are taken, in the line's order.
#include "servicetest.h"

#include "bench/headunit/getters.h"

#include <QMetaMethod>
#include <QPointer>

using canservice::SimpleService;

namespace {

// The handler, a frame and its effect, and another payload, which leads to another state; none for
// the last one, which takes any length. No length byte below the true one finds its checksum by
// chance, and the head's value occurs as head alone: what follows a broken frame is noise.
const struct
{
    const char *name, *frame, *effect, *other;
} kFrames[] = {
    {"doSwc", "2e20020501d7", "keyEvent 5 0 true", "0700"},
    {"doClimate", "2e210ac8852930a8000000620024", "acStatusChanged", "2001303180000900120f"},
    {"doRearRadar", "2e2208141a001f0000000088", "sigRadarChanged", "0e08020100000000"},
    {"doFontRadar", "2e23080102080e00000000bb", "sigRadarChanged", "0e08020100000000"},
    {"doCarBasicInfor", "2e2407a80000000000002c", "doorChanged", "08000000000000"},
    {"doSettingStatus", "2e2802720162", "unitDataChanged", "7200"},
    {"doAmbientLight", "2e6102053c5b", "sigAmbientChanged", "0332"},
    {"doCarInformationData1", "2e631201020303e7955501020304000000001207008d",
     "drivingDataChanged, drivingDataChanged, drivingDataChanged, tireDataChanged, tireAlert",
     "000002000304000506070800000000210100"},
    {"doCarInformationData2", "2e6905fe000000ff94", "drivingDataChanged, batteryVoltageChange",
     "3100000041"},
    {"doVersion", "2e300356313213", "sigVersionData, notifyCanbusStatus 3", nullptr},
};

const QString kTaken("ff !, notifyCanbusStatus 3");

using State = QVector<bench::Value>;

// What frames leave behind: in the parser, of keys, and to be read.
State stateOf(ServiceTest &test)
{
    State state{test.probe.parseState, test.probe.parseOut.isActive(), test.probe.currentKey};
    for (int index = 0; index < bench::getterCount(); ++index)
        state += bench::getter(index).read(test.service);
    return state;
}

// What a host sees and has of a stream in chunks, whose port reads while it writes and whose slots
// run event loops: from one event on, each lets the next chunk in.
std::pair<QStringList, State> outcomeOf(const QByteArray &stream, int size, int firstEvent)
{
    const LogCapture silence(false);
    ServiceTest test;
    int next = 0;
    const auto feed = [&] { test.receive(stream.mid(std::exchange(next, next + size), size)); };
    test.afterEvent = [&] {
        if (test.journal.size() > firstEvent && next < stream.size())
            feed();
    };
    while (next < stream.size())
        feed();
    return {test.journal, stateOf(test)};
}

} // namespace

class CorruptionTest : public QObject
{
    Q_OBJECT

private slots:
    void replacedByteChangesNothing_data() { addRows(kFrames); }
    void replacedByteChangesNothing()
    {
        const QByteArray frame = hex(currentRow(kFrames).frame);
        const LogCapture silence(false);
        ServiceTest test;
        test.service.start();
        test.take();
        const State before = stateOf(test);
        for (int place = 0; place < frame.size(); ++place) {
            for (int change = 1; change < 256; ++change) {
                QByteArray corrupt = frame;
                corrupt[place] = static_cast<char>(canbox::byteAt(frame, place) ^ change);
                test.receive(corrupt);
                test.timeout("onmParseOutTmrout"); // A length may wait for bytes that do not come.
                const QByteArray what = corrupt.toHex(' ');
                QVERIFY2(QStringList({"", "f0 !"}).contains(test.taken()), what);
                QVERIFY2(stateOf(test) == before, what);
            }
        }
        test.receive(frame);
        QCOMPARE(test.taken(), kTaken + ", " + currentRow(kFrames).effect);
        QVERIFY(!(stateOf(test) == before));
    }

    void wrongLengthChangesNothing()
    {
        for (const auto &row : kFrames) {
            const auto type = canbox::byteAt(hex(row.frame), 1);
            const QByteArray other = hex(row.other);
            ServiceTest test;
            test.receive(hex(row.frame));
            const State before = stateOf(test);
            if (!row.other)
                continue;
            for (const QByteArray &payload :
                 {other.chopped(1), other + '\0', other + other, QByteArray(255, '\x55')}) {
                const LogCapture log(false);
                QCOMPARE(test.dispatch(type, payload), "");
                QVERIFY(stateOf(test) == before);
                QCOMPARE(log.items(), QStringList("")); // One line, without a word.
                const LogCapture::Line &line = log.lines().front();
                QVERIFY(line.type == QtCriticalMsg && line.text.startsWith("[ERR] "));
                QVERIFY(line.function.contains(QByteArray("SimpleService::") + row.name + '('));
            }
            test.dispatch(type, other); // Which would have made a difference.
            QVERIFY(stateOf(test) != before);
        }
    }

    // Pieces of the line come within each event and from each event on: frames that differ, of the
    // same type and of others, after damage.
    void newerBytesComeSecond()
    {
        QByteArray stream;
        for (const auto &row : kFrames) {
            const QByteArray frame = hex(row.frame);
            stream += hex("2e250105d5 41") + frame;
            if (row.other)
                stream += canbox::buildFrame(canbox::byteAt(frame, 1), hex(row.other)) + frame;
        }
        const auto [events, state] = outcomeOf(stream, stream.size(), INT_MAX);
        for (const int size : {1, 2, 3, 7, 15, 40, stream.size()}) {
            for (int event = 0; event < events.size(); ++event) {
                const auto nested = outcomeOf(stream, size, event);
                QCOMPARE(nested.first, events);
                QVERIFY(nested.second == state);
            }
        }
    }

    void everySignalMayAskForTheEnd()
    {
        const LogCapture silence(false);
        QByteArray stream;
        for (const auto &row : kFrames)
            stream += hex(row.frame);
        int signalCount = 0;
        const QMetaObject &type = CanServiceBase::staticMetaObject;
        const QMetaMethod end = type.method(type.indexOfSlot("deleteLater()"));
        for (int i = type.methodOffset(); i < type.methodCount(); ++i, ++signalCount) {
            const QPointer<SimpleService> service(new SimpleService);
            QVERIFY(connect(service, type.method(i), service, end));
            emit canservice::ServiceProbe(*service).port.read(stream);
            QVERIFY(service);
            QCOMPARE(service->version(), QString("V12"));
            QCoreApplication::sendPostedEvents(service, QEvent::DeferredDelete);
            QVERIFY2(!service, type.method(i).name());
        }
        QCOMPARE(signalCount, 12);
    }
};

QTEST_GUILESS_MAIN(CorruptionTest)
#include "tst_corruption.moc"
