// The timer that notes its restarts instead of making them. Coarse: 5 % early is in time.
#include "plugin/lazytimer.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

namespace {

struct Timer : LazyTimer
{
    void timerEvent(QTimerEvent *event) override
    {
        ++wakeUps;
        LazyTimer::timerEvent(event);
    }

    QSignalSpy timeouts{this, &QTimer::timeout};
    int wakeUps = 0;
};

} // namespace

class LazyTimerTest : public QObject
{
    Q_OBJECT

private slots:
    void singleShotFiresOnce()
    {
        Timer timer;
        QCOMPARE(timer.remainingTime(), -1);
        timer.setSingleShot(true);
        timer.start(40);
        QVERIFY(timer.isActive() && timer.remainingTime() <= 40);
        QVERIFY(timer.timeouts.wait(1000));
        QVERIFY(!timer.isActive());
        QCOMPARE(timer.remainingTime(), -1);
        QVERIFY(!timer.timeouts.wait(100));
    }

    void repeatsUntilStopped()
    {
        Timer timer;
        QElapsedTimer clock;
        clock.start();
        timer.start(40);
        QTRY_VERIFY(timer.timeouts.size() >= 3);
        QVERIFY(clock.elapsed() >= 114);
        timer.stop();
        const int wakeUps = timer.wakeUps;
        QVERIFY(!timer.timeouts.wait(200));
        QVERIFY(timer.wakeUps <= wakeUps + 1); // The one that was on its way.
    }

    void restartPostpones()
    {
        Timer timer;
        timer.start(100);
        QTRY_VERIFY(timer.remainingTime() < 60);
        QElapsedTimer clock;
        clock.start();
        timer.start();
        QVERIFY(timer.timeouts.wait(1000));
        QVERIFY(clock.elapsed() >= 95);
    }

    void stopSilencesAndStartRevives()
    {
        Timer timer;
        timer.start(50);
        timer.stop();
        QVERIFY(!timer.isActive());
        QVERIFY(!timer.timeouts.wait(100));
        timer.start(); // The noted wake-up is gone.
        QVERIFY(timer.timeouts.wait(1000));
        timer.stop();
        timer.start(); // The noted wake-up is still to come.
        QVERIFY(timer.timeouts.wait(1000));
    }

    void intervalMayShrink()
    {
        for (const bool stopped : {false, true}) {
            Timer timer;
            timer.start(60000);
            if (stopped)
                timer.stop();
            timer.setInterval(40);
            timer.start();
            QVERIFY(timer.timeouts.wait(1000));
        }
    }

    void slotMayDeleteTheTimer()
    {
        auto *timer = new LazyTimer;
        QPointer<LazyTimer> watch = timer;
        connect(timer, &QTimer::timeout, this, [timer] { delete timer; });
        timer->start(10);
        QTRY_VERIFY(!watch);
    }
};

QTEST_GUILESS_MAIN(LazyTimerTest)
#include "tst_lazytimer.moc"
