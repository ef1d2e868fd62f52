// What leaves the bench: text, JSON and CSV of any content, files, and what becomes of lost output.
#include "hosttest.h"

#include "bench/headunit/elffile.h"
#include "bench/screen/output.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <csignal>
#include <limits>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace bench;

namespace {

// The text; how a terminal, a CSV field and JSON show it.
const struct
{
    const char *name;
    QString text;
    QByteArray shown, field, json;
} kTexts[] = {
    {"plain text stays", u8"21.5 \u00B0C \\x1b \U0001F697", u8"21.5 \u00B0C \\x1b \U0001F697",
     u8"21.5 \u00B0C \\x1b \U0001F697", u8"\"21.5 \u00B0C \\\\x1b \U0001F697\""},
    {"a title and a cleared screen", "\033]0;x\007\033[2J", "\\x1b]0;x\\x07\\x1b[2J",
     "\\x1b]0;x\\x07\\x1b[2J", "\"\\u001b]0;x\\u0007\\u001b[2J\""},
    {"line ends", "a\nb\rc\td", "a\\x0ab\\x0dc\\x09d", "a\\x0ab\\x0dc\\x09d", "\"a\\nb\\rc\\td\""},
    {"the one-byte form of an escape", QString(QChar(0x9B)) + "2J\x7f", "\\u009b2J\\u007f",
     "\\u009b2J\\u007f", "\"\\u009b2J\\u007f\""},
    {"text that runs backwards", u8"a\u202Eb\u2066c\u2028d\uFEFF",
     "a\\u202eb\\u2066c\\u2028d\\ufeff", "a\\u202eb\\u2066c\\u2028d\\ufeff",
     "\"a\\u202eb\\u2066c\\u2028d\\ufeff\""},
    {"halves of a surrogate pair", QString(QChar(0xD83D)) + 'x' + QChar(0xDE97), "\\ud83dx\\ude97",
     "\\ud83dx\\ude97", "\"\\ufffdx\\ufffd\""},
    {"a zero byte", QString(QChar(0)) + '=', "\\x00=", "\\x00=", "\"\\u0000=\""},
    {"quotes and commas", "say \"a, b\"", "say \"a, b\"", "\"say \"\"a, b\"\"\"",
     "\"say \\\"a, b\\\"\""},
    {"nothing", "", "", "", "\"\""},
};

// What a shell runs with $b for canbench, in a folder with the scenario `s`, its trace `t` and the
// links `soft` and `hard` to the trace; the exit code and the whole of standard error.
const struct
{
    const char *name, *command;
    int code;
    const char *errors;
} kCommands[] = {
    {"help to a full disk", "$b --help >/dev/full", 1,
     "canbench: standard output: No space left on device; the rest is lost\n"},
    {"a decoded trace to a full disk", "$b decode t >/dev/full", 1,
     "canbench: standard output: No space left on device; the rest is lost\n"},
    {"an export to a full disk", "$b export --format candump t >/dev/full", 1,
     "canbench: standard output: No space left on device; the rest is lost\n"},
    {"events to a full disk", "$b play s >/dev/full", 1,
     "canbench: standard output: No space left on device; the rest is lost\n"},
    {"a trace to a full disk", "$b play --trace /dev/full s >out", 1,
     "canbench: /dev/full: No space left on device; nothing more is recorded\n"},
    {"messages to a full disk", "$b run --model x 2>/dev/full", 2, ""},
    {"standard output is closed",
     "$b play --trace new s >&-; c=$?; grep -q 'the box' new; exit $c$?", 10,
     "canbench: standard output: Bad file descriptor; the rest is lost\n"},
    {"standard input is closed", "$b play - <&-", 1,
     "canbench: cannot read '-': Bad file descriptor\n"},
    {"the reader has gone", "($b run; echo $? >code) | head -1 >out; exit $(cat code)", 141, ""},
    {"the reader of a decoder has gone",
     "(sleep 0.2; $b decode t; echo $? >code) | :; exit $(cat code)", 141, ""},

    {"a pipe that is replayed", "cat t | $b replay -", 1,
     "canbench: a pipe cannot be replayed; record it to a file\n"},
    {"the trace for the export", "$b export --force --format pcapng -o t t", 1,
     "canbench: t is read by this command; write to another file\n"},
    {"a link to the trace", "$b export --force --format pcapng -o soft t", 1,
     "canbench: soft is read by this command; write to another file\n"},
    {"the trace for a link to it", "$b export --force --format pcapng -o t hard", 1,
     "canbench: t is read by this command; write to another file\n"},
    {"the standard input for the export", "$b export --force --format pcapng -o t - <t", 1,
     "canbench: t is read by this command; write to another file\n"},
    {"the trace for standard output", "$b export --format candump t >>t", 1,
     "canbench: standard output is read by this command; write to another file\n"},
    {"the scenario for the trace", "$b play --force --trace s s", 1,
     "canbench: s is read by this command; write to another file\n"},
    {"the plug-in for the trace", "$b play --force --plugin t --trace hard s", 1,
     "canbench: hard is read by this command; write to another file\n"},
    {"a recording that exists", "$b run --trace t", 1,
     "canbench: t exists; use --force to replace it\n"},
    {"an export that exists", "$b export --format candump -o s t", 1,
     "canbench: s exists; use --force to replace it\n"},
    {"more ports than an export has room for",
     "for i in $(seq 257); do echo \"(1.000000) p$i R 00\"; done >p; head -256 p >some;"
     "$b export --format pcapng -o new some && $b export --format pcapng -o x p",
     1, "canbench: x: the recording has more than 256 ports\n"},
    {"a recording to standard output", "$b run --trace -", 1,
     "canbench: standard output has another use here; name a file\n"},
    {"a link to nowhere", "ln -s no n; $b run --trace n", 1,
     "canbench: n exists; use --force to replace it\n"},
    {"no name", "$b export --format candump -o '' t", 1,
     "canbench: the name of the file to write is empty\n"},
    {"no folder", "$b export --format candump -o no/x t", 1,
     "canbench: no/x: No such file or directory\n"},
    {"an export that is replaced",
     "echo old >x; $b export --force --format candump -o x t && grep -q '200#2E81' x", 0, ""},
    {"a recording that is replaced", "echo old >x; $b play --force --trace x s >out; grep -q old x",
     1, ""},
    {"a damaged trace exports what is before",
     "echo oops >>t; $b export --format candump -o new t; c=$?; grep -q '200#2E81' new; exit $c$?",
     10,
     "canbench: t:4: 1 fields instead of 4; a line reads like (12.500000) canbox R "
     "2E6102053C5B\n"},

    {"a program that is killed", "$b run >out & sleep 0.3; kill -9 $!; wait $! 2>out", 137, ""},
    {"no temporary folder", "TMPDIR=/nonexistent $b play s >out", 0, ""},
};

// Without optimization a build asks the host for more.
#ifdef __OPTIMIZE__
#    define AGREED "symbols, as agreed\n"
#else
#    define AGREED ""
#endif

// How a shell makes the file x from the plug-in p with $b for canbench; what the doctor tells of x,
// all of the parts between the bars.
const struct
{
    const char *name, *command;
    int code;
    const char *told;
} kLibraries[] = {
    {"the plug-in", "cp $p x", 0, AGREED "|Loadable: its service is a canservice::SimpleService."},
    {"an empty name", "x=", 1, "Not loadable: its name is empty"},
    {"an empty file", ": >x", 1, "it is empty"},
    {"a folder", "mkdir x", 1, "it is a folder"},
    {"a device", "ln -s /dev/null x", 1, "it is not a file, but a device"},
    {"links in a circle", "ln -s y x; ln -s x y", 1, "its links lead in a circle"},
    {"a link to nowhere", "ln -s y x", 1, "it is a link to a file that does not exist"},
    {"a file that is not there", "x=gone", 1, "Not loadable: there is no such file\n"},
    {"a file below a file", "x=$p/x", 1, "no such file: a part of its path is no folder\n"},
    {"a long name", "x=$(printf %0300d)", 1, "the name is too long for a file\n"},
    {"a static library", "echo '!<arch>' >x", 1, "it is a static library; name a shared one (.so)"},
    {"the other byte order", "cp $p x; printf '\\2' | dd of=x bs=1 seek=5 conv=notrunc", 1,
     "it is built for a machine of the other byte order"},
    {"an object file", "cp $p x; printf '\\1' | dd of=x bs=1 seek=16 conv=notrunc", 1,
     "it is not a shared library, but another kind of ELF file"},
    {"a plug-in of another kind",
     "sed s/com.quendal.CanServicePlugin/com.quendal.CanServicePlugix/ $p >x", 1,
     "its interface id is 'com.quendal.CanServicePlugix', not 'com.quendal.CanServicePlugin'"},
    {"a host that is not there", "sed s/libcanservicehost/libcanservicehosx/ $p >x", 1,
     "a library that it needs is not found; see LD_LIBRARY_PATH: "},
    {"a text", "echo ELF >x", 1, "it is not a library (no ELF file)"},
    {"a program", "cp $b x", 1, "it is a program, not a library"},
    {"half of it", "head -c 30000 $p >x", 1, "it is cut short: it has 30000 bytes"},
    {"a part of its header", "head -c 40 $p >x", 1, "it is cut short: it has 40 bytes"},
    {"its first bytes", "head -c 10 $p >x", 1, "it is cut short within its first line"},
    {"a library that is no plug-in", "cp " HOST_FILE " x", 1, "it is a library, but no Qt plug-in"},
    // Read as far as it goes, whatever the machine.
    {"one for another machine", "cp $p x; printf '\\363' | dd of=x bs=1 seek=18 conv=notrunc", 1,
     "SimpleService|  libQt5Core.so.5  |  Qt_5.15\n|" AGREED
     "|Not loadable: it is built for RISC-V"},
    {"one with other symbols", "sed s/getCarModelId/getCarModelIx/ $p >x", 1,
     "not agreed: CanBusManager::getCarModelIx()|  host       does not ask the host for: |"
     "Not loadable: a symbol that it needs is missing"},
    {"one without its entry", "sed s/qt_plugin_instance/qt_plugin_instanxe/ $p >x", 1,
     "  host       does not offer to the host: qt_plugin_instance\nNot loadable: "},
    {"damaged relocations",
     "cp $p x; at=$(readelf -SW x | sed -n 's/.* \\.rela*\\.dyn *RELA* *[^ ]* *\\([^ "
     "]*\\).*/\\1/p');"
     "printf '\\377\\377\\377\\377\\377\\377\\377' | dd of=x bs=1 seek=$((0x$at)) conv=notrunc",
     1, "Not loadable: loading it ends the program ("},
#ifndef __SANITIZE_ADDRESS__ // Which needs some of its own.
    {"no descriptors", "cp $p x; exec 3<&- 4<&- 5<&- 6<&- 7<&-; ulimit -n 4", 1,
     "Too many open files"},
#endif
};

// What the system's own tools say of a library, in the order of what the bench reads of it.
const char kTables[] = R"(export LC_ALL=C
readelf -dW $f | sed -n 's/.*(SONAME).*\[\(.*\)\]/name \1/p'
readelf -dW $f | sed -n 's/.*(NEEDED).*\[\(.*\)\]/needed \1/p'
readelf -VW $f | sed -n '/needs section/,$s/.*Name: \([^ ]*\) .*/\1/p' | sort -V |
    awk '{ kind = $0; sub(/_[^_]*$/, "", kind); highest[kind] = $0 }
         END { for (kind in highest) print kind, highest[kind] }' | sort | sed "s/^[^ ]* /version /"
nm -DC --defined-only $f | sed -n 's/^[0-9a-f]* [^WVu] /export /p' | sort
nm -DCu $f | sed -n 's/^ *U \([^@]*\)$/import \1/p' | sort
)";

const QByteArray kEnter = "\033[?1049h\033[?25l\033[?7l";
const QByteArray kLeave = "\033[?7h\033[?25h\033[?1049l";

// A shell with job control on a terminal of its own.
class Shell
{
public:
    Shell()
    {
        winsize window{24, 80, 0, 0};
        mProcess = forkpty(&mMaster, nullptr, nullptr, &window);
        if (mProcess != 0)
            return;
        setenv("TERM", "xterm", 1);
        setenv("PS1", "ready> ", 1);
        execlp("bash", "bash", "--norc", "--noprofile", "--noediting", "-i", nullptr);
        _exit(127);
    }
    ~Shell()
    {
        kill(mProcess, SIGKILL);
        waitpid(mProcess, nullptr, 0);
        close(mMaster);
    }

    void resize(ushort columns, ushort lines) const
    {
        const winsize window{lines, columns, 0, 0};
        ioctl(mMaster, TIOCSWINSZ, &window);
    }
    tcflag_t modes() const
    {
        termios settings{};
        tcgetattr(mMaster, &settings);
        return settings.c_lflag & (ICANON | ECHO);
    }
    // What came until a text that answers what is typed.
    QByteArray answer(const QByteArray &typed, const QByteArray &text)
    {
        [[maybe_unused]] const auto size = write(mMaster, typed.constData(), size_t(typed.size()));
        QByteArray seen;
        pollfd readable{mMaster, POLLIN, 0};
        char bytes[4096];
        while (!seen.contains(text) && poll(&readable, 1, 5000) > 0) {
            const ssize_t count = read(mMaster, bytes, sizeof bytes);
            if (count <= 0)
                break;
            seen.append(bytes, int(count));
        }
        return seen;
    }

private:
    int mMaster = -1;
    pid_t mProcess = -1;
};

} // namespace

class OutputTest : public QObject
{
    Q_OBJECT

private slots:
    void showsAnyText_data() { addRows(kTexts); }
    void showsAnyText()
    {
        const auto &row = currentRow(kTexts);
        QCOMPARE(printable(row.text).toUtf8(), row.shown);
        QCOMPARE(csvField(row.text), row.field);
        JsonLine line;
        QCOMPARE(QByteArray::fromStdString(line.begin().member("t", row.text).end()),
                 "{\"t\":" + row.json + "}\n");
    }

    void showsBytesThatAreNoText()
    {
        QCOMPARE(printable(QByteArray(u8"21 \u00B0C\n")), QString(u8"21 \u00B0C\\x0a"));
        QCOMPARE(printable(QByteArray("a\xff\x9b\n\xc3")), QString("a\\xff\\x9b\\x0a\\xc3"));
    }

    void writesJson()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        JsonLine line;
        for (int twice = 0; twice < 2; ++twice) {
            line.begin()
                .key("time")
                .seconds(-1'000'001)
                .member("on", true)
                .member("n", quint8(255));
            line.key("changes").beginObject().member("a\"b", 21.6F).member("c", "[");
            line.endObject().key("list").beginArray().value(nullptr).value(nan);
            line.value(0.1).value("x").value(false).endArray();
            line.key("none").beginArray().endArray();
            QCOMPARE(QByteArray::fromStdString(line.end()),
                     QByteArray("{\"time\":-1.000001,\"on\":true,\"n\":255,\"changes\":{\"a\\\"b\":"
                                "21.6,\"c\":\"[\"},\"list\":[null,null,0.1,\"x\",false],"
                                "\"none\":[]}\n"));
        }
    }

    void losesNothingWithoutAWord_data() { addRows(kCommands); }
    void losesNothingWithoutAWord()
    {
        const auto &row = currentRow(kCommands);
        const QTemporaryDir directory;
        const QByteArray trace = "(1.000000) a T 2E8101017C\n(1.100000) a R FF\n"
                                 "(1.200000) a R 2E6102053C5B\n";
        writeFile(directory.filePath("s"), "start\nexpect link == 3 within 5s\n");
        writeFile(directory.filePath("t"), trace);
        QVERIFY(QFile::link("t", directory.filePath("soft")));
        const QString folder = "cd " + directory.path() + "; ln t hard; export TMPDIR=$PWD/tmp; ";
        const Outcome outcome =
            run("sh", {"-c", folder + "mkdir tmp; b=" CANBENCH "; " + row.command});
        QCOMPARE(outcome.errors, QByteArray(row.errors));
        QCOMPARE(outcome.code, row.code);
        QFile kept(directory.filePath("t"));
        QVERIFY(kept.open(QIODevice::ReadOnly) && kept.readAll().startsWith(trace));
        QCOMPARE(QDir(directory.filePath("tmp")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList());
    }

    void tellsWhatCannotBeLoaded_data() { addRows(kLibraries); }
    void tellsWhatCannotBeLoaded()
    {
        const auto &row = currentRow(kLibraries);
        const QTemporaryDir directory;
        const Outcome outcome =
            run("sh", {"-c", "cd " + directory.path() + "; b=" CANBENCH " p=" PLUGIN_FILE " x=x; " +
                                 row.command + " 2>errors; $b doctor \"$x\""});
        for (const QByteArray &part : QByteArray(row.told).split('|'))
            QVERIFY2(outcome.output.contains(part), outcome.output);
        QCOMPARE(outcome.errors, QByteArray());
        QCOMPARE(outcome.code, row.code);
    }

    void readsTablesAsTheSystemDoes()
    {
        for (const QString file : {PLUGIN_FILE, HOST_FILE, CANBENCH}) {
            const ElfFile read = readElf(file);
            QStringList lines;
            const auto add = [&lines](const char *what, const QStringList &names) {
                for (const QString &name : names)
                    lines += what + name;
            };
            if (!read.name.isEmpty())
                add("name ", {read.name});
            add("needed ", read.needed);
            add("version ", read.versions);
            add("export ", read.exports);
            add("import ", read.imports);
            const QString told = run("sh", {"-c", "f=" + file + "; " + kTables}).output;
            QVERIFY(lines.size() > 6);
            QCOMPARE(lines, told.trimmed().split('\n'));
            QCOMPARE(read.problem, QString());
            QCOMPARE(read.kind, file == CANBENCH ? ElfFile::Program : ElfFile::Library);
        }
    }

    void givesTheTerminalBack()
    {
        const QByteArray program = CANBENCH;
        Shell shell;
        QVERIFY(shell.answer("", "ready> ").endsWith("ready> "));
        shell.answer("ulimit -c 0\n", "ready> ");
        const QByteArray piped = shell.answer(program + " run --duration 0.3 | cat\n", "events");
        QVERIFY2(piped.contains("the box answers") && !piped.contains(kEnter), piped);
        const tcflag_t modes = shell.modes();
        QVERIFY(shell.answer("NO_COLOR=1 " + program + " run\n", "link up").contains(kEnter));
        QCOMPARE(shell.modes(), tcflag_t(0));

        const QByteArray stopped = shell.answer("\x1a", "ready> ");
        QVERIFY2(stopped.contains(kLeave) && stopped.contains("Stopped"), stopped);
        QCOMPARE(shell.modes(), modes);
        QVERIFY(shell.answer("fg\n", "link up").contains(kEnter));
        QCOMPARE(shell.modes(), tcflag_t(0));

        shell.resize(40, 10);
        QByteArray drawn;
        for (int frame = 0; frame < 4; ++frame)
            drawn += shell.answer("", "\033[H");
        const int end = drawn.lastIndexOf("\033[H");
        const int begin = drawn.lastIndexOf("\033[H", end - 1) + 3;
        // The terminal makes \r\n of each \n.
        const QString frame = QString::fromUtf8(drawn.mid(begin, end - begin));
        const QStringList lines = frame.split("\r\r\n");
        QCOMPARE(lines.size(), 10);
        for (QString line : lines)
            QVERIFY2(line.remove("\033[K").size() <= 40 && !line.contains('\033'),
                     qPrintable(line));
        QVERIFY2(lines.first().contains("q quit"), qPrintable(lines.first()));

        QVERIFY(shell.answer("q", "ready> ").contains(kLeave)); // Without Enter.
        QCOMPARE(shell.modes(), modes);
        shell.answer(program + " run\n", "link up");
        QVERIFY(shell.answer("\x1c", "ready> ").contains(kLeave)); // The fatal one of the keys.
        QCOMPARE(shell.modes(), modes);
        QVERIFY(shell.answer("echo code $?\n", "code 131").contains("code 131"));
    }
};

QTEST_GUILESS_MAIN(OutputTest)
#include "tst_output.moc"
