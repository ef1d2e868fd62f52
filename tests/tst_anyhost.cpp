// The bench beside programs that are not its own: any host, any box, other programs that act.
#include "hosttest.h"

#include "bench/box/pseudoterminal.h"

#include <serialport.h>

#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QXmlStreamReader>

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
    {"a tap that pulls cables", "tap --faults unplug x y", 2, "cannot have 'unplug'"},
    {"a tap of what is not there", "tap /nonexistent1 /nonexistent2", 1, "cannot open"},
    {"nobody to send to", "send /nonexistent get", 1, "cannot reach a bench"},
};

/// The bench as a process of its own.
struct Bench : QProcess
{
    explicit Bench(const QStringList &arguments) { start(CANBENCH, arguments); }
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
        PseudoTerminal host, box; // Their ends of two cables.
        Bench tap({"tap", host.device(), box.device()});
        QVERIFY(tap.tells("the box is there"));
        QByteArray toBox, toHost, bytes;
        connect(&box, &SerialLine::received, this, [&](const QByteArray &b) { toBox += b; });
        connect(&host, &SerialLine::received, this, [&](const QByteArray &b) { toHost += b; });
        for (int i = 0; i < 3000; ++i)
            bytes += static_cast<char>(i * 7 + i / 256);
        for (int at = 0; at < bytes.size(); at += 100) {
            host.write(bytes.mid(at, 100));
            box.write(bytes.mid(at, 100));
            QTest::qWait(2);
        }
        QTRY_COMPARE(toBox, bytes);
        QTRY_COMPARE(toHost, bytes);
        tap.terminate();
        QVERIFY(tap.waitForFinished(5000));
        QCOMPARE(tap.exitCode(), 128 + 15);
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
        QCOMPARE(run("xmllint", {"--noout", "--schema", schema, path("report.xml")}).code, 0);
    }

private:
    QString path(const QString &name) const { return mFolder.filePath(name); }

    QTemporaryDir mFolder;
    std::unique_ptr<Bench> mTalk;
};

QTEST_GUILESS_MAIN(AnyHostTest)
#include "tst_anyhost.moc"
