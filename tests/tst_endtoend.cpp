// The built plug-in in real time, from its file, on the virtual box behind a pseudo terminal.
#include "session.h"

#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTest>

using bench::CarValue;
using bench::Session;

class EndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    // The service's debug lines are one per byte.
    void initTestCase() { QLoggingCategory::setFilterRules("default.debug=false"); }

    void init()
    {
        bench::SessionOptions options;
        options.plugin = QStringLiteral(PLUGIN_FILE);
        options.carIndex = 0x1234;
        mSession = std::make_unique<Session>(options);
        QCOMPARE(mSession->open(), QString());
        QCOMPARE(mSession->service().version(), QString()); // A new service each time.
    }

    void cleanup() { mSession.reset(); }

    void knocksUntilTheBoxAnswers()
    {
        QByteArray heard;
        connect(&mSession->terminal(), &bench::PseudoTerminal::received, mSession.get(),
                [&heard](const QByteArray &bytes) { heard += bytes; });
        mSession->box().setSilent(true);
        mSession->start();
        const QByteArray start = QByteArray::fromHex("2e8101017c 2e900230003d");
        QTRY_COMPARE(heard.toHex(), start.toHex());
        const QByteArray knock = QByteArray::fromHex("2e8101007d") + start;
        QTRY_COMPARE_WITH_TIMEOUT(heard.toHex(), (start + knock).toHex(), 3000);
        QCOMPARE(mSession->linkCode(), -1);

        mSession->box().setSilent(false);
        QTRY_COMPARE_WITH_TIMEOUT(mSession->service().version(), "VBOX-1.0", 3000);
        QCOMPARE(mSession->linkCode(), 3);
        QTRY_COMPARE(mSession->box().carIndex(), 0x34);

        mSession->stop();
        QVERIFY(!mSession->box().isStarted());
    }

    void carAndHostFollowEachOther()
    {
        mSession->start();
        QTRY_COMPARE(state("version"), "VBOX-1.0");

        QSignalSpy doors(&mSession->service(), &CanServiceBase::doorChanged);
        mSession->car().set("door.left_front", "open");
        QTRY_COMPARE(state("door.left_front"), true);
        QCOMPARE(doors.size(), 1);

        QCOMPARE(state("climate.left"), 21.5F);
        mSession->service().sendAcKey(19, 0);
        QTRY_COMPARE(state("climate.left"), 22.0F);

        const auto frames = [this] {
            qint64 total = 0;
            for (const qint64 count : mSession->box().sent())
                total += count;
            return total;
        };
        QTRY_COMPARE(mSession->box().received().goodReceipts, frames());
        QCOMPARE(mSession->summary().fromBox.frameTotal(), frames());
        QCOMPARE(mSession->summary().fromBox.noiseBytes, 0);
        QCOMPARE(mSession->box().received().noiseBytes, 0);
        QCOMPARE(mSession->box().misunderstood(), 0);
    }

private:
    QVariant state(const char *name) { return mSession->readState().value(name).value; }

    std::unique_ptr<Session> mSession;
};

QTEST_GUILESS_MAIN(EndToEndTest)
#include "tst_endtoend.moc"
