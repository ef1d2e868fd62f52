// Recordings: written and read without loss, read whatever they hold, decoded, played and exported.
#include "trace.h"
#include "traceplayer.h"
#include "tracerecorder.h"

#include <serialport.h>

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace bench;
using canservice::SerialMonitor;

namespace {

QByteArray hex(const char *digits) { return QByteArray::fromHex(digits); }

const QByteArray kLongest(kMaxTraceBytes, '\x2E');

// A start-up, a door, a bad frame, a long press that ends, a frame that does not, and a lost link.
const QByteArray kTrip = "# a trip\n"
                         "(1700000000.000000) canbox T 2E8101017C\n"
                         "(1700000000.010000) canbox R 2E300856424F582D312E30CC\n"
                         "(1700000000.011000) canbox T FF\n"
                         "(1700000000.050000) canbox R 2E2407C80000\n"
                         "(1700000000.060000) canbox R 000000000C\n"
                         "(1700000000.100000) canbox R FF002E6102053C5C\n"
                         "(1700000000.101000) canbox T F0\n"
                         "(1700000001.000000) canbox R 2E20020501D7\n"
                         "(1700000003.000000) canbox R 2E20020500D8\n"
                         "(1700000004.000000) canbox R 2E210A\n"
                         "(1700000004.100000) canbox R C885\n"
                         "(1700000005.000000) canbox R 2E6102053C5B\n"
                         "(1700000050.000000) canbox R 2E6102053C5B\n";

} // namespace

Q_DECLARE_METATYPE(bench::PlayOptions)

class TraceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void readsWhateverTheFileHolds_data();
    void readsWhateverTheFileHolds();
    void recordsWhatThePortsCarry();
    void decodesInTheTimeOfTheRecording();
    void playsAWindow_data();
    void playsAWindow();
    void slowReceiverDelaysNothingElse();
    void replaysToThePlugin();
    void stopsOnASignal();
    void candumpLogIsReadByCanUtils();
    void pcapngIsReadByTshark();
    void commandsTellWhatIsWrong_data();
    void commandsTellWhatIsWrong();

private:
    QString write(const QByteArray &content);
    QByteArray run(const QString &program, const QStringList &arguments, int expectedCode = 0);

    QTemporaryDir mDirectory;
    QByteArray mErrors; ///< Of the latest run().
};

void TraceTest::init() { QVERIFY(mDirectory.isValid()); }

QString TraceTest::write(const QByteArray &content)
{
    QFile file(mDirectory.filePath("test.trace"));
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    return written ? file.fileName() : QString();
}

QByteArray TraceTest::run(const QString &program, const QStringList &arguments, int expectedCode)
{
    QProcess process;
    process.start(program, arguments);
    const bool ended = process.waitForFinished();
    mErrors = process.readAllStandardError();
    if (!ended || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != expectedCode)
        qCritical("%s: %s, exit code %d\n%s", qUtf8Printable(program),
                  qUtf8Printable(process.errorString()), process.exitCode(), mErrors.constData());
    return process.readAllStandardOutput();
}

void TraceTest::readsWhateverTheFileHolds_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("read"); // Written again.
    QTest::addColumn<QString>("problem"); // A part of it, with the line number.

    const QByteArray good = "(1.000000) a R 2E\n";
    QTest::newRow("empty file") << QByteArray() << QByteArray() << "";
    QTest::newRow("both directions, ports and a time of zero")
        << QByteArray("(0.000000) /dev/ttyUSB0 R 00FF\n(1700000000.000001) b T F0\n")
        << QByteArray("(0.000000) /dev/ttyUSB0 R 00FF\n(1700000000.000001) b T F0\n") << "";
    QTest::newRow("another system's line ends, a byte order mark, blanks, comments, small letters")
        << QByteArray("\xEF\xBB\xBF(1.000000)  a\tR 2e \r\n\r\n  # \xC3\xA4") << good << "";
    QTest::newRow("the longest line") << "(1.000000) a R " + kLongest.toHex() + '\n'
                                      << "(1.000000) a R " + kLongest.toHex().toUpper() + '\n'
                                      << "";
    QTest::newRow("a byte too many") << good + "(1.000000) a R 2E" + kLongest.toHex() + '\n'
                                     << good << ":2: 4097 bytes";
    QTest::newRow("a line without end")
        << good + QByteArray(1'000'000, '2') << good << ":2: the line is longer";
    QTest::newRow("binary") << QByteArray("\x7F"
                                          "ELF\0\n",
                                          6)
                            << QByteArray() << ":1: this is no text";
    QTest::newRow("an escape sequence for the terminal") << good + "\n# \x1B[2J\n"
                                                         << good << ":3: this is no text";
    QTest::newRow("odd digits") << good + good + "(1.000000) a R 2E2\n"
                                << good + good << ":3: 3 hexadecimal digits";
    QTest::newRow("no digits") << QByteArray("(1.000000) a R 2G\n") << QByteArray() << ":1: '2G'";
    QTest::newRow("no bytes") << QByteArray("(1.000000) a R\n") << QByteArray() << ":1: 3 fields";
    QTest::newRow("no direction") << QByteArray("(1.000000) a X 2E\n") << QByteArray()
                                  << ":1: 'X' is no direction";
    QTest::newRow("bytes apart") << QByteArray("(1.000000) a R 2E 20\n") << QByteArray()
                                 << ":1: 5 fields";
    for (const char *time : {"1.000000", "(1.5)", "(1)", "(-1.000000)", "(.000000)", "()",
                             "(1e9.000000)", "(9999999999999.000000)", "(1,000000)"})
        QTest::newRow(qPrintable(QString("no time: %1").arg(time)))
            << good + time + " a R 2E\n"
            << good << QString(":2: '%1' is no time").arg(time);
    QTest::newRow("cut in the last line")
        << good + "(1.000000) a R 2" << good << ":2: the file ends in this line";
    QTest::newRow("cut where the last line could be whole")
        << good + good.chopped(1) << good + good << ":2: the file ends without a line end";
}

void TraceTest::readsWhateverTheFileHolds()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, read);
    QFETCH(QString, problem);

    const QString file = write(content);
    TraceReader reader(file);
    for (int pass = 0; pass < 2; ++pass) {
        QByteArray again;
        TraceLine line;
        while (reader.next(&line))
            again += traceText(line);
        QCOMPARE(again, read);
        if (problem.isEmpty())
            QCOMPARE(reader.problem(), QString());
        else
            QVERIFY2(reader.problem().startsWith(file + problem), qPrintable(reader.problem()));
        QCOMPARE(reader.note(), QString());
        QVERIFY(reader.rewind());
    }
}

void TraceTest::recordsWhatThePortsCarry()
{
    const QString file = mDirectory.filePath("recorded.trace");
    TraceRecorder recorder;
    QCOMPARE(recorder.start(file, "the box"), QString());
    SerialMonitor *monitor = SerialMonitor::instance();
    emit monitor->received(hex("2e"));
    emit monitor->written(hex("ff"), true, true);
    emit monitor->written(hex("f0"), true, false); // Dropped: it was never on the line.
    emit monitor->connectionChanged(false, "lost\nfor now");
    emit monitor->received(kLongest + hex("2a"));

    // The recorder is still at work, as in a process that is killed.
    TraceReader reader(file);
    TraceLine line;
    QByteArray bytes;
    QByteArray directions;
    qint64 last = 0;
    while (reader.next(&line)) {
        bytes += line.bytes;
        directions += line.fromBox ? 'R' : 'T';
        QCOMPARE(line.port, QByteArray("the_box"));
        QVERIFY(line.time >= last);
        last = line.time;
    }
    QCOMPARE(reader.problem(), QString());
    QCOMPARE(directions, QByteArray("RTRR"));
    QCOMPARE(bytes, hex("2eff") + kLongest + hex("2a"));
    QVERIFY(qAbs(last / 1000 - QDateTime::currentMSecsSinceEpoch()) < 60'000);

    TraceRecorder full;
    QCOMPARE(full.start("/dev/full", "box"), QString());
    emit monitor->received(hex("2e"));
    QVERIFY2(full.problem().contains("/dev/full: No space"), qPrintable(full.problem()));
}

void TraceTest::decodesInTheTimeOfTheRecording()
{
    QByteArray rows = run(CANBENCH, {"decode", "--csv", "--plugin", PLUGIN_FILE, write(kTrip)});
    rows.replace("service,signal,,notifyCanbusStatus,3", "alive");
    QCOMPARE(rows.split('\n'), QByteArray(R"(seconds,from,what,type,name,value
0.000000,host,frame,0x81,start/stop,01
0.010000,box,frame,0x30,version,56424F582D312E30
0.010000,alive
0.010000,service,signal,,sigVersionData,
0.010000,service,value,,version,VBOX-1.0
0.010000,alive
0.011000,host,good receipt,,,FF
0.060000,box,frame,0x24,doors,C8000000000000
0.060000,alive
0.060000,service,signal,,doorChanged,
0.060000,service,value,,door.left_front,true
0.060000,service,value,,door.right_front,true
0.060000,service,value,,door.rear,true
0.100000,box,noise,,,FF00
0.100000,box,bad checksum,0x61,ambient light,053C
0.101000,host,bad receipt,,,F0
1.000000,box,frame,0x20,steering-wheel key,0501
1.000000,alive
1.000000,service,signal,,keyEvent,5 0 true
2.500000,service,signal,,keyEvent,5 2 true
3.000000,box,frame,0x20,steering-wheel key,0500
3.000000,alive
3.000000,service,signal,,keyEvent,5 3 true
5.000000,box,incomplete frame,,,2E210AC885
5.000000,box,frame,0x61,ambient light,053C
5.000000,alive
5.000000,service,signal,,sigAmbientChanged,
5.000000,service,value,,ambient.colour,5
5.000000,service,value,,ambient.level,12
36.200000,service,signal,,notifyCanbusStatus,0
50.000000,box,frame,0x61,ambient light,053C
50.000000,alive
50.000000,service,signal,,sigAmbientChanged,
)")
                                   .split('\n'));
}

void TraceTest::playsAWindow_data()
{
    QTest::addColumn<PlayOptions>("options");
    QTest::addColumn<QByteArray>("played");
    QTest::addColumn<int>("shortest"); // ms

    PlayOptions whole;
    QTest::newRow("all from the box")
        << whole << hex("2e6102 053c5b 00 2e2407 c8000000000000 0c") << 300;
    PlayOptions window = whole;
    window.from = 0.1;
    window.to = 0.2;
    QTest::newRow("a window") << window << hex("2e2407c8") << 100;
    PlayOptions twice = whole;
    twice.passes = 2;
    twice.speed = 4;
    QTest::newRow("twice, four times as fast")
        << twice << hex("2e6102053c5b002e2407c80000000000000c2e6102053c5b002e2407c80000000000000c")
        << 150;
    PlayOptions doors = whole;
    doors.only = {0x24};
    QTest::newRow("doors alone") << doors << hex("2e2407c80000000000000c") << 300;
    PlayOptions toBox = whole;
    toBox.fromBox = false;
    QTest::newRow("what went to the box") << toBox << hex("ff") << 300;
}

void TraceTest::playsAWindow()
{
    QFETCH(PlayOptions, options);
    QFETCH(QByteArray, played);
    QFETCH(int, shortest);

    const QString file = write("(7.000000) a R 2E6102053C\n"
                               "(7.050000) a R 5B00\n"
                               "(7.150000) a R 2E2407C8\n"
                               "(7.140000) a T FF\n" // Time goes back here.
                               "(7.300000) a R 0000000000000C\n");
    TracePlayer player(file, options);
    QCOMPARE(player.prepare(), QString());
    QByteArray bytes;
    connect(&player, &TracePlayer::chunk, this, [&](const QByteArray &chunk) { bytes += chunk; });
    QSignalSpy finished(&player, &TracePlayer::finished);
    QElapsedTimer clock;
    clock.start();
    player.start();
    QVERIFY(finished.wait());
    QVERIFY(clock.elapsed() >= shortest);
    QCOMPARE(bytes.toHex(), played.toHex());
    QVERIFY(player.note().startsWith(file + ":4: the time goes back"));
}

void TraceTest::slowReceiverDelaysNothingElse()
{
    QByteArray content;
    for (int i = 0; i <= 20; ++i)
        content += "(0." + QByteArray::number(i * 20'000).rightJustified(6, '0') + ") a R 2E\n";
    TracePlayer player(write(content), {});
    QCOMPARE(player.prepare(), QString());
    // 21 times 15 ms of work and 20 pauses of 20 ms: 0.4 s, and 0.7 s if delays added up.
    connect(&player, &TracePlayer::chunk, this, [] { QTest::qSleep(15); });
    QSignalSpy finished(&player, &TracePlayer::finished);
    player.start();
    QVERIFY(finished.wait());
    QVERIFY2(player.elapsed() < 0.6, qPrintable(QString::number(player.elapsed())));
    QCOMPARE(player.chunks(), 21);
}

void TraceTest::replaysToThePlugin()
{
    const QByteArray output = run(CANBENCH, {"replay", "--speed", "1000", "--only", "doors",
                                             "--plugin", PLUGIN_FILE, write(kTrip)});
    QVERIFY2(output.contains("doorChanged             door.left_front: false -> true"), output);
    QVERIFY(!output.contains("keyEvent"));
    QVERIFY2(!mErrors.contains("left"), mErrors); // No progress but on a terminal.
}

void TraceTest::stopsOnASignal()
{
    QProcess process;
    process.start(CANBENCH, {"replay", "--loop", "0", "--plugin", PLUGIN_FILE, write(kTrip)});
    QByteArray output;
    QTRY_VERIFY((output += process.readAllStandardOutput()).contains("sigVersionData"));
    process.terminate();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 128 + 15);
    QVERIFY(process.readAllStandardOutput().contains("frames from the box"));
}

void TraceTest::candumpLogIsReadByCanUtils()
{
    const QString log = mDirectory.filePath("trip.log");
    run(CANBENCH, {"export", "--format", "candump", "-o", log, write(kTrip)});
    const QByteArray text = run("log2asc", {"-I", log, "canbox"});
    QVERIFY2(text.contains("   0.000000 1  200             Rx   d 5 2E 81 01 01 7C\n"
                           "   0.010000 1  100             Rx   d 8 2E 30 08 56 42 4F 58 2D\n"
                           "   0.010000 1  101             Rx   d 4 31 2E 30 CC\n"
                           "   0.011000 1  200             Rx   d 1 FF\n"),
             text);
    QVERIFY2(text.endsWith("  50.000000 1  100             Rx   d 6 2E 61 02 05 3C 5B\n"), text);
    QCOMPARE(text.count(" Rx "), 14);
}

void TraceTest::pcapngIsReadByTshark()
{
    const QString file = mDirectory.filePath("trip.pcapng");
    run(CANBENCH, {"export", "--format", "pcapng", "-o", file,
                   write(kTrip + "(1700000051.000000) b R 00\n")});
    const QByteArray text = run("tshark", {"-r", file, "-T", "fields", "-e", "frame.time_epoch",
                                           "-e", "frame.interface_name", "-e",
                                           "frame.packet_flags_direction", "-e", "data.data"});
    QVERIFY2(text.startsWith("1700000000.000000000\tcanbox\t0x00000002\t2e8101017c\n"
                             "1700000000.010000000\tcanbox\t0x00000001\t2e300856424f582d312e30cc\n"
                             "1700000000.011000000\tcanbox\t0x00000002\tff\n"),
             text);
    QVERIFY2(text.endsWith("\n1700000051.000000000\tb\t0x00000001\t00\n"), text);
    QCOMPARE(text.count('\n'), 14);
}

void TraceTest::commandsTellWhatIsWrong_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("output"); // A part of it; what could be read is shown.
    QTest::addColumn<QString>("error");  // The same.

    const QString missing = mDirectory.filePath("missing");
    QTest::newRow("no file") << QStringList{"decode"} << 2 << ""
                             << "name the trace";
    QTest::newRow("missing file") << QStringList{"decode", missing} << 1 << ""
                                  << "No such file";
    QTest::newRow("a directory") << QStringList{"decode", "/"} << 1 << ""
                                 << "is a directory";
    QTest::newRow("damaged trace is decoded to the damage")
        << QStringList{"decode", "TRACE"} << 1 << "0x61 ambient light 05 3C"
        << "test.trace:2: ";
    QTest::newRow("damaged trace is replayed to the damage")
        << QStringList{"replay", "--loop", "0", "TRACE"} << 1 << "sigAmbientChanged"
        << "test.trace:2: ";
    QTest::newRow("damaged trace is exported to the damage")
        << QStringList{"export", "--format", "candump", "TRACE"} << 1
        << "(1.000000) a 100#2E6102053C5B"
        << "test.trace:2: ";
    QTest::newRow("unknown format") << QStringList{"export", "--format", "pcap", "TRACE"} << 2 << ""
                                    << "--format needs candump or pcapng";
    QTest::newRow("no room") << QStringList{"export", "--format",  "pcapng",
                                            "-o",     "/dev/full", "TRACE"}
                             << 1 << ""
                             << "/dev/full: No space";
    QTest::newRow("unknown type") << QStringList{"replay", "--only", "0x24,wheels", "TRACE"} << 2
                                  << ""
                                  << "no frame type 'wheels'";
    QTest::newRow("no speed") << QStringList{"replay", "--speed", "0", "TRACE"} << 2 << ""
                              << "--speed needs";
    QTest::newRow("window behind the end")
        << QStringList{"replay", "--from", "9", "TRACE"} << 1 << ""
        << "ends after 0.000000 s";
    QTest::newRow("missing device")
        << QStringList{"replay", "--device", missing, "TRACE"} << 1 << ""
        << "no such device";
}

void TraceTest::commandsTellWhatIsWrong()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, output);
    QFETCH(QString, error);
    const QString file = write("(1.000000) a R 2E6102053C5B\n(oops) a R 2E\n");
    arguments.replaceInStrings("TRACE", file);

    QProcess process;
    process.start(CANBENCH, arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), code);
    const QString said = process.readAllStandardOutput();
    QVERIFY2(said.contains(output), qPrintable(said));
    const QString complained = process.readAllStandardError();
    QVERIFY2(complained.contains(error), qPrintable(complained));
}

QTEST_GUILESS_MAIN(TraceTest)
#include "tst_trace.moc"
