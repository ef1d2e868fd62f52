// The stand-in's serial port against pseudo terminals: bytes, bad devices, loss and return.
#include "rows.h"

#include "bench/box/pseudoterminal.h"
#include "bench/headunit/servicetime.h"
#include "host/serialport.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <algorithm>
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <numeric>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using canservice::SerialMonitor;
using canservice::SerialPort;

// Stand before the C library's own, which do the rest.
static int sTaken = -1; // What the next writes take at most, byte by byte counted; -1: no limit.
static bool sRefuse = false; // What is beyond that is refused, or else taken as nothing.
static size_t sAtOnce = SIZE_MAX;
static int sTerminalError = 0, sSettingsError = 0;

extern "C" ssize_t write(int file, const void *bytes, size_t size)
{
    if (sTaken < 0)
        return syscall(SYS_write, file, bytes, std::min(size, sAtOnce));
    if (sTaken == 0 && sRefuse) {
        errno = EAGAIN;
        return -1;
    }
    const size_t taken = std::min(size, static_cast<size_t>(sTaken));
    sTaken -= static_cast<int>(taken);
    return taken == 0 ? 0 : syscall(SYS_write, file, bytes, taken);
}

extern "C" int isatty(int file) noexcept
{
    termios settings;
    errno = sTerminalError != 0 ? sTerminalError : ENOTTY;
    return sTerminalError == 0 && tcgetattr(file, &settings) == 0;
}

extern "C" int tcsetattr(int file, int when, const termios *settings) noexcept
{
    static const auto next = reinterpret_cast<decltype(&tcsetattr)>(dlsym(RTLD_NEXT, "tcsetattr"));
    errno = sSettingsError;
    return sSettingsError == 0 ? next(file, when, settings) : -1;
}

namespace {

// A device without a cable, and what has arrived there.
struct Box : bench::PseudoTerminal
{
    Box()
    {
        connect(this, &PseudoTerminal::received, this, [this](const QByteArray &b) { got += b; });
    }
    // The device that the link leads to.
    QString name() const { return QFileInfo(path()).canonicalFilePath(); }

    QByteArray got;
};

QByteArray everyByte()
{
    QByteArray bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    return bytes;
}

// A device, and why it cannot be opened.
const Case kFailures[] = {
    {"nothing there", "/dev/no-such-tty", "no such device; plug it in"},
    {"a link to nothing", "dangling", "no such device; plug it in"},
    {"below a file", "/dev/null/tty", "no such device; plug it in"},
    {"a regular file", PLUGIN_FILE, "not a serial device; name one"},
    {"another device", "/dev/null", "not a serial device; name one"},
    {"a folder", "/dev/pts", "not a serial device; name one"},
    {"held by another port", "busy", "busy; close the program"},
    {"not ours", "forbidden", "no permission to open it; join"},
    {"not named", "", "No serial device is named: name one"},
};

QStringList logLines;

// Counts what the event loop hears of files: a terminal that has hung up has something to say at
// each turn.
struct Notices : QObject
{
    Notices() { qApp->installEventFilter(this); }
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::SockAct;
        return false;
    }
    int count = 0;
};

void takeTurns()
{
    for (int turn = 0; turn < 10; ++turn)
        QCoreApplication::processEvents();
}

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

    void opensEveryFormOfAName()
    {
        Box box;
        SerialPort::setDefaultDevice(box.name());
        for (const QString &form : {box.name(), box.name().mid(5), box.path(), QString()})
            QVERIFY2(Port().open(form, 38400), qPrintable(form + logLines.join(' ')));
    }

    void carriesEveryByteBothWays()
    {
        Box box;
        SerialPort::setDefaultDevice("/dev/null"); // The name that is given comes first.
        box.write("stale");
        {
            Port slow;
            for (const int speed :
                 {1200, 2400, 4800, 9600, 38400, 57600, 115200, 230400, 460800, 921600, 19200}) {
                QVERIFY(slow.open(box.path(), speed));
                QCOMPARE(box.otherSpeed(), speed);
            }
            termios settings;
            const int device = ::open(qPrintable(box.path()), O_RDWR | O_NOCTTY);
            QVERIFY(tcgetattr(device, &settings) == 0 && ::close(device) == 0);
            QCOMPARE(cfgetospeed(&settings), speed_t(B19200));
            QCOMPARE(settings.c_cflag & (CSTOPB | CRTSCTS), 0u);
        }
        Port port;
        QVERIFY(port.open(box.path(), 38400));
        box.write(everyByte());
        QTRY_COMPARE(port.got.size(), 256);
        QCOMPARE(port.got, everyByte());
        QVERIFY(port.writeData(everyByte(), true));
        QTRY_COMPARE(box.got, everyByte());
        QVERIFY(port.writeData("\xf0", false));
        QCOMPARE(port.written, QList<QVariantList>(
                                   {{everyByte(), true, true}, {QByteArray("\xf0"), false, true}}));
        QCOMPARE(port.connection.count(), 1);
        QCOMPARE(logLines, QStringList());
        port.open("/dev/null", 38400); // A written byte is out, without a turn of the event loop.
        QTRY_COMPARE(box.got, everyByte() + "\xf0");
    }

    void saysWhyItCannotOpen_data() { addRows(kFailures); }
    void saysWhyItCannotOpen()
    {
        const auto &row = currentRow(kFailures);
        Box busy, forbidden;
        auto holder = std::make_unique<Port>();
        QVERIFY(holder->open(busy.name(), 38400));
        const pid_t child = fork();
        if (child == 0) { // Its end takes nothing from the parent.
            holder.reset();
            _exit(0);
        }
        QCOMPARE(waitpid(child, nullptr, 0), child);
        QVERIFY(chmod(qPrintable(forbidden.name()), 0) == 0);
        const QTemporaryDir directory;
        const QString dangling = directory.filePath("dangling");
        QVERIFY(QFile::link("/dev/no-such-tty", dangling));
        const QHash<QString, QString> made{
            {"dangling", dangling}, {"busy", busy.path()}, {"forbidden", forbidden.name()}};
        const QString device = made.value(row.given, row.given);

        // The superuser may open everything: be nobody meanwhile.
        const uid_t self = geteuid();
        Port port;
        if (self == 0 && device == forbidden.name())
            QVERIFY(seteuid(65534) == 0);
        const bool opened = port.open(device, 38400);
        QVERIFY(seteuid(self) == 0);
        QVERIFY(!opened);
        QCOMPARE(logLines.size(), 1);
        QVERIFY2(logLines[0].contains(device) && logLines[0].contains(row.expected),
                 qPrintable(logLines[0]));
        QVERIFY(!port.writeData("lost", false));
        QCOMPARE(port.written.last(), QVariantList({QByteArray("lost"), false, false}));
    }

    void isQuietAndIdleWithoutItsDevice()
    {
        Box box, held;
        Port lost, missing, wrong, busy, holder;
        QVERIFY(lost.open(box.path(), 38400) && holder.open(held.name(), 38400));
        QVERIFY(!missing.open("/dev/no-such-tty", 38400) && !wrong.open("/dev/null", 38400) &&
                !busy.open(held.name(), 38400));
        box.unplug();
        QTRY_COMPARE(logLines.size(), 4);

        bench::ServiceTime().advance(2200000); // two more tries of each
        const Notices notices;
        takeTurns();
        QCOMPARE(notices.count, 0);
        QCOMPARE(logLines.size(), 4);
    }

    void comesBackWithItsDevice_data()
    {
        QTest::addColumn<int>("unsent");
        QTest::newRow("lost in the middle of a frame") << 0;
        QTest::newRow("lost during a write") << 200000;
    }
    void comesBackWithItsDevice()
    {
        QFETCH(int, unsent);
        const QByteArray received = "\x2e\x30\x10";
        Box box;
        Port port;
        QVERIFY(port.open(box.path(), 38400));
        box.write(received);
        QTRY_COMPARE(port.got, received);
        box.setReading(false);
        for (int size = 0; size < unsent && port.writeData(QByteArray(100, 'u'), false);
             size += 100) {
        }
        logLines.clear();

        // Its number is not given again while it is open.
        const QString before = box.name();
        const int last = ::open(qPrintable(before), O_RDWR | O_NOCTTY);
        box.unplug();
        QTRY_COMPARE(port.connection.last()[0].toBool(), false);
        QVERIFY(!port.writeData("lost", false));
        QCOMPARE(logLines.size(), 1);
        QVERIFY2(logLines[0].contains(box.path() + ": disconnected"), qPrintable(logLines[0]));

        box.setReading(true);
        QVERIFY(box.plug() && ::close(last) == 0);
        QVERIFY(box.name() != before);         // the link leads elsewhere now
        bench::ServiceTime().advance(1050000); // The next try, which may be 5 % late.
        QCOMPARE(port.connection.last()[0].toBool(), true);
        QCOMPARE(logLines.mid(1), QStringList{"Serial device " + box.path() + " is back."});
        QVERIFY(port.writeData("new", false));
        box.write("box");
        QTRY_COMPARE(port.got, received + "box");
        QTRY_COMPARE(box.got, QByteArray("new")); // nothing from before the loss
        bench::ServiceTime().advance(2200000);
        QCOMPARE(port.connection.count(), 3); // and stays
    }

    void tellsWhatTheSystemSays()
    {
        const struct
        {
            const char *device;
            int terminal, settings; // The errors.
            const char *said;
        } rows[] = {
            {"/dev/null", EIO, 0, "it has hung up; plug it in again"},
            {"/dev/null", EINVAL, 0, "not a serial device"},
            {"/dev/null", EMFILE, 0, "Too many open files"},
            {nullptr, 0, EIO, "Input/output error"},
        };
        const Box box;
        for (const auto &row : rows) {
            sTerminalError = row.terminal;
            sSettingsError = row.settings;
            const bool opened = Port().open(row.device ? row.device : box.path(), 38400);
            sTerminalError = sSettingsError = 0;
            QVERIFY(!opened);
            QVERIFY2(logLines.last().contains(row.said), qPrintable(logLines.last()));
        }
    }

    void refusesASpeedThatIsNone()
    {
        Box box;
        Port port;
        QVERIFY(!port.open("/dev/no-such-tty", 38400));
        for (const int speed : {-1, 0}) {
            QVERIFY(!port.open(box.path(), speed));
            QVERIFY(logLines.takeLast().contains(QString(": %1 baud is no speed").arg(speed)));
        }
        bench::ServiceTime().advance(2200000); // Another try would not help.
        QCOMPARE(port.connection.count(), 1);
        QVERIFY(port.open(box.path(), 1));
    }

    // Each way to take a write in part: the rest goes out later and nothing twice, unless the
    // device takes none without an error.
    void keepsTheOrderOfARefusedRest()
    {
        Box box;
        Port port;
        QVERIFY(port.open(box.path(), 38400));
        for (const bool refuse : {true, false}) {
            for (int taken = 0; taken < 4; ++taken) {
                box.got.clear();
                sTaken = taken;
                sRefuse = refuse;
                QCOMPARE(port.writeData("abcd", false), refuse);
                sTaken = -1;
                QVERIFY(port.writeData("ef", false));
                QTRY_COMPARE(box.got, (refuse ? "abcd" : QByteArray("abcd").left(taken)) + "ef");
            }
        }
        QCOMPARE(logLines.size(), 4); // A stall each, which the next write ends.
        box.got.clear();
        sAtOnce = 3; // Piece by piece, but all of it and nothing beyond.
        QVERIFY(port.writeData("ijkl", false));
        sAtOnce = SIZE_MAX;
        QTRY_COMPARE(box.got, QByteArray("ijkl"));
        sTaken = 0;
        sRefuse = true;
        QVERIFY(port.writeData(QByteArray(4096, 'g'), false)); // As much as may wait.
        QVERIFY(!port.writeData("h", false));
        sTaken = -1;
        QCOMPARE(port.connection.count(), 1);
    }

    void tellsOfAStallOnce()
    {
        Box box;
        Port port;
        for (int opened = 1; opened <= 2; ++opened) {
            QVERIFY(port.open(box.path(), 38400)); // Which ends a stall, as the next write does.
            QVERIFY(!port.writeData(QByteArray(4097, 'b'), false));
            sTaken = 0;
            sRefuse = true;
            QVERIFY(port.writeData("a", false)); // While a byte waits, the stall is the same.
            for (int again = 0; again < 2; ++again) {
                QVERIFY(!port.writeData(QByteArray(4096, 'b'), false));
                QVERIFY(port.writeData("", false));
            }
            sTaken = -1;
            QCOMPARE(logLines.size(), 2 * opened);
        }
    }

    void dropsWhatADeviceDoesNotTake()
    {
        Box box;
        Port port;
        QVERIFY(port.open(box.path(), 38400));
        QByteArray accepted;
        for (int stalls = 1; stalls <= 2; ++stalls) {
            box.setReading(false);
            // An odd size, so that the device takes the last chunk in part.
            const QByteArray chunk = everyByte().mid(1);
            while (port.writeData(chunk, false)) {
                accepted += chunk;
                QVERIFY(accepted.size() < 200000);
            }
            QVERIFY(!port.writeData(chunk, false));
            takeTurns(); // a full device is no failed one
            QCOMPARE(logLines.size(), stalls);
            QVERIFY2(logLines.last().contains("takes no more bytes"), qPrintable(logLines.last()));
            box.setReading(true);
            QTRY_COMPARE(box.got.size(), accepted.size());
            QCOMPARE(box.got, accepted);
        }
        QCOMPARE(port.connection.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestSerialPort)
#include "tst_serialport.moc"
