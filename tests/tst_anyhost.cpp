// The bench beside programs that are not its own: any host, any box, other programs that act.
#include "hosttest.h"

#include "bench/box/pseudoterminal.h"
#include "bench/box/virtualbox.h"
#include "bench/recording/trace.h"

#include <serialport.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace bench;

namespace {

// A line for the box alone, and how the answer begins.
const struct
{
    const char *name;
    QByteArray line;
    const char *answer;
} kConversation[] = {
    {"a step", "set door.rear open", "ok\n"},
    {"a value of the car", "get door.rear", "ok open\n"},
    {"the same by its whole name", "get car climate.left", "ok 21.5 \u00B0C\n"},
    {"what the box has counted", "get box.resent", "ok 0\n"},
    {"an expectation that is met", "expect car door.rear == open", "ok\n"},
    {"one that is not", "expect car door.rear == closed", "failed: expected door.rear == closed"},
    {"a frame that no host sends", "expect frame clock within 1ms", "failed: expected frame 0x82"},
    {"nothing", "", "ok\n"},
    {"a slip", "set door.reer open", "error: the car has no value 'door.reer'; did you mean"},
    {"a getter where no host is ours", "get link", "error: 'link' cannot be seen here"},
    {"an unknown name", "get nonsense", "error: "},
    {"a step of our own host", "start", "error: 'start' needs the bench's own host"},
    {"a model", "model 3", "error: the car model is chosen at the start"},
    {"too much", "events now", "error: 'now' is too much"},
    {"bytes that are no text", "say \"\xff\"", "error: this line is not UTF-8 text"},
    {"a zero byte", QByteArray("a\0b", 3), "error: this line is not UTF-8 text"},
    {"a megabyte", QByteArray(1 << 20, 'x'), "error: this line is longer than"},
    {"an escape", "\x1b[2J", "error: there is no step '\\x1b[2J'"},
};

// Arguments, with FILE, TAKEN and LINK for what is there; the code, and what is said.
const struct
{
    const char *name, *arguments;
    int code;
    const char *said;
} kRefusals[] = {
    {"a link over a file", "box --link TAKEN", 2, "exists; remove it"},
    {"a link over a foreign link", "box --link LINK", 2, "exists; remove it"},
    {"a socket over a file", "box --control TAKEN", 2, "exists; remove it"},
    {"a socket with a long name",
     "run --control /tmp/xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
     "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
     2, "1 to 107 bytes"},
    {"a link to a device", "box --device /dev/null --link x", 2, "not for a --device"},
    {"a device that is none", "box --device /dev/null", 1, "as a serial device"},
    {"a host's step at the box", "box --scenario FILE", 2, "FILE:1:1: 'start' needs"},
    {"a prompt that nobody sees", "play --device x --unattended FILE", 2,
     "FILE:2:1: 'set door.rear open' needs somebody"},
    {"a report over a file", "play --junit TAKEN FILE", 1, "use --force"},
    {"a report over the scenario", "play --force --junit FILE FILE", 1, "is read by this command"},
    {"a folder without scenarios", "play /dev", 1, "no *.scenario file"},
    {"a tap of one device", "tap x x", 2, "two devices"},
    {"a tap of one device by two names", "tap TAKEN LINK", 2, "two devices"},
    {"a tap that pulls cables", "tap --faults unplug x y", 2, "cannot have 'unplug'"},
    {"a tap of what is not there", "tap /nonexistent1 /nonexistent2", 1, "cannot open"},
    {"a tap into a file that exists", "tap --trace TAKEN /nonexistent1 /nonexistent2", 1,
     "use --force"},
    {"nobody to send to", "send /nonexistent get", 1, "cannot reach a bench"},
};

// What a frame of the host says: nothing, if box and car do not know it.
const struct
{
    const char *name;
    Outbound type;
    const char *payload, *text;
} kMeanings[] = {
    {"start", Outbound::StartStop, "01", "start"},
    {"neither start nor stop", Outbound::StartStop, "02", ""},
    {"a request", Outbound::Request, "3000", "version"},
    {"a car", Outbound::CarSelect, "07", "index 7"},
    {"a switch", Outbound::Climate, "ac0200", "the next of climate.ac"},
    {"warmer", Outbound::Climate, "ac1a00", "climate.left up"},
    {"cooler", Outbound::Climate, "ac1b00", "climate.left down"},
    {"a mode", Outbound::Climate, "ac2100", "climate.mode 3"},
    {"the end of a key", Outbound::Climate, "ac0000", "the key came up"},
    {"no key", Outbound::Climate, "ac7f00", ""},
    {"no climate", Outbound::Climate, "ad1a00", ""},
    {"a colour", Outbound::AmbientLight, "0532", "ambient.colour 5, ambient.level 50"},
    {"a unit", Outbound::Unit, "7201", "unit.temperature fahrenheit, climate.unit fahrenheit"},
    {"another unit", Outbound::Unit, "7002", "unit.pressure bar"},
    {"no unit", Outbound::Unit, "7003", ""},
    {"a tuner", Outbound::Source, "0102742700", "FM3 101.00 MHz"},
    {"a source", Outbound::Source, "07", "source 7"},
    {"a text", Outbound::SourceText, "02000000000041263a", "line 2 'A\u263A'"},
    {"a text of half a character", Outbound::SourceText, "020000000041", ""},
    {"a clock", Outbound::Clock, "1a0b170a1b00", "2026-11-23 10:27"},
    {"a type that no host sends", Outbound{0x55}, "01", ""},
};

// What a tap calls its sides.
const struct
{
    const char *name;
    bool isBox;
} kSides[] = {{"the head unit", false}, {"the box", true}};

// The last expectation of the scenario is not met.
const struct
{
    const char *name;
    bool isThere;
    int code;
    const char *told;
} kPersons[] = {
    {"somebody is there", true, 3, ":6: expected door.rear == closed, but it is open\n"},
    {"nobody is there", false, 1, ":3: the standard input has ended, and nobody is there to act"},
};

/// The bench as a process of its own.
struct Bench : QProcess
{
    /// \param output takes its standard output; then it tells nothing here.
    explicit Bench(const QStringList &arguments, const QString &output = {})
    {
        if (!output.isEmpty())
            setStandardOutputFile(output);
        start(CANBENCH, arguments);
    }
    ~Bench() override
    {
        terminate();
        waitForFinished(5000);
    }
    bool tells(const QByteArray &text)
    {
        while (!said.contains(text) && waitForReadyRead(5000))
            said += readAllStandardOutput();
        return said.contains(text);
    }
    QByteArray said;
};

// Everything of a file; what has it open for writing must be about to end.
QByteArray restOf(int descriptor)
{
    QByteArray content;
    char buffer[4096];
    for (pollfd state{descriptor, POLLIN, 0}; poll(&state, 1, 10000) > 0;) {
        const ssize_t size = read(descriptor, buffer, sizeof buffer);
        if (size <= 0)
            break;
        content.append(buffer, static_cast<int>(size));
    }
    return content;
}

// What a recording has of a direction.
QByteArray recorded(const QString &trace, bool fromBox)
{
    QByteArray bytes;
    TraceReader reader(trace);
    for (TraceLine line; reader.next(&line);)
        if (line.fromBox == fromBox)
            bytes += line.bytes;
    return bytes;
}

// The processor time of a process, in the system's ticks: the 14th and 15th of its numbers.
qint64 ticksOf(qint64 process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    const QList<QByteArray> numbers =
        file.open(QIODevice::ReadOnly) ? file.readAll().split(' ') : QList<QByteArray>();
    return numbers.value(13).toLongLong() + numbers.value(14).toLongLong();
}

/// Both ends of a tapped line.
struct Ends
{
    Ends()
    {
        QObject::connect(&host, &SerialLine::received,
                         [this](const QByteArray &b) { toHost += b; });
        QObject::connect(&box, &SerialLine::received, [this](const QByteArray &b) { toBox += b; });
    }
    /// Sends the same both ways, no more at a time than a line holds, until it is there.
    bool exchange(const QByteArray &bytes)
    {
        for (int at = 0; at < bytes.size(); at += 2000) {
            const int wanted = toBox.size() + bytes.mid(at, 2000).size();
            host.write(bytes.mid(at, 2000));
            box.write(bytes.mid(at, 2000));
            if (!QTest::qWaitFor([&] { return toBox.size() >= wanted && toHost.size() >= wanted; }))
                return false;
        }
        return true;
    }

    PseudoTerminal host, box;
    QByteArray toHost, toBox;
};

/// A client of a control channel.
struct Client
{
    explicit Client(const QString &path)
        : descriptor(socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.toLocal8Bit().constData(), sizeof address.sun_path);
        const timeval patience{5, 0};
        setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        isThere =
            ::connect(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    }
    ~Client() { close(descriptor); }
    void write(const QByteArray &bytes) const
    {
        for (ssize_t done = 0, size = 1; done < bytes.size() && size > 0; done += size)
            size = send(descriptor, bytes.constData() + done,
                        static_cast<size_t>(bytes.size() - done), MSG_NOSIGNAL);
    }
    QByteArray answer() const
    {
        QByteArray line;
        char byte = 0;
        while (byte != '\n' && read(descriptor, &byte, 1) == 1)
            line += byte;
        return line;
    }
    QByteArray ask(const QByteArray &step) const
    {
        write(step + '\n');
        return answer();
    }

    const int descriptor;
    bool isThere = false;
};

} // namespace

class AnyHostTest : public QObject
{
    Q_OBJECT

private slots:
    void aForeignHostMeetsTheBox()
    {
        const QString link = path("box"), control = path("control"), trace = path("a.trace");
        {
            Bench box({"box", "--link", link, "--control", control, "--trace", trace});
            QVERIFY(box.tells("box at /dev/pts/"));
            struct stat found;
            QCOMPARE(stat(control.toLocal8Bit().constData(), &found), 0);
            QCOMPARE(found.st_mode & 0777U, 0600U);

            canservice::SerialPort host;
            QSignalSpy heard(&host, &canservice::SerialPort::read);
            QVERIFY(host.open(link, 38400));
            QVERIFY(box.tells("host   opens the device"));
            const Client client(control); // It sees what comes from now on.
            QCOMPARE(client.ask("get box.resent"), QByteArray("ok 0\n"));
            host.writeData(QByteArray::fromHex("2E8101017C"), false);
            QCOMPARE(client.ask("expect frame start/stop 1"), QByteArray("ok\n"));
            QVERIFY(box.tells("host > 0x81 start/stop 01: start\n"));
            QTRY_VERIFY(heard.count() > 0);
            QCOMPARE(client.ask("unplug"), QByteArray("ok\n"));
            QVERIFY(!QFileInfo(link).isReadable() || !QFile(link).open(QIODevice::ReadOnly));
            QCOMPARE(client.ask("plug"), QByteArray("ok\n"));
            heard.clear();
            // By the same name; a host at work tries again.
            QTRY_VERIFY_WITH_TIMEOUT(
                (host.writeData(QByteArray::fromHex("2E8101017C"), false), heard.count() > 0),
                5000);
        }
        QVERIFY(!QFileInfo(link).isSymLink() && !QFileInfo::exists(control));
        QFile recording(trace);
        QVERIFY(recording.open(QIODevice::ReadOnly));
        QVERIFY(recording.readAll().contains("T 2E8101017C\n"));
    }

    void tellsWhatAHostDoesWrong()
    {
        Bench box({"box", "--link", path("wrong")});
        QVERIFY(box.tells("box at"));
        auto host = std::make_unique<canservice::SerialPort>();
        QVERIFY(host->open(path("wrong"), 9600));
        host->writeData(QByteArray::fromHex("2E8101017C2E8101017C"), false);
        QVERIFY(box.tells("host > noise 00 00"));
        QVERIFY(box.tells("host   speaks at 9600 baud instead of 38400\n"));
        host.reset();
        QVERIFY(box.tells("host   closes the device\n"));
        host = std::make_unique<canservice::SerialPort>();
        QVERIFY(host->open(path("wrong"), 38400));
        QVERIFY(box.tells("host   is silent\n"));
        host->writeData(QByteArray::fromHex("2E550101A8") + QByteArray(7, 'A'), false);
        QVERIFY(box.tells("box    not understood\n"));
        QVERIFY(box.tells("host > noise 41 41 41 41 41 41 41\n"));
        host->writeData(QByteArray::fromHex("2EC109010000000000410042B1"), false);
        QVERIFY(box.tells("text | AB\n"));
        host->writeData(QByteArray(7, 'A'), false);
        QVERIFY(!box.said.contains("makes noise only"));
        host->writeData("A", false);
        QVERIFY(box.tells("host   makes noise only; does it speak at 38400 baud?\n"));
    }

    void saysWhatAFrameMeans_data() { addRows(kMeanings); }
    void saysWhatAFrameMeans()
    {
        const auto &row = currentRow(kMeanings);
        QCOMPARE(VirtualBox::meaning(row.type, hex(row.payload)), QString(row.text));
    }

    void answersEachLine_data() { addRows(kConversation); }
    void answersEachLine()
    {
        const auto &row = currentRow(kConversation);
        if (!mTalk) {
            mTalk = std::make_unique<Bench>(QStringList{"box", "--control", path("talk")});
            QVERIFY(mTalk->tells("box at"));
        }
        const Client client(path("talk"));
        QVERIFY(client.isThere);
        const QByteArray answer = client.ask(row.line);
        QVERIFY2(answer.startsWith(row.answer), answer.left(200));
        QCOMPARE(client.ask("get climate.fan"), QByteArray("ok 3\n")); // And nothing else.
    }

    void clientsDoNotHarmEachOther()
    {
        Bench box({"box", "--control", path("many")});
        QVERIFY(box.tells("box at"));
        const Client good(path("many"));
        {
            const Client dies(path("many"));
            dies.write("hold 5\npress 6 for 500ms\nset drive.speed 12");
            QTest::qWait(100); // In the middle of the press.
        }
        const Client deaf(path("many"));
        QCOMPARE(deaf.ask("events"), QByteArray("ok\n"));
        for (int i = 0; i < 80; ++i) // 2.4 MB of answers that nobody reads.
            deaf.write(QByteArray("get ") + QByteArray(30000, 'x') + '\n');
        QCOMPARE(good.ask("wait 600ms"), QByteArray("ok\n"));
        QCOMPARE(good.ask("get key.pressed"), QByteArray("ok off\n"));
        QCOMPARE(good.ask("get drive.speed"), QByteArray("ok 0 km/h\n"));
        QTRY_VERIFY(send(deaf.descriptor, "x", 1, MSG_NOSIGNAL) < 0);
    }

    void theLastLineOfStandardInputEndsIt()
    {
        QProcess box;
        box.start(CANBENCH, {"box", "--control", "-"});
        box.write("set door.rear open\nwait 100ms\nget door.rear");
        box.closeWriteChannel();
        QVERIFY(box.waitForFinished(5000));
        QVERIFY(box.readAllStandardOutput().endsWith("\nok\nok\nok open\n"));
    }

    // More of them than a pipe and its writer would keep.
    void noAnswerIsLostToASlowReader()
    {
        constexpr int kCount = 300;
        const QByteArray line = "get " + QByteArray(10000, 'x') + '\n';
        const QString answers = path("answers");
        QCOMPARE(mkfifo(answers.toLocal8Bit().constData(), 0600), 0);
        const int output = open(answers.toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK);
        Bench box({"box", "--control", "-"}, answers);
        box.write(line.repeated(kCount));
        box.closeWriteChannel();
        while (box.bytesToWrite() > 0 && box.waitForBytesWritten(300)) {
            // Until all of it waits.
        }
        QVERIFY(box.bytesToWrite() > 0);
        const auto notifier = std::make_unique<QSocketNotifier>(output, QSocketNotifier::Read);
        QByteArray read;
        connect(notifier.get(), &QSocketNotifier::activated, this, [&] {
            char buffer[4096];
            const ssize_t size = ::read(output, buffer, sizeof buffer);
            read.append(buffer, static_cast<int>(qMax<ssize_t>(size, 0)));
            notifier->setEnabled(size > 0);
        });
        QTRY_COMPARE_WITH_TIMEOUT(box.state(), QProcess::NotRunning, 10000);
        QTRY_VERIFY(!notifier->isEnabled());
        close(output);
        QCOMPARE(read.count("\nerror: "), kCount);
    }

    void aLineExpectsNothingOfBeforeTheLatestStep()
    {
        QProcess host;
        host.start(CANBENCH, {"run", "--control", "-"});
        host.write("expect link == 3 within 5s\nset door.rear open\n"
                   "expect door.rear == open within 5s\nset climate.fan 5\n"
                   "expect no signal doorChanged within 1ms\n");
        host.closeWriteChannel();
        QVERIFY(host.waitForFinished(10000));
        QCOMPARE(host.readAllStandardOutput(), QByteArray("ok\nok\nok\nok\nok\n"));
    }

    void refusesBeforeAnythingRuns_data() { addRows(kRefusals); }
    void refusesBeforeAnythingRuns()
    {
        const auto &row = currentRow(kRefusals);
        const QString file = writeFile(path("f"), "start\nset door.rear open\nexpect link == 3\n");
        const QString taken = writeFile(path("taken"), "kept");
        QFile::link(taken, path("link"));
        const auto filled = [&](QString text) {
            return text.replace("FILE", file).replace("TAKEN", taken).replace("LINK", path("link"));
        };
        const Outcome outcome = run(CANBENCH, filled(row.arguments).split(' '));
        QVERIFY2(outcome.errors.contains(filled(row.said).toUtf8()), outcome.errors);
        QCOMPARE(outcome.code, row.code);
        QVERIFY(QFile(taken).size() == 4 && QFile(file).size() > 4);
        QVERIFY(QFileInfo(path("link")).isSymLink());
    }

    void aLinkWhoseProcessHasGoneIsReplaced()
    {
        QVERIFY(QFile::link("/proc/999999999/fd/3", path("stale")));
        Bench box({"box", "--link", path("stale")});
        QVERIFY(box.tells("box at"));
        QVERIFY(QFileInfo::exists(path("stale")));
    }

    void aTapSpoilsOneDirectionOnDemand()
    {
        PseudoTerminal host, box;
        Bench tap({"tap", "--faults", "checksum=1", host.device(), box.device()});
        QVERIFY(tap.tells("the box is there"));
        const QByteArray frame = hex("2e6102053c5b");
        QByteArray toBox, toHost;
        connect(&box, &SerialLine::received, this, [&](const QByteArray &b) { toBox += b; });
        connect(&host, &SerialLine::received, this, [&](const QByteArray &b) { toHost += b; });
        host.write(frame);
        box.write("\xff" + frame.left(4));
        box.write(frame.mid(4) + frame.left(2)); // A frame that does not go on is let go.
        QTRY_COMPARE(toBox, frame);
        QTRY_COMPARE(toHost.size(), 9);
        QCOMPARE(toHost.left(6), "\xff" + frame.chopped(1));
        QVERIFY(toHost.at(6) != frame.back() && toHost.endsWith(frame.left(2)));
    }

    void aTapChangesNothing()
    {
        Ends ends; // Of two cables.
        Bench tap({"tap", ends.host.device(), ends.box.device()});
        QVERIFY(tap.tells("the box is there"));
        QByteArray bytes;
        for (int i = 0; i < 3000; ++i)
            bytes += static_cast<char>(i * 7 + i / 256);
        QVERIFY(ends.exchange(bytes));
        QCOMPARE(ends.toBox, bytes);
        QCOMPARE(ends.toHost, bytes);
        tap.terminate();
        QVERIFY(tap.waitForFinished(5000));
        QCOMPARE(tap.exitCode(), 128 + 15);
    }

    // The lines that tell of these bytes are some megabytes.
    void aTapPassesWhatNobodyLooksAt()
    {
        const QString trace = path("unseen.trace");
        QCOMPARE(mkfifo(path("unseen").toLocal8Bit().constData(), 0600), 0);
        const int output = open(path("unseen").toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK);
        Ends ends;
        Bench tap({"tap", "--trace", trace, ends.host.device(), ends.box.device()}, path("unseen"));
        QTRY_VERIFY(writtenTo(trace).contains("the box is there"));
        QByteArray bytes;
        for (int i = 0; i < 60000; ++i)
            bytes += static_cast<char>(i % 2 == 0 ? 0xFF : i / 256 % 32);
        QVERIFY(ends.exchange(bytes));
        QCOMPARE(ends.toBox, bytes);
        QCOMPARE(ends.toHost, bytes);
        QCOMPARE(recorded(trace, true), bytes);
        QCOMPARE(recorded(trace, false), bytes);
        tap.terminate();
        const QByteArray lines = restOf(output);
        close(output);
        QVERIFY(lines.contains("good receipt\n"));
        QVERIFY(lines.contains("lines are left out here, because nobody read them\n"));
        QVERIFY2(lines.contains("good receipts to the box              30000\n"), lines.right(600));
    }

    void aSideGoesAndComesBack_data() { addRows(kSides); }
    void aSideGoesAndComesBack()
    {
        const auto &row = currentRow(kSides);
        Ends ends;
        PseudoTerminal &side = row.isBox ? ends.box : ends.host;
        PseudoTerminal &other = row.isBox ? ends.host : ends.box;
        // By names that lead to another terminal each time.
        Bench tap({"tap", ends.host.path(), ends.box.path()});
        QVERIFY(tap.tells("the box is there"));
        QVERIFY(ends.exchange("before"));
        side.unplug();
        QVERIFY(tap.tells(QByteArray(row.name) + " has gone"));
        other.write("for nobody");
        QElapsedTimer clock;
        clock.start();
        const qint64 ticks = ticksOf(tap.processId());
        QTest::qWait(1000);
        // A tenth of the time would be a hundred times what the four looks take.
        QVERIFY((ticksOf(tap.processId()) - ticks) * 1000 / sysconf(_SC_CLK_TCK) <
                clock.elapsed() / 10);
        tap.said.clear();
        QVERIFY(side.plug());
        QVERIFY(tap.tells(QByteArray(row.name) + " is there"));
        QVERIFY(ends.exchange("after"));
        QCOMPARE(ends.toBox, QByteArray("beforeafter"));
        QCOMPARE(ends.toHost, QByteArray("beforeafter"));
        tap.terminate();
        QVERIFY(tap.tells("for a side that was away               10\n"));
    }

    void aPersonActsForARealBox_data() { addRows(kPersons); }
    void aPersonActsForARealBox()
    {
        const auto &row = currentRow(kPersons);
        const QString scenario =
            writeFile(path("person"), "start\nexpect link == 3 within 5s\nset door.rear open\n"
                                      "set drive.speed 12\nexpect door.rear == open within 5s\n"
                                      "expect door.rear == closed\n");
        Bench box({"box", "--link", path("real"), "--control", path("at the car")});
        QVERIFY(box.tells("box at"));
        QProcess play;
        play.setReadChannel(QProcess::StandardError);
        play.start(CANBENCH, {"play", "--device", path("real"), scenario, scenario});
        QByteArray asked;
        while (!asked.contains('\n') && play.waitForReadyRead(5000))
            asked += play.readAllStandardError();
        QCOMPARE(asked, QByteArray("Open the tailgate, then press Enter.\n"));
        if (row.isThere) {
            QCOMPARE(Client(path("at the car")).ask("set door.rear open"), QByteArray("ok\n"));
            play.write("\n\n\n\n"); // Each one is for what is asked then.
        }
        play.closeWriteChannel();
        QVERIFY(play.waitForFinished(10000));
        const QByteArray told = play.readAllStandardError();
        QCOMPARE(told.count("Bring the speed to 12 km/h, then press Enter.\n"),
                 row.isThere ? 2 : 0);
        QVERIFY2(told.contains(QByteArray(scenario.toLocal8Bit()) + row.told), told);
        QCOMPARE(play.exitCode(), row.code);
    }

    void reportsForABuildServer()
    {
        QVERIFY(QDir(mFolder.path()).mkdir("set"));
        writeFile(path("set/a.scenario"),
                  "say \"<&\\\"\x01\"\nstart\nexpect link == 3 within 3s\n");
        writeFile(path("set/b.scenario"), "start\nexpect link == 3 within 3s\nsay \"gate\"\n"
                                          "set door.rear open\nexpect door.rear == closed\n"
                                          "say \"never\"\nexpect link == 3\n");
        const Outcome play = run(CANBENCH, {"play", "--junit", path("report.xml"), path("set")});
        QCOMPARE(play.code, 3);
        QVERIFY(play.output.contains("2 scenarios, 1 passed, 1 failed: " +
                                     path("set/b.scenario").toUtf8()));

        QFile file(path("report.xml"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QXmlStreamReader xml(&file);
        QStringList seen;
        while (!xml.atEnd())
            if (xml.readNext() == QXmlStreamReader::StartElement)
                seen += xml.name() + ' ' +
                        xml.attributes().value(xml.name() == "failure" ? "message" : "name");
        QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
        const QString b = path("set/b.scenario");
        QCOMPARE(seen.filter("testcase").size(), 5);
        QVERIFY(seen.contains("testcase <&\"\\x01"));
        QCOMPARE(
            seen.mid(seen.indexOf("testcase gate")),
            (QStringList{"testcase gate", "failure expected door.rear == closed, but it is open",
                         "testcase never", "skipped "}));
        const QString schema = QFINDTESTDATA("junit.xsd");
        const QStringList check{"--noout", "--schema", schema};
        QCOMPARE(run("xmllint", check + QStringList(file.fileName())).code, 0);
        const QByteArray wrong = writtenTo(file.fileName()).replace("failures=", "fails=");
        QCOMPARE(run("xmllint", check + QStringList(writeFile(path("wrong.xml"), wrong))).code, 3);
    }

private:
    static QByteArray writtenTo(const QString &name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString path(const QString &name) const { return mFolder.filePath(name); }

    QTemporaryDir mFolder;
    std::unique_ptr<Bench> mTalk;
};

QTEST_GUILESS_MAIN(AnyHostTest)
#include "tst_anyhost.moc"
