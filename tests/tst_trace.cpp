// Recordings: written and read without loss, read whatever they hold, decoded, played and exported.
#include "hosttest.h"

#include "bench/recording/reduction.h"
#include "bench/recording/traceplayer.h"
#include "bench/recording/tracerecorder.h"

#include <serialport.h>

#include <QSignalSpy>

#include <algorithm>
#include <array>
#include <map>
#include <set>

using namespace bench;
using canservice::SerialMonitor;

namespace {

// A start-up, a door, a bad frame, a long press that ends, a frame that does not, and a lost link.
const QByteArray kTrip = "# a trip\n"
                         "(1700000000.000000) canbox T 2E8101017C\n"
                         "(1700000000.010000) canbox R 2E300856424F582D312E30CC\n"
                         "(1700000000.011000) canbox T FF\n"
                         "(1700000000.050000) canbox R 2E240708000000\n"
                         "(1700000000.060000) canbox R 000000CC\n"
                         "(1700000000.100000) canbox R FF002E6102053C5C\n"
                         "(1700000000.101000) canbox T F0\n"
                         "(1700000001.000000) canbox R 2E20020501D7\n"
                         "(1700000003.000000) canbox R 2E20020500D8\n"
                         "(1700000004.000000) canbox R 2E210A\n"
                         "(1700000004.100000) canbox R C885\n"
                         "(1700000005.000000) canbox R 2E6102053C5B\n"
                         "(1700000050.000000) canbox R 2E6102053C5B\n";

// The same as rows of its decoding, without the link code that comes with each good frame.
const QByteArray kDecodedTrip = R"(seconds,epoch,source,kind,name,value,unit
0.000000,1700000000.000000,host,frame,start/stop,01,hex
0.010000,1700000000.010000,box,frame,version,56424F582D312E30,hex
0.010000,1700000000.010000,service,signal,sigVersionData,,
0.010000,1700000000.010000,service,value,version,VBOX-1.0,
0.011000,1700000000.011000,host,good receipt,,FF,hex
0.060000,1700000000.060000,box,frame,doors,08000000000000,hex
0.060000,1700000000.060000,service,signal,doorChanged,,
0.060000,1700000000.060000,service,value,door.rear,1,
0.100000,1700000000.100000,box,noise,,FF00,hex
0.100000,1700000000.100000,box,bad checksum,ambient light,053C,hex
0.101000,1700000000.101000,host,bad receipt,,F0,hex
1.000000,1700000001.000000,box,frame,steering-wheel key,0501,hex
1.000000,1700000001.000000,service,signal,keyEvent,"5, 0, true",
2.500000,1700000002.500000,service,signal,keyEvent,"5, 2, true",
3.000000,1700000003.000000,box,frame,steering-wheel key,0500,hex
3.000000,1700000003.000000,service,signal,keyEvent,"5, 3, true",
5.000000,1700000005.000000,box,incomplete frame,,2E210AC885,hex
5.000000,1700000005.000000,box,frame,ambient light,053C,hex
5.000000,1700000005.000000,service,signal,sigAmbientChanged,,
5.000000,1700000005.000000,service,value,ambient.colour,5,
5.000000,1700000005.000000,service,value,ambient.level,12,
36.200000,1700000036.200000,service,signal,notifyCanbusStatus,0,
50.000000,1700000050.000000,box,frame,ambient light,053C,hex
50.000000,1700000050.000000,service,signal,sigAmbientChanged,,
)";

const QByteArray kLongest(kMaxTraceBytes, '\x2E');
const QByteArray kLine = "(1.000000) a R 2E\n";
const QByteArray kTwoLines = "(0.000000) /dev/ttyUSB0 R 00FF\n(1700000000.000001) b T F0\n";

// What a file holds; what is read of it, written again; and a part of the problem with it.
const struct
{
    const char *name;
    QByteArray content, read;
    const char *problem;
} kFiles[] = {
    {"empty file", "", "", ""},
    {"both directions, ports and a time of zero", kTwoLines, kTwoLines, ""},
    {"other line ends, a byte order mark, blanks, comments, small letters",
     "\xEF\xBB\xBF(1.000000)  a\tR 2e \r\n\r\n  # \xC3\xA4", kLine, ""},
    {"the longest line", "(1.000000) a R " + kLongest.toHex() + '\n',
     "(1.000000) a R " + kLongest.toHex().toUpper() + '\n', ""},
    {"a byte too many", kLine + "(1.000000) a R 2E" + kLongest.toHex() + '\n', kLine,
     ":2: 4097 bytes"},
    {"a line without end", kLine + QByteArray(1'000'000, '2'), kLine, ":2: the line is longer"},
    {"binary", QByteArray("\x7F\x45LF\0\n", 6), "", ":1: this is no text"},
    {"an escape sequence for the terminal", kLine + "\n# \x1B[2J\n", kLine, ":3: this is no text"},
    {"the longest port", "(1.000000) " + QByteArray(255, 'p') + " R 2E\n",
     "(1.000000) " + QByteArray(255, 'p') + " R 2E\n", ""},
    {"a port that is longer", "(1.000000) " + QByteArray(256, 'p') + " R 2E\n", "",
     ":1: 'pppppppppppppppppppppppp...' is no port; its name has 1 to 255 letters of ASCII"},
    {"odd digits", kLine + kLine + "(1.000000) a R 2E2\n", kLine + kLine, ":3: 3 hexadecimal"},
    {"no digits", "(1.000000) a R 2G\n", "", ":1: '2G'"},
    {"no bytes", "(1.000000) a R\n", "", ":1: 3 fields"},
    {"no direction", "(1.000000) a X 2E\n", "", ":1: 'X' is no direction"},
    {"time with another fraction", "(1.5) a R 2E\n", "", ":1: '(1.5)' is no time"},
    {"time without fraction", "(1) a R 2E\n", "", ":1: '(1)' is no time"},
    {"time that does not begin", "1.000000) a R 2E\n", "", ":1: '1.000000)' is no time"},
    {"time without seconds", "(.000000) a R 2E\n", "", ":1: '(.000000)' is no time"},
    {"the latest time", "(999999999999.999999) a R 2E\n", "(999999999999.999999) a R 2E\n", ""},
    {"time beyond a number", "(9999999999999.000000) a R 2E\n", "", ":1: '(9999999999999"},
    {"cut in the last line", kLine + "(1.000000) a R 2", kLine, ":2: the file ends in this line"},
    {"cut where the last line could be whole", kLine + kLine.chopped(1), kLine + kLine,
     ":2: the file ends without a line end"},
};

// A packet from the box and one from the host, and what a byte at a place makes of them.
const QByteArray kPackets = hex("0a0d0d0a2c000000 4d3c2b1a01000000ffffffffffffffff"
                                "0400080063616e62656e6368000000002c000000"
                                "0100000020000000 9300000000000000"
                                "02000100610000000000000020000000"
                                "0600000030000000 000000000000000040420f000100000001000000"
                                "2e000000020004000100000000000000 30000000"
                                "0100000020000000 9300000000000000"
                                "02000100620000000000000020000000"
                                "0600000030000000 010000000000000060e316000100000001000000"
                                "ff000000020004000200000000000000 30000000"
                                "63000000 0c000000 0c000000"); // A block that nobody knows.
const QByteArray kBoth = "(1.000000) a R 2E\n(1.500000) b T FF\n";
const struct
{
    const char *name;
    int at;
    char byte;
    QByteArray read;
    const char *problem;
} kPatches[] = {
    {"as exported", 0x00, '\x0a', kBoth, ""},
    {"another byte order", 0x08, '\x4e', "", "its byte order is not"},
    {"a length that is no multiple of 4", 0x04, '\x2d', "", "the file is damaged"},
    {"a length below the least", 0x04, '\x08', "", "the file is damaged"},
    {"a length beyond the file", 0x52, '\x01', "", "the file is damaged"},
    {"two lengths of a block", 0xc8, '\x34', kBoth.left(18), "the file is damaged"},
    {"another kind of packets", 0x34, '\x94', "", "its packets are no chunks"},
    {"nanoseconds", 0x3c, '\x09', "", "its times are not in microseconds"},
    {"no name", 0x3c, '\x01', "(1.000000) pcapng R 2E\n(1.500000) b T FF\n", ""},
    {"a name with a blank", 0x40, ' ', "(1.000000) _ R 2E\n(1.500000) b T FF\n", ""},
    {"an interface to come", 0x54, '\x01', "", "an interface that the file does not have"},
    {"a time far off", 0x5b, '\x10', "", "a time that no clock shows"},
    {"4294.967296 s later", 0x58, '\x01', "(4295.967296) a R 2E\n(1.500000) b T FF\n", ""},
    {"all bytes of a word", 0x60, '\x04', "(1.000000) a R 2E000000\n(1.500000) b T FF\n", ""},
    {"no bytes", 0x60, '\x00', "(1.500000) b T FF\n", ""},
    {"more bytes than the block has", 0x60, '\x7f', "", "a packet has 127 bytes"},
    {"no direction", 0x70, '\x00', kBoth, ""},
    {"both directions", 0x70, '\x03', kBoth, ""},
    {"the other direction", 0x70, '\x02', "(1.000000) a T 2E\n(1.500000) b T FF\n", ""},
};

const struct
{
    const char *name;
    PlayOptions options;
    const char *played;
} kPlays[] = {
    {"all from the box", {}, "0 2e6102053c, 50 5b00, 150 2e2407c8, 300 0000000000000c"},
    {"a window", {1, 1, 0.1, 0.2, true, {}}, "50 2e2407c8"},
    {"twice, four times as fast",
     {4, 2, 0, 1, true, {}},
     "0 2e6102053c, 15 5b00, 40 2e2407c8, 75 0000000000000c, "
     "80 2e6102053c, 90 5b00, 115 2e2407c8, 150 0000000000000c"},
    {"doors alone", {1, 1, 0, 1, true, {0x24}}, "300 2e2407c80000000000000c"},
    {"what went to the box", {1, 1, 0, 1, false, {}}, "150 ff"},
};

// Programs that read a log of CAN frames, and how what they make of the trip begins and ends.
const struct
{
    const char *name, *command, *begin, *end;
} kLogReaders[] = {
    {"log2asc", "log2asc -I LOG canbox | sed 1,3d",
     "   0.000000 1  200             Rx   d 5 2E 81 01 01 7C\n"
     "   0.010000 1  100             Rx   d 8 2E 30 08 56 42 4F 58 2D\n"
     "   0.010000 1  101             Rx   d 4 31 2E 30 CC\n",
     "  50.000000 1  100             Rx   d 6 2E 61 02 05 3C 5B\n"},
    {"log2long", "log2long <LOG",
     "(1700000000.000000)  canbox       200   [5]  2E 81 01 01 7C            '....|'\n"
     "(1700000000.010000)  canbox       100   [8]  2E 30 08 56 42 4F 58 2D   '.0.VBOX-'\n"
     "(1700000000.010000)  canbox       101   [4]  31 2E 30 CC               '1.0.'\n",
     "(1700000050.000000)  canbox       100   [6]  2E 61 02 05 3C 5B         '.a..<['\n"},
    {"python-can", // The system's Python has it.
     "/usr/bin/python3 -c '\nimport can\nfor frame in can.LogReader(\"LOG\"):\n"
     " print(\"%.2f\" % frame.timestamp, frame.channel, \"%X\" % frame.arbitration_id,"
     " frame.data.hex())'",
     "1700000000.00 canbox 200 2e8101017c\n1700000000.01 canbox 100 2e300856424f582d\n"
     "1700000000.01 canbox 101 312e30cc\n",
     "1700000050.00 canbox 100 2e6102053c5b\n"},
};

// Arguments, with TRACE for a damaged recording; the exit code, and parts of output and errors.
const struct
{
    const char *name, *arguments;
    int code;
    const char *output, *error;
} kMistakes[] = {
    {"no file", "decode", 2, "", "name the trace"},
    {"missing file", "decode /missing", 1, "", "No such file"},
    {"a directory", "decode /", 1, "", "is a directory"},
    {"decoded to the damage", "decode TRACE", 1, "0x61 ambient light 05 3C", "test.trace:2: "},
    {"replayed to the damage", "replay --loop 0 TRACE", 1, "sigAmbientChanged", "test.trace:2: "},
    {"exported to the damage", "export --format candump TRACE", 1, "100#2E6102053C5B",
     "test.trace:2: "},
    {"unknown format", "export --format pcap TRACE", 2, "", "--format needs candump, pcapng or"},
    {"no room", "export --format pcapng -o /dev/full TRACE", 1, "", "/dev/full: No space"},
    {"unknown type", "replay --only 0x24,wheels TRACE", 2, "", "no frame 'wheels'"},
    {"no speed", "replay --speed 0 TRACE", 2, "", "--speed needs"},
    {"window behind the end", "replay --from 9 TRACE", 1, "", "ends after 0.000000 s"},
    {"missing device", "replay --device /missing TRACE", 1, "", "no such device"},
};

} // namespace

class TraceTest : public QObject
{
    Q_OBJECT

private slots:
    void readsWhateverTheFileHolds_data() { addRows(kFiles); }
    void readsWhateverTheFileHolds()
    {
        const auto &row = currentRow(kFiles);
        const QString problem = QString(*row.problem ? mFile : "") + row.problem;
        TraceReader reader(writeFile(mFile, row.content));
        for (int pass = 0; pass < 2; ++pass) {
            QByteArray again;
            TraceLine line;
            while (reader.next(&line))
                again += traceText(line);
            QCOMPARE(again, row.read);
            QCOMPARE(reader.problem().left(problem.size()), problem);
            QCOMPARE(reader.problem().isEmpty(), problem.isEmpty());
            QCOMPARE(reader.note(), QString());
            if (row.problem == QByteArray())
                QCOMPARE(reader.progress(), row.content.isEmpty() ? -1.0 : 1.0);
            QVERIFY(reader.rewind());
        }
    }

    void readsPackets_data() { addRows(kPatches); }
    void readsPackets()
    {
        const auto &row = currentRow(kPatches);
        QByteArray content = kPackets;
        content[row.at] = row.byte;
        for (const QByteArray &file : {content, kPackets.chopped(1)}) {
            const bool isWhole = file.size() == kPackets.size();
            TraceReader reader(writeFile(mFile, file));
            QByteArray read;
            TraceLine line;
            while (reader.next(&line))
                read += traceText(line);
            QCOMPARE(read, isWhole ? row.read : kBoth);
            const QString problem = isWhole ? row.problem : "or ends in this block";
            QVERIFY2(reader.problem().contains(problem), qPrintable(reader.problem()));
            QCOMPARE(reader.problem().isEmpty(), problem.isEmpty());
        }
    }

    void recordsWhatThePortsCarry()
    {
        const qint64 begin = QDateTime::currentMSecsSinceEpoch();
        TraceRecorder recorder;
        QCOMPARE(recorder.start({mFile, {}, true}, "the box", {22, 7}), QString());
        recorder.watchPorts();
        SerialMonitor *monitor = SerialMonitor::instance();
        emit monitor->received(hex("2e"));
        emit monitor->written(hex("ff"), true, true);
        emit monitor->written(hex("f0"), true, false); // Dropped: it was never on the line.
        emit monitor->connectionChanged(false, "lost\nfor now");
        emit monitor->received(kLongest + hex("2a"));

        // The recorder is still at work, as in a process that is killed.
        TraceReader reader(mFile);
        TraceLine line;
        QByteArray bytes;
        QByteArray directions;
        qint64 last = 0;
        while (reader.next(&line)) {
            bytes += line.bytes;
            directions += line.fromBox ? 'R' : 'T';
            QCOMPARE(line.port, QByteArray("the_box"));
            last = line.time;
        }
        QCOMPARE(reader.problem() + reader.note(), QString());
        QVERIFY(reader.car() && reader.car()->model == 22 && reader.car()->index == 7);
        QCOMPARE(directions, QByteArray("RTRR"));
        QCOMPARE(bytes, hex("2eff") + kLongest + hex("2a"));
        QVERIFY(begin <= last / 1000 && last / 1000 <= QDateTime::currentMSecsSinceEpoch());

        TraceRecorder full;
        QCOMPARE(full.start({"/dev/full", {}}, "box", {}), QString());
        full.watchPorts();
        emit monitor->received(hex("2e"));
        QVERIFY2(full.problem().contains("/dev/full: No space"), qPrintable(full.problem()));
    }

    void decodesInTheTimeOfTheRecording()
    {
        Outcome decode =
            run(CANBENCH, {"decode", "--csv", "--plugin", PLUGIN_FILE, writeFile(mFile, kTrip)});
        QByteArrayList rows = decode.output.split('\n');
        int alive = 0;
        for (int i = rows.size() - 1; i >= 0; --i)
            if (rows.at(i).endsWith("service,signal,notifyCanbusStatus,3,")) {
                rows.removeAt(i);
                ++alive;
            }
        QCOMPARE(rows, kDecodedTrip.split('\n'));
        QCOMPARE(alive, 7); // The version has one of its own.
    }

    // Beside all points at once, sorted into stretches of the width that is reached.
    void reductionKeepsWhatStandsOut()
    {
        QVector<Series::Point> all;
        Series series;
        Marks marks;
        quint32 random = 1;
        int reductions = 0;
        for (qint64 time = 5000; reductions < 3; time += 1000 + random % 9000) {
            random = random * 1664525 + 1013904223;
            const bool isWord = random >> 28 == 0;
            all.append({time, isWord ? std::nan("") : random >> 24, QString::number(random >> 20)});
            const int before = series.points().size();
            series.add(all.last());
            reductions += series.points().size() <= before;
            marks.add(time, QString::number(all.size()));
        }
        std::map<qint64, QVector<int>> stretches;
        for (int i = 0; i < all.size(); ++i)
            stretches[all[i].time / series.width()] += i;
        QVector<qint64> expected, kept;
        for (const auto &[stretch, points] : stretches) {
            int low = -1, high = -1, word = -1;
            for (const int i : points) {
                const bool isWord = std::isnan(all[i].number);
                if (isWord && word < 0)
                    word = i;
                if (!isWord && (low < 0 || all[i].number < all[low].number))
                    low = i;
                if (!isWord && (high < 0 || all[i].number > all[high].number))
                    high = i;
            }
            for (const int i : std::set{points.first(), points.last(), low, high, word})
                if (i >= 0)
                    expected += all[i].time;
        }
        for (const Series::Point &point : series.points())
            kept += point.time;
        QCOMPARE(kept, expected);
        QCOMPARE(series.changes(), all.size());
        QCOMPARE(all.last().time / series.width() * 2 / 409, 1); // Of 409 that there may be.

        int at = 0;
        for (const Marks::Mark &mark : marks.marks()) {
            QCOMPARE(mark.text, QString::number(at + 1));
            QCOMPARE(mark.first, all[at].time);
            at += int(mark.count);
            QCOMPARE(mark.last, all[at - 1].time);
        }
        QVERIFY(at == all.size() && at == marks.count() && marks.marks().size() < 2048);
    }

    void trafficKeepsItsBusiestSecond()
    {
        Traffic traffic;
        QMap<qint64, qint64> bytes; // By second.
        for (int i = 0; i < 14000; ++i) {
            traffic.add(i * 700'000LL, i * 7 % 101);
            bytes[i * 7LL / 10] += i * 7 % 101;
        }
        QCOMPARE(traffic.seconds(), 4);
        QCOMPARE(traffic.stretches().size(), 2450);
        for (qint64 second = 0; second < 9800; second += 4) {
            const Traffic::Stretch stretch = traffic.stretches().at(int(second / 4));
            const std::array<qint64, 4> four{bytes[second], bytes[second + 1], bytes[second + 2],
                                             bytes[second + 3]};
            QCOMPARE(stretch.bytes, four[0] + four[1] + four[2] + four[3]);
            QCOMPARE(stretch.busiest, *std::max_element(four.begin(), four.end()));
        }
    }

    void playsAWindow_data() { addRows(kPlays); }
    void playsAWindow()
    {
        const auto &row = currentRow(kPlays);
        ManualClock clock;
        TracePlayer player(writeFile(mFile, "(7.000000) a R 2E6102053C\n"
                                            "(7.050000) a R 5B00\n"
                                            "(7.150000) a R 2E2407C8\n"
                                            "(7.140000) a T FF\n" // Time goes back here.
                                            "(7.300000) a R 0000000000000C\n"),
                           row.options, clock);
        QCOMPARE(player.prepare(), QString());
        // Each chunk with the time at which it came.
        QByteArrayList played;
        connect(&player, &TracePlayer::chunk, this, [&](const QByteArray &b) {
            played += QByteArray::number(clock.milliseconds()) + ' ' + b.toHex();
        });
        QSignalSpy finished(&player, &TracePlayer::finished);
        player.start();
        for (; finished.isEmpty() && clock.milliseconds() < 1000; clock.advance(5'000'000))
            player.tick();
        QCOMPARE(played.join(", "), QByteArray(row.played));
        QCOMPARE(finished.size(), 1);
        QVERIFY(std::abs(*player.duration() - double(clock.milliseconds()) / 1000) < 0.01);
        QVERIFY(player.note().startsWith(mFile + ":4: the time goes back"));
    }

    void slowReceiverDelaysNothingElse()
    {
        ManualClock clock;
        TracePlayer player(writeFile(mFile, "(0.000000) a R 2E\n(0.020000) a R 2E\n"
                                            "(0.040000) a R 2E\n(0.100000) a R 2E\n"),
                           {}, clock);
        QCOMPARE(player.prepare(), QString());
        QVector<qint64> times;
        connect(&player, &TracePlayer::chunk, this, [&] {
            times += clock.milliseconds();
            clock.advance(30'000'000); // Of work for each.
        });
        player.start();
        for (; player.chunks() < 4 && clock.milliseconds() < 1000; clock.advance(1'000'000))
            player.tick();
        QCOMPARE(times, (QVector<qint64>{0, 30, 60, 100}));
    }

    void replaysToThePlugin()
    {
        const Outcome replay = run(CANBENCH, {"replay", "--speed", "1000", "--only", "doors",
                                              "--plugin", PLUGIN_FILE, writeFile(mFile, kTrip)});
        QCOMPARE(replay.code, 0);
        QVERIFY2(replay.output.contains("doorChanged             door.rear: closed -> open"),
                 replay.output);
        QVERIFY(!replay.output.contains("keyEvent"));
        QVERIFY2(!replay.errors.contains("left"), replay.errors); // No progress off a terminal.
    }

    void candumpLogIsReadByOtherTools_data() { addRows(kLogReaders); }
    void candumpLogIsReadByOtherTools()
    {
        const auto &row = currentRow(kLogReaders);
        const QString log = mDirectory.filePath(QString("%1.log").arg(&row - kLogReaders));
        const QString trip = writeFile(mFile, kTrip);
        QCOMPARE(run(CANBENCH, {"export", "--format", "candump", "-o", log, trip}).code, 0);
        const QByteArray text = run("sh", {"-c", QString(row.command).replace("LOG", log)}).output;
        QVERIFY2(text.startsWith(row.begin), text);
        QVERIFY2(text.endsWith(row.end), text);
        QCOMPARE(text.count('\n'), 14);
        QCOMPARE(run(CANBENCH, {"decode", "--csv", log}).output,
                 run(CANBENCH, {"decode", "--csv", trip}).output);
    }

    void pcapngIsReadByTshark()
    {
        const QString file = mDirectory.filePath("trip.pcapng");
        const QString trip = writeFile(mFile, kTrip + "(1700000051.000000) b R 00\n");
        QCOMPARE(run(CANBENCH, {"export", "--format", "pcapng", "-o", file, trip}).code, 0);
        const QStringList fields = {"frame.time_epoch", "frame.interface_name",
                                    "frame.packet_flags_direction", "data.data"};
        const QByteArray text = run("tshark", QStringList{"-r", file, "-Tfields", "-e"} +
                                                  fields.join(" -e ").split(' '))
                                    .output;
        QVERIFY2(text.startsWith("1700000000.000000000\tcanbox\t0x00000002\t2e8101017c\n"
                                 "1700000000.010000000\tcanbox\t0x00000001\t2e30085642"),
                 text);
        QVERIFY2(text.endsWith("\n1700000051.000000000\tb\t0x00000001\t00\n"), text);
        QCOMPARE(text.count('\n'), 14);
        QCOMPARE(run(CANBENCH, {"decode", "--csv", file}).output,
                 run(CANBENCH, {"decode", "--csv", trip}).output);
    }

    void commandsTellWhatIsWrong_data() { addRows(kMistakes); }
    void commandsTellWhatIsWrong()
    {
        const auto &row = currentRow(kMistakes);
        writeFile(mFile, "(1.000000) a R 2E6102053C5B\n(oops) a R 2E\n");
        const Outcome said =
            run(CANBENCH, QString(row.arguments).replace("TRACE", mFile).split(' '));
        QCOMPARE(said.code, row.code);
        QVERIFY2(said.output.contains(row.output), said.output);
        QVERIFY2(said.errors.contains(row.error), said.errors);
    }

private:
    QTemporaryDir mDirectory;
    const QString mFile = mDirectory.filePath("test.trace");
};

QTEST_GUILESS_MAIN(TraceTest)
#include "tst_trace.moc"
