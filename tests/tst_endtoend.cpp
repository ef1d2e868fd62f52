// The built plug-in in real time, from its file, on the virtual box behind a pseudo terminal.
#include "bench/headunit/session.h"

#include <QFile>
#include <QLoggingCategory>
#include <QSignalSpy>
#include <QTest>

#include <numeric>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

using bench::Session;

namespace {

speed_t speedOf(const QString &device)
{
    const int line = open(QFile::encodeName(device).constData(), O_RDWR | O_NOCTTY);
    termios settings{};
    tcgetattr(line, &settings);
    close(line);
    return cfgetospeed(&settings);
}

} // namespace

class EndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    // The service's debug lines are one per byte.
    void initTestCase() { QLoggingCategory::setFilterRules("default.debug=false"); }

    void carAndHostFollowEachOther()
    {
        bench::SessionOptions options;
        options.plugin = QStringLiteral(PLUGIN_FILE);
        options.carIndex = 0x1234;
        Session session(options);
        QCOMPARE(session.open(), QString());
        bench::BoxEnd &end = *session.boxEnd();
        QCOMPARE(speedOf(end.terminal().path()), speed_t(B38400));
        QByteArray heard;
        connect(&end.terminal(), &bench::SerialLine::received, this,
                [&heard](const QByteArray &bytes) { heard += bytes; });

        // The service knocks until the box answers.
        end.box().setSilent(true);
        session.start();
        const QByteArray start = QByteArray::fromHex("2e8101017c 2e900230003d");
        QTRY_COMPARE(heard.toHex(), start.toHex());
        const QByteArray knock = QByteArray::fromHex("2e8101007d") + start;
        QTRY_COMPARE_WITH_TIMEOUT(heard.toHex(), (start + knock).toHex(), 3000);
        QCOMPARE(session.linkCode(), -1);
        end.box().setSilent(false);
        QTRY_COMPARE_WITH_TIMEOUT(session.service().version(), "VBOX-1.0", 3000);
        QCOMPARE(session.linkCode(), 3);
        QTRY_COMPARE(end.box().carIndex(), 0x34);

        QSignalSpy doors(&session.service(), &CanServiceBase::doorChanged);
        end.car().setRaw(bench::valueId("door.left_front"), 1);
        QTRY_VERIFY(session.service().isLeftFrontDoorOpen());
        QCOMPARE(doors.size(), 1);
        QCOMPARE(session.service().getAcTemperature(), 21.5F);
        session.service().sendAcKey(19, 0);
        QTRY_COMPARE(session.service().getAcTemperature(), 22.0F);

        const auto frames = [&end] {
            const auto counts = end.box().sent();
            return std::accumulate(counts.begin(), counts.end(), qint64(0));
        };
        QTRY_COMPARE(end.box().received().goodReceipts, frames());
        QCOMPARE(session.summary().fromBox.frameTotal(), frames());
        QCOMPARE(session.summary().fromBox.noiseBytes, 0);
        QCOMPARE(end.box().received().noiseBytes, 0);
        QCOMPARE(end.box().misunderstood(), 0);
        session.stop();
        QVERIFY(!end.box().isStarted());
    }
};

QTEST_GUILESS_MAIN(EndToEndTest)
#include "tst_endtoend.moc"
