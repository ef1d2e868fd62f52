// The supervision of the link in time, which is set by hand: what goes out when, and when the host
// is told what. The states are walked elsewhere.
#include "servicetest.h"

namespace {

const QString kStart = "2e8101017c !, 2e900230003d !"; // and the request for the version
const QString kStop = "2e8101007d !";
const QString kKnock = kStop + ", " + kStart;
const QString kCarSelect = "2e91013439"; // of index 0x1234, by its low byte
const QString kCheck = kCarSelect + ", 2e900230003d !";
const QString kAlive = "notifyCanbusStatus 3";
const QString kLost = "notifyCanbusStatus 0";
const QString kTaken = "ff !, " + kAlive;

const QByteArray kVersion = hex("2e3002563146");
const QByteArray kUnknown = hex("2e250105d4");
const QByteArray kDamaged = hex("2e250105d5");

// A service whose time the test sets.
struct Life
{
    QString receive(const QByteArray &bytes)
    {
        test.receive(bytes);
        return test.taken();
    }

    /// What comes next of itself, if it comes after so many milliseconds: a coarse timer may be 5 %
    /// of its interval early or late, half a second at most.
    QString after(int due, int interval = 0)
    {
        const int slack = qMin(qMax(due, interval) / 20, 500);
        int waited = 0;
        for (; test.journal.isEmpty() && waited <= due + slack; ++waited)
            clock.pass(1);
        return waited < due - slack ? QString("after %1 ms").arg(waited) : test.taken();
    }

    TestTime clock;
    ServiceTest test;
};

} // namespace

class LinkTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { CanBusManager::instance()->setHwdCarModelIndex(0x1234); }

    void knocksFromTheStartUntilTheBoxAnswers()
    {
        Life life;
        QCOMPARE(life.after(60000), QString());
        life.test.service.start();
        QCOMPARE(life.test.taken(), kStart);
        for (int knock = 0; knock < 5; ++knock)
            QCOMPARE(life.after(2000), kKnock);
        QCOMPARE(life.receive(kUnknown), kTaken);
        QCOMPARE(life.after(30000), kCheck);
    }

    void aGoodFramePutsOffTheCheckAndCancelsTheLoss()
    {
        Life life;
        life.receive(kUnknown);
        life.clock.pass(20000);
        life.receive(kUnknown);
        life.clock.pass(20000);
        QCOMPARE(life.receive(kDamaged), "f0 !");
        QCOMPARE(life.after(10000), kCheck);
        QCOMPARE(life.receive(kUnknown), kTaken);
        for (int check = 0; check < 3; ++check) {
            QCOMPARE(life.after(30000), kCheck);
            life.clock.pass(1100);
            QCOMPARE(life.receive(kUnknown), kTaken);
        }
        QCOMPARE(life.after(30000), kCheck);
        QCOMPARE(life.after(1200), kLost); // Which is told once.
        QCOMPARE(life.after(2000), kKnock);
    }

    void versionsLeaveTheCarSelectionItsBeat()
    {
        Life life;
        life.receive(kVersion);
        life.clock.pass(600);
        life.receive(kVersion);
        QCOMPARE(life.after(400, 1000), kCarSelect);
        life.test.service.stop(); // Which leaves the supervision.
        QCOMPARE(life.test.taken(), kStop);
        QCOMPARE(life.after(29600, 30000), kCheck);
        life.receive(kVersion);
        QCOMPARE(life.after(1000), kCarSelect);
    }

    void anOpenFrameIsGivenUp()
    {
        Life life;
        life.receive(hex("2e25"));
        life.clock.pass(5000); // Of themselves the bytes may wait.
        life.receive(hex("01"));
        life.clock.pass(250);
        life.receive(hex("0200 2e2502")); // Bad bytes put off nothing, nor do new ones.
        life.clock.pass(249);
        QCOMPARE(life.test.probe.parseState, 4);
        life.clock.pass(27);
        QCOMPARE(life.receive(kUnknown), kTaken);
        QCOMPARE(life.receive(hex("2e20020501d7")), kTaken + ", keyEvent 5 0 true");
        QCOMPARE(life.after(1500), "keyEvent 5 2 true");
    }

    // A clock that stands still while the unit sleeps shows nothing of it. One that goes on, or a
    // process that was stopped, finds all timers due at once, before the box's bytes or after them.
    void aSleepLosesNoLink()
    {
        for (const int awake : {0, 1000, 29000, 30500, 31000}) { // ms from the last frame on
            for (const bool bytesFirst : {true, false}) {
                Life life;
                life.receive(kVersion);
                life.clock.pass(awake);
                life.clock.skip(40000000);
                if (!bytesFirst)
                    life.clock.pass(2);
                life.test.receive(kVersion);
                const bool lost = life.test.taken().contains(kLost);
                // Who has waited for an answer for a second, and finds none when the timers come
                // first.
                QVERIFY2(lost == (awake == 31000 && !bytesFirst), QByteArray::number(awake));
                life.clock.pass(10000);
                const QStringList seen = life.test.take();
                QVERIFY(seen.size() >= 9 && seen.count(kCarSelect) == seen.size());
            }
        }
    }
};

QTEST_GUILESS_MAIN(LinkTest)
#include "tst_link.moc"
