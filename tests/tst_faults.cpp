// Faults on the line: what each does, and what the host knows of the car under them.
#include "rows.h"

#include "bench/headunit/witness.h"

#include <QLoggingCategory>
#include <QSignalSpy>

#include <algorithm>

using namespace bench;

namespace {

const QByteArray kAmbient = hex("2e6102053c5b");

bool isPermutation(const QByteArray &one, const QByteArray &other)
{
    return one.size() == other.size() && std::is_permutation(one.begin(), one.end(), other.begin());
}

// Whether one byte taken from \p longer leaves \p shorter.
bool isOneMore(const QByteArray &longer, const QByteArray &shorter)
{
    for (int i = 0; i < longer.size(); ++i)
        if (QByteArray(longer).remove(i, 1) == shorter)
            return true;
    return false;
}

int bitsBetween(const QByteArray &one, const QByteArray &other)
{
    uint bits = 0;
    for (int i = 0; i < one.size(); ++i)
        bits += qPopulationCount(quint8(one.at(i) ^ other.at(i)));
    return int(bits);
}

// What a kind of fault makes of a frame, whatever is drawn: each of so many results in the end.
const struct
{
    const char *name;
    Fault fault;
    int results;
    bool (*isRight)(const QByteArray &damaged);
} kDamages[] = {
    {"a bit is inverted", Fault::BitFlip, 48,
     [](const QByteArray &d) { return d.size() == 6 && bitsBetween(d, kAmbient) == 1; }},
    {"a byte is lost", Fault::DroppedByte, 6,
     [](const QByteArray &d) { return isOneMore(kAmbient, d); }},
    {"a byte comes twice", Fault::DoubledByte, 6,
     [](const QByteArray &d) {
         return isOneMore(d, kAmbient) && std::adjacent_find(d.begin(), d.end()) != d.end();
     }},
    {"a byte comes from nowhere", Fault::InsertedByte, 6 * 256 - 5,
     [](const QByteArray &d) { return isOneMore(d, kAmbient); }},
    {"two bytes change places", Fault::SwappedBytes, 5,
     [](const QByteArray &d) { return d != kAmbient && isPermutation(d, kAmbient); }},
    {"the end is missing", Fault::Truncated, 5,
     [](const QByteArray &d) { return !d.isEmpty() && d.size() < 6 && kAmbient.startsWith(d); }},
    {"the checksum is another", Fault::BadChecksum, 255,
     [](const QByteArray &d) { return d.chopped(1) == kAmbient.chopped(1) && d != kAmbient; }},
    {"a fault of time leaves bytes alone", Fault::Silence, 1,
     [](const QByteArray &d) { return d == kAmbient; }},
};

// The frames that intrude: how many, and whether the service knows their type; none its length.
const struct
{
    const char *name;
    Fault fault;
    int frames;
    bool known;
} kIntrusions[] = {
    {"a type that nobody knows", Fault::UnknownType, 1, false},
    {"a known type, a byte too long", Fault::WrongLength, 1, true},
    {"a frame without payload", Fault::ZeroLength, 1, true},
    {"many of a type that nobody knows", Fault::Flood, 40, false},
    {"none for damage", Fault::BitFlip, 0, false},
};

// How many frames of nobody's type the host gets, and whether it loses its device.
const struct
{
    const char *name;
    Fault fault;
    int strangers;
    bool losesDevice;
} kRecoveries[] = {
    {"split write", Fault::SplitWrite, 0, false},
    {"silence", Fault::Silence, 0, false},
    {"stalled read", Fault::StalledRead, 0, false},
    {"truncated frame", Fault::Truncated, 0, false},
    {"frame without payload", Fault::ZeroLength, 0, false},
    {"flood", Fault::Flood, 40, false},
    {"unplugged while idle", Fault::Unplug, 0, true},
    {"unplugged in a frame", Fault::UnplugMidFrame, 0, true},
    {"unplugged while the host writes", Fault::UnplugMidWrite, 0, true},
};

// Bytes on the line that are not from the box; whether a value is claimed that is in no frame; and
// what the witness says.
const struct
{
    const char *name;
    QByteArray bytes;
    bool forged;
    int damaged;
    QStringList unexplained, differences;
} kClaims[] = {
    {"nothing but the box's frames", {}, false, 0, {}, {}},
    {"a bad checksum is not taken", hex("2e61023c045b"), false, 0, {}, {}},
    // Colour 5 and level 60 swapped: no known colour, and a level of one step that nobody set.
    {"swapped bytes that the sum cannot see",
     hex("2e61023c055b"),
     false,
     2,
     {},
     {"ambient.colour is 0 instead of 5", "ambient.level is 1 instead of 10"}},
    {"a value from nowhere", {}, true, 0, {"door.rear is true"}, {}},
};

} // namespace

class FaultsTest : public QObject
{
    Q_OBJECT

private slots:
    // Broken frames and lost devices are what this is about.
    void initTestCase() { QLoggingCategory::setFilterRules("default=false"); }

    void damagesAsItsKindSays_data() { addRows(kDamages); }
    void damagesAsItsKindSays()
    {
        const auto &row = currentRow(kDamages);
        FaultRandom random(1), same(1);
        QSet<QByteArray> different;
        for (int i = 0; i < 20000; ++i) {
            const QByteArray damaged = damage(row.fault, kAmbient, random);
            QVERIFY2(row.isRight(damaged), damaged.toHex(' '));
            QCOMPARE(damage(row.fault, kAmbient, same), damaged);
            different.insert(damaged);
        }
        QCOMPARE(different.size(), row.results);
        // Frames that are too short for it do not matter.
        for (int size = 0; size < 3; ++size)
            damage(row.fault, QByteArray(size, '\x2E'), random);
    }

    void intrudesAsItsKindSays_data() { addRows(kIntrusions); }
    void intrudesAsItsKindSays()
    {
        const auto &row = currentRow(kIntrusions);
        FaultRandom random(1);
        for (int i = 0; i < 50; ++i) {
            LineCutter cutter(LineCutter::Box); // To which a frame may be without payload.
            int frames = 0;
            connect(&cutter, &LineCutter::item, this, [&](const LineItem &item) {
                const Inbound type{item.dataType};
                frames += item.kind == LineItem::Frame && !isReport(type, item.bytes.size()) &&
                          (findReport(type) != nullptr) == row.known;
            });
            cutter.feed(intrusion(row.fault, random), 0);
            QCOMPARE(frames, row.frames);
            QCOMPARE(cutter.counts().frameTotal(), qint64(row.frames));
            QVERIFY(!cutter.isFrameOpen());
        }
    }

    void hostKnowsTheCarAfterwards_data() { addRows(kRecoveries); }
    void hostKnowsTheCarAfterwards()
    {
        const auto &row = currentRow(kRecoveries);
        openSession();
        BoxEnd &end = *mSession->boxEnd();
        QTRY_COMPARE(end.box().received().goodReceipts, 10); // The start is over.
        bool deviceLost = false;
        connect(mSession.get(), &Session::happened, this, [&](const Event &event) {
            deviceLost |= event.name == "device" && numberOf(event.arguments.first()) == 0;
        });

        end.faults().inject(row.fault);
        end.car().setRaw(valueId("door.rear"), 1);
        QTimer again; // Whatever is lost of the box's frames.
        connect(&again, &QTimer::timeout, this, [&end] { end.box().report(Inbound::Doors); });
        again.start(100);
        QTRY_VERIFY(mSession->service().isRearDoorOpen() && !end.faults().isBusy());
        QTRY_COMPARE(deviceLost, row.losesDevice);
        again.stop();
        QVERIFY(mWitness->settle(8000)); // The device, the host and a cut frame take seconds.
        QVERIFY(!end.box().awaitsHost() && end.isQuiet());
        QCOMPARE(mWitness->differences(), QStringList());
        QCOMPARE(mWitness->history().unexplained, QStringList());
        QCOMPARE(end.faults().count(row.fault), 1);
        QVERIFY(end.faults().wasUsed());
        QCOMPARE(mSession->summary().fromBox.frames.value(0x7A), row.strangers);
    }

    void witnessKnowsWhatWasSent_data() { addRows(kClaims); }
    void witnessKnowsWhatWasSent()
    {
        const auto &row = currentRow(kClaims);
        openSession();
        BoxEnd &end = *mSession->boxEnd();
        QVERIFY(!end.faults().wasUsed());
        end.faults().setPlan({}); // Which is told, though no fault happens.
        QVERIFY(end.faults().wasUsed());
        end.car().pressKey(5);
        end.car().setRaw(valueId("ambient.colour"), 5);
        QTRY_COMPARE(int(mSession->service().getCarSettingData().ambient.colour), 5);
        end.box().sendRaw(row.bytes);
        end.car().setRaw(valueId("door.left_front"), 1); // Behind the bytes.
        QTRY_VERIFY(mSession->service().isLeftFrontDoorOpen());
        if (row.forged) {
            Event event{0, "doorChanged", {}, {}};
            event.changes.append({findGetter("door.rear"), false, true, {}, {}});
            emit mSession->happened(event);
        }
        // The start, the key, the colour and the door show 22 things; each row may add some.
        QCOMPARE(mWitness->history().shown, 22 + row.damaged + row.unexplained.size());
        QCOMPARE(mWitness->history().damaged, row.damaged);
        QCOMPARE(mWitness->history().unexplained, row.unexplained);
        QCOMPARE(mWitness->differences(), row.differences);
    }

private:
    void openSession()
    {
        mWitness.reset();
        mSession.reset(); // The plug-in has one service.
        SessionOptions options;
        options.plugin = PLUGIN_FILE;
        mSession = std::make_unique<Session>(options);
        mWitness = std::make_unique<Witness>(mSession.get());
        QCOMPARE(mSession->open(), QString());
        mSession->start();
        QTRY_COMPARE(mSession->service().version(), QString("VBOX-1.0"));
    }

    std::unique_ptr<Session> mSession;
    std::unique_ptr<Witness> mWitness;
};

QTEST_GUILESS_MAIN(FaultsTest)
#include "tst_faults.moc"
