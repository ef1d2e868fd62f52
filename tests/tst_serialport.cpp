// The stand-in's serial port against pseudo terminals: bytes, bad devices, loss and return.
#include "host/serialport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

using canservice::SerialMonitor;
using canservice::SerialPort;

namespace {

// The device's side of a pseudo terminal, and a link to the port's side. Reads at once, so that a
// test sees what has arrived without a turn of the event loop.
struct Terminal
{
    Terminal() { plug(); }
    ~Terminal()
    {
        unplug();
        ::close(slave);
    }
    void plug()
    {
        master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        QVERIFY(grantpt(master) == 0 && unlockpt(master) == 0);
        name = QString::fromLatin1(ptsname(master));
        QVERIFY(QFile::link(name, link));
        // Keeps the number from being given again until the next plug().
        ::close(std::exchange(slave, ::open(ptsname(master), O_RDWR | O_NOCTTY)));
    }
    void unplug()
    {
        QFile::remove(link);
        ::close(std::exchange(master, -1));
    }
    bool send(const QByteArray &bytes) const
    {
        return ::write(master, bytes.constData(), size_t(bytes.size())) == bytes.size();
    }
    QByteArray take() const
    {
        QByteArray taken(8192, '\0');
        const auto size = ::read(master, taken.data(), size_t(taken.size()));
        return taken.left(int(qMax<ssize_t>(0, size)));
    }

    QTemporaryDir directory;
    const QString link = directory.filePath("box");
    QString name;
    int master = -1;
    int slave = -1;
};

QByteArray everyByte()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value)
        bytes.append(char(value));
    return bytes;
}

QStringList logLines;

// A port, what it read and what it said about its connection.
struct Port : SerialPort
{
    QSignalSpy connection{SerialMonitor::instance(), &SerialMonitor::connectionChanged};
    QSignalSpy written{SerialMonitor::instance(), &SerialMonitor::written};
    QByteArray traced, got;
    Port()
    {
        connect(SerialMonitor::instance(), &SerialMonitor::received, this,
                [this](const QByteArray &bytes) { traced += bytes; });
        connect(this, &SerialPort::read, this, [this](const QByteArray &bytes) {
            got += bytes;
            QCOMPARE(traced, got); // the trace is ahead of the owner
        });
    }
};

} // namespace

class TestSerialPort : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        logLines.clear();
        qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &text) { logLines << text; });
    }
    void cleanup()
    {
        qInstallMessageHandler(nullptr);
        SerialPort::setDefaultDevice(QString());
    }

    void carriesEveryByteBothWays_data()
    {
        QTest::addColumn<QString>("form");
        QTest::newRow("a path") << "/dev/PTS";
        QTest::newRow("a name below /dev") << "PTS";
        QTest::newRow("a link") << "LINK";
        QTest::newRow("no name, but a default device") << "";
    }
    void carriesEveryByteBothWays()
    {
        QFETCH(QString, form);
        Terminal box;
        SerialPort::setDefaultDevice(form.isEmpty() ? box.name : "/dev/null");
        form.replace("PTS", box.name.mid(5)).replace("LINK", box.link);
        QVERIFY(box.send("stale"));
        Port port;
        QVERIFY(port.open(form, 38400));
        box.take(); // the echo of what came too early
        termios settings;
        QVERIFY(tcgetattr(box.slave, &settings) == 0);
        QCOMPARE(cfgetospeed(&settings), speed_t(B38400));
        QCOMPARE(settings.c_cflag & (CSTOPB | CRTSCTS), 0u);

        QVERIFY(box.send(everyByte()));
        QTRY_COMPARE(port.got.size(), 256);
        QCOMPARE(port.got, everyByte());
        QVERIFY(port.writeData(everyByte(), true));
        QCOMPARE(box.take(), everyByte());
        QVERIFY(port.writeData("\xf0", false));
        QCOMPARE(box.take(), QByteArray("\xf0"));
        QCOMPARE(port.written, QList<QVariantList>(
                                   {{everyByte(), true, true}, {QByteArray("\xf0"), false, true}}));
        QCOMPARE(port.connection.count(), 1);
        QCOMPARE(logLines, QStringList());
    }

    void saysWhyItCannotOpen_data()
    {
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("reason");
        QTest::newRow("nothing there") << "/dev/no-such-tty"
                                       << "no such device; plug it in";
        QTest::newRow("a link to nothing") << "dangling"
                                           << "no such device; plug it in";
        QTest::newRow("below a file") << "/dev/null/tty"
                                      << "no such device; plug it in";
        QTest::newRow("a regular file") << "file"
                                        << "not a serial device; name one";
        QTest::newRow("another device") << "/dev/null"
                                        << "not a serial device; name one";
        QTest::newRow("a folder") << "/dev/pts"
                                  << "not a serial device; name one";
        QTest::newRow("held by another port") << "busy"
                                              << "busy; close the program";
        QTest::newRow("not ours") << "forbidden"
                                  << "no permission to open it; join";
        QTest::newRow("not named") << ""
                                   << "No serial device is named: name one";
    }
    void saysWhyItCannotOpen()
    {
        QFETCH(QString, device);
        QFETCH(QString, reason);
        Terminal busy, forbidden;
        Port holder;
        QVERIFY(holder.open(busy.name, 38400));
        QVERIFY(chmod(qPrintable(forbidden.name), 0) == 0);
        QTemporaryFile file;
        QVERIFY(file.open());
        const QString dangling = busy.directory.filePath("dangling");
        QVERIFY(QFile::link("/dev/no-such-tty", dangling));
        const QHash<QString, QString> made{{"dangling", dangling},
                                           {"busy", busy.link},
                                           {"forbidden", forbidden.name},
                                           {"file", file.fileName()}};
        device = made.value(device, device);

        // The superuser may open everything: be nobody meanwhile.
        const uid_t self = geteuid();
        Port port;
        if (self == 0 && device == forbidden.name)
            QVERIFY(seteuid(65534) == 0);
        const bool opened = port.open(device, 38400);
        QVERIFY(seteuid(self) == 0);
        QVERIFY(!opened);
        QCOMPARE(logLines.size(), 1);
        QVERIFY2(logLines[0].contains(device) && logLines[0].contains(reason),
                 qPrintable(logLines[0]));
        QVERIFY(!port.writeData("lost", false));
        QCOMPARE(port.written.last(), QVariantList({QByteArray("lost"), false, false}));
    }

    void isQuietAndIdleWithoutItsDevice()
    {
        Terminal box, held;
        Port lost, missing, wrong, busy, holder;
        QVERIFY(lost.open(box.link, 38400) && holder.open(held.name, 38400));
        QVERIFY(!missing.open("/dev/no-such-tty", 38400) && !wrong.open("/dev/null", 38400) &&
                !busy.open(held.name, 38400));
        box.unplug();
        QTRY_COMPARE(logLines.size(), 4);

        const std::clock_t before = std::clock();
        QTest::qWait(2200); // two more tries of each
        const double used = double(std::clock() - before) / CLOCKS_PER_SEC;
        QVERIFY2(used < 0.1, qPrintable(QString("used %1 s of processor time").arg(used)));
        QCOMPARE(logLines.size(), 4);
    }

    void comesBackWithItsDevice_data()
    {
        QTest::addColumn<QByteArray>("received");
        QTest::addColumn<int>("unsent");
        QTest::newRow("lost while idle") << QByteArray() << 0;
        QTest::newRow("lost in the middle of a frame") << QByteArray("\x2e\x30\x10") << 0;
        QTest::newRow("lost during a write") << QByteArray() << 200000;
    }
    void comesBackWithItsDevice()
    {
        QFETCH(QByteArray, received);
        QFETCH(int, unsent);
        Terminal box;
        Port port;
        QVERIFY(port.open(box.link, 38400));
        QVERIFY(box.send(received));
        QTRY_COMPARE(port.got, received);
        for (int size = 0; size < unsent && port.writeData(QByteArray(100, 'u'), false);
             size += 100) {
        }
        logLines.clear();

        box.unplug();
        QVERIFY(port.connection.wait(500));
        QCOMPARE(port.connection.last()[0].toBool(), false);
        QVERIFY(!port.writeData("lost", false));
        QCOMPARE(logLines.size(), 1);
        QVERIFY2(logLines[0].contains(box.link + ": disconnected"), qPrintable(logLines[0]));

        const QString before = box.name;
        box.plug();
        QVERIFY(box.name != before); // the link leads elsewhere now
        QVERIFY(port.connection.wait(1200));
        QCOMPARE(port.connection.last()[0].toBool(), true);
        QCOMPARE(logLines.mid(1), QStringList{"Serial device " + box.link + " is back."});
        QVERIFY(port.writeData("new", false));
        QVERIFY(box.send("box"));
        QTRY_COMPARE(port.got, received + "box");
        QCOMPARE(box.take(), QByteArray("new")); // nothing from before the loss
        QVERIFY(!port.connection.wait(1200));    // and stays
    }

    void dropsWhatADeviceDoesNotTake()
    {
        Terminal box;
        Port port;
        QVERIFY(port.open(box.name, 38400));
        for (int stalls = 1; stalls <= 2; ++stalls) {
            QByteArray accepted, arrived;
            // An odd size, so that the device takes the last chunk in part.
            const QByteArray chunk = everyByte().mid(1);
            while (port.writeData(chunk, false)) {
                accepted += chunk;
                QVERIFY(accepted.size() < 200000);
            }
            QVERIFY(!port.writeData(chunk, false));
            QTest::qWait(50); // a full device is no failed one
            QCOMPARE(logLines.size(), stalls);
            QVERIFY2(logLines.last().contains("takes no more bytes"), qPrintable(logLines.last()));
            QTRY_COMPARE((arrived += box.take()).size(), accepted.size());
            QCOMPARE(arrived, accepted);
        }
        QCOMPARE(port.connection.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestSerialPort)
#include "tst_serialport.moc"
