// The timer that notes its restarts instead of making them, beside a QTimer of the same interval.
#include "servicetest.h"

#include "plugin/lazytimer.h"

#include <QPointer>

#include <algorithm>
#include <array>

using canservice::LazyTimer;

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

/// How long timers of one kind run, least and most, in ms. One is started in each hundredth of a
/// second, because its place there says how coarse it is, and restarted with the others.
template <typename AnyTimer>
std::pair<int, int> spreadOf(int interval, int restarts, TestTime &clock)
{
    std::array<AnyTimer, 100> timers;
    int now = 0;
    QVector<int> ran;
    const auto pass = [&](int milliseconds) {
        for (const int end = now + milliseconds; now < end; clock.pass(1))
            ++now;
    };
    for (int start = 0; start <= restarts; ++start) {
        for (AnyTimer &timer : timers) {
            timer.disconnect();
            QObject::connect(&timer, &QTimer::timeout, [&, begin = now] { ran << now - begin; });
            timer.setSingleShot(true);
            timer.start(interval);
            pass(10);
        }
        pass(start < restarts ? 7007 : 2 * interval); // Each restart finds another place.
    }
    const auto [least, most] = std::minmax_element(ran.begin(), ran.end());
    return ran.size() == 100 ? std::pair(*least, *most) : std::pair(0, 0);
}

} // namespace

class LazyTimerTest : public QObject
{
    Q_OBJECT

private slots:
    void isNoEarlierAndNoLaterThanACoarseTimer()
    {
        for (const int interval : {500, 1500, 30000}) {
            TestTime clock;
            const auto [least, most] = spreadOf<QTimer>(interval, 0, clock);
            QVERIFY(least > 0 && least < interval && most > interval);
            for (int restarts = 0; restarts <= (interval > 10000 ? 4 : 0); ++restarts) {
                const auto lazy = spreadOf<LazyTimer>(interval, restarts, clock);
                qInfo("%d ms, %d restarts: %d to %d ms; QTimer: %d to %d ms", interval, restarts,
                      lazy.first, lazy.second, least, most);
                QVERIFY(lazy.first >= interval && lazy.second <= most);
            }
        }
    }

    void stopsAndStarts()
    {
        TestTime clock;
        Timer timer;
        QCOMPARE(timer.remainingTime(), -1);
        timer.start(40);
        QVERIFY(timer.isActive() && timer.remainingTime() == 40);
        clock.pass(130);
        QCOMPARE(timer.timeouts.size(), 3);
        timer.stop();
        QVERIFY(!timer.isActive());
        const int wakeUps = timer.wakeUps;
        clock.pass(200);
        QCOMPARE(timer.timeouts.size(), 3);
        QVERIFY(timer.wakeUps <= wakeUps + 1); // The one that was on its way.
        timer.setSingleShot(true);
        timer.start(); // The noted wake-up is gone,
        timer.stop();
        timer.start(); // or still to come.
        clock.pass(200);
        QCOMPARE(timer.timeouts.size(), 4);
        QCOMPARE(timer.remainingTime(), -1);
    }

    void restartMovesTheTimeOut()
    {
        TestTime clock;
        Timer timer;
        timer.start(100);
        for (int restart = 0; restart < 20; ++restart) {
            clock.pass(60);
            timer.start();
        }
        clock.pass(99);
        QCOMPARE(timer.timeouts.size(), 0);
        QVERIFY(timer.wakeUps <= 22);
        clock.pass(6);
        QCOMPARE(timer.timeouts.size(), 1);
        for (int shrunk = 2; shrunk <= 3; ++shrunk) { // While it runs, and while it does not.
            timer.start(60000);
            if (shrunk == 3)
                timer.stop();
            timer.start(40);
            clock.pass(42);
            QCOMPARE(timer.timeouts.size(), shrunk);
        }
    }

    void slotMayDeleteTheTimer()
    {
        TestTime clock;
        auto *timer = new LazyTimer;
        QPointer<LazyTimer> watch = timer;
        connect(timer, &QTimer::timeout, this, [timer] { delete timer; });
        timer->start(10);
        clock.pass(11);
        QVERIFY(!watch);
    }
};

QTEST_GUILESS_MAIN(LazyTimerTest)
#include "tst_lazytimer.moc"
