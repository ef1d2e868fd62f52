// The supervision of the link: timers, commands and link codes. Time-outs are run by hand.
#include "servicetest.h"

namespace {

const QString kStart = "2e8101017c !";
const QString kStop = "2e8101007d !";
const QString kAskVersion = "2e900230003d !";
const QString kCarSelect = "2e91013439"; // of index 0x1234, by its low byte
const QString kAlive = "notifyCanbusStatus 3";
const QString kLost = "notifyCanbusStatus 0";
const QString kReceipt = "ff !";

const QByteArray kVersion = hex("2e3002563146");
const QByteArray kUnknown = hex("2e250105d4");
const QByteArray kDamaged = hex("2e250105d5");

QString running(const canservice::ServiceProbe &probe)
{
    QStringList names;
    if (probe.checkConnect.isActive())
        names << "check";
    if (probe.requestConnect.isActive())
        names << "knock";
    if (probe.send.isActive())
        names << "watchdog";
    if (probe.cartype.isActive())
        names << "car type";
    if (probe.longPress.isActive() || probe.parseOut.isActive())
        names << "others";
    return names.join(", ");
}

} // namespace

class LinkTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { CanBusManager::instance()->setHwdCarModelIndex(0x1234); }
    void timersAreWired()
    {
        QSignalSpy written(canservice::SerialMonitor::instance(),
                           &canservice::SerialMonitor::written);
        ServiceTest test;
        auto &probe = test.probe;
        QCOMPARE(written.size(), 0);
        QCOMPARE(running(probe), QString());

        const auto check = [&test](QTimer &timer, int interval, bool singleShot,
                                   const QStringList &effect) {
            QCOMPARE(timer.interval(), interval);
            QCOMPARE(timer.isSingleShot(), singleShot);
            QVERIFY(QMetaObject::invokeMethod(&timer, "timeout"));
            QCOMPARE(test.take(), effect);
        };
        check(probe.checkConnect, 30000, false, {kCarSelect, kAskVersion});
        check(probe.requestConnect, 2000, false, {kStop, kStart, kAskVersion});
        check(probe.cartype, 1000, false, {kCarSelect});
        check(probe.longPress, 0, true, {"keyEvent -1 2 false"}); // Each start brings its interval.
        QCOMPARE(probe.noAnswerCount, -1);
        check(probe.send, 300, false, {});
        QCOMPARE(probe.noAnswerCount, 0);
        test.receive(hex("2e"));
        QCOMPARE(probe.parseState, 3);
        check(probe.parseOut, 500, true, {});
        QCOMPARE(probe.parseState, 0);
    }

    void startKnocksUntilAFrameComes()
    {
        ServiceTest test;
        test.service.start();
        QCOMPARE(test.take(), QStringList({kStart, kAskVersion}));
        QCOMPARE(running(test.probe), "knock");
        test.timeout("onRequestConnect");
        QCOMPARE(running(test.probe), "knock");
        test.receive(kUnknown);
        QCOMPARE(running(test.probe), "check");
        test.service.start(); // Arms the knock on a living link, too.
        QCOMPARE(running(test.probe), "check, knock");
    }

    void everyGoodFrameKeepsTheLinkAlive()
    {
        ServiceTest test;
        test.receive(kUnknown + kDamaged + kUnknown); // Before any start(), too.
        QCOMPARE(test.take(), QStringList({kReceipt, kAlive, "f0 !", kReceipt, kAlive}));
        QCOMPARE(test.probe.noAnswerCount, 0);
        QCOMPARE(running(test.probe), "check");

        const canservice::LazyTimer &check = test.probe.checkConnect;
        QTRY_VERIFY(check.remainingTime() < 29900);
        const int rest = check.remainingTime();
        test.receive(kDamaged);
        QVERIFY(check.remainingTime() <= rest);
        test.receive(kUnknown);
        QVERIFY(check.remainingTime() > rest);
    }

    void versionStartsTheCarTypeTimer()
    {
        ServiceTest test;
        test.receive(kVersion);
        QCOMPARE(test.take(), QStringList({kReceipt, kAlive, "sigVersionData", kAlive}));
        QCOMPARE(running(test.probe), "check, car type");
        QTRY_VERIFY(test.probe.cartype.remainingTime() < 900);
        const int rest = test.probe.cartype.remainingTime();
        test.receive(kVersion);
        QVERIFY2(test.probe.cartype.remainingTime() <= rest, "a running timer was restarted");
        QCOMPARE(test.take(), QStringList({kReceipt, kAlive, "sigVersionData", kAlive}));

        // stop() leaves the supervision, which may bring the timer back.
        test.timeout("onCheckConnectTmrout");
        test.take();
        test.service.stop();
        QCOMPARE(test.take(), QStringList{kStop});
        QCOMPARE(running(test.probe), "check, watchdog");
        test.receive(kVersion);
        QCOMPARE(running(test.probe), "check, car type");
    }

    void watchdogRunsBeforeTheVersionIsAskedFor()
    {
        ServiceTest test;
        QStringList seen; // At the car selection and at the version request.
        connect(canservice::SerialMonitor::instance(), &canservice::SerialMonitor::written,
                &test.service, [&] { seen << running(test.probe); });
        test.timeout("onCheckConnectTmrout");
        QCOMPARE(seen, QStringList({"", "watchdog"}));
    }

    void fourthTickLosesTheLink()
    {
        ServiceTest test;
        test.receive(kVersion);
        test.timeout("onCheckConnectTmrout");
        QCOMPARE(running(test.probe), "check, watchdog, car type");
        test.take();
        for (int tick = 1; tick <= 3; ++tick) {
            test.timeout("onSendTmrout");
            QCOMPARE(test.probe.noAnswerCount, tick);
        }
        QCOMPARE(test.take(), QStringList());
        test.timeout("onSendTmrout");
        QCOMPARE(test.take(), QStringList{kLost});
        QCOMPARE(running(test.probe), "knock");
        QCOMPARE(test.probe.noAnswerCount, 0);

        test.timeout("onRequestConnect"); // Does not tell of the loss again.
        QCOMPARE(test.take(), QStringList({kStop, kStart, kAskVersion}));
        test.receive(kVersion);
        QCOMPARE(running(test.probe), "check, car type");
    }

    void aFrameCancelsTheLoss()
    {
        ServiceTest test;
        test.receive(kUnknown);
        for (int check = 1; check <= 2; ++check) {
            test.timeout("onCheckConnectTmrout");
            for (int tick = 1; tick <= 3; ++tick)
                test.timeout("onSendTmrout");
            test.receive(kUnknown);
            QCOMPARE(running(test.probe), "check");
        }
        QVERIFY(!test.take().contains(kLost));
    }
};

QTEST_GUILESS_MAIN(LinkTest)
#include "tst_link.moc"
