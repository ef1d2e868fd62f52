#include "bench/box/pseudoterminal.h"
#include "bench/commands/commandline.h"
#include "bench/commands/typefilter.h"
#include "bench/headunit/session.h"
#include "bench/recording/traceplayer.h"
#include "bench/screen/printer.h"
#include "bench/screen/progress.h"
#include "bench/screen/unixsignals.h"

#include <serialport.h>

#include <QCoreApplication>
#include <QLoggingCategory>

namespace bench {

namespace {

constexpr int kOpenMs = 5000;
constexpr int kLastAnswersMs = 200;

// Runs the event loop while the recording plays. \returns the exit code.
int play(TracePlayer &player, Progress &progress)
{
    UnixSignals unixSignals;
    QObject::connect(&unixSignals, &UnixSignals::caught,
                     [](int number) { QCoreApplication::exit(SignalBase + number); });
    QObject::connect(&player, &TracePlayer::finished, [] {
        QTimer::singleShot(kLastAnswersMs, [] { QCoreApplication::exit(Done); });
    });
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout,
                     [&] { progress.show(player.elapsed(), player.duration()); });
    if (progress.isVisible())
        tick.start(200);
    player.start();
    const int code = QCoreApplication::exec();
    progress.clear();
    return code;
}

// A new terminal may bear the number of one that another program still has locked; the host tries
// again every second. \returns whether it has succeeded.
bool awaitDevice(Session &session)
{
    QEventLoop loop;
    QObject::connect(&session, &Session::happened, &loop, [&] {
        if (session.isDeviceOpen())
            loop.quit();
    });
    QTimer::singleShot(kOpenMs, &loop, &QEventLoop::quit);
    if (!session.isDeviceOpen())
        loop.exec();
    return session.isDeviceOpen();
}

int playToPlugin(TracePlayer &player, const CommandLine &line, int carModel)
{
    PseudoTerminal terminal;
    if (!terminal.isPlugged())
        return fail(terminal.errorString());
    SessionOptions options;
    options.plugin = line.value("plugin");
    options.device = terminal.path();
    options.carModel = carModel;
    Session session(options);
    Printer printer(line.isSet("json") ? Printer::Json : Printer::Text);
    Progress progress;
    QObject::connect(&session, &Session::happened, [&](const Event &event) {
        progress.clear();
        printer.print(event, session.state());
    });
    QObject::connect(&player, &TracePlayer::chunk, &terminal, &PseudoTerminal::write);
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    if (!awaitDevice(session))
        return fail(QStringLiteral("nothing was replayed"));
    session.start();
    const int code = play(player, progress);
    session.stop();
    printer.print(session.summary(), session.seconds());
    if (terminal.lostBytes() > 0)
        return fail(QStringLiteral("%1 bytes came faster than the plug-in took them and are lost; "
                                   "use a lower --speed")
                        .arg(terminal.lostBytes()));
    return code;
}

int playToDevice(TracePlayer &player, const QString &device)
{
    canservice::SerialPort port;
    if (!port.open(device, canbox::kBaudRate)) // It has said why.
        return fail(QStringLiteral("nothing was replayed"));
    const SteadyClock clock;
    LineCutter answers(LineCutter::Box);
    qint64 dropped = 0;
    QObject::connect(&port, &canservice::SerialPort::read, &answers,
                     [&](const QByteArray &bytes) { answers.feed(bytes, clock.microseconds()); });
    QObject::connect(&player, &TracePlayer::chunk, [&](const QByteArray &bytes) {
        if (!port.writeData(bytes, false))
            ++dropped;
    });
    Progress progress;
    const int code = play(player, progress);
    say(QStringLiteral("%1 chunks in %2 s; %3 good receipts, %4 bad receipts")
            .arg(player.chunks() - dropped)
            .arg(player.elapsed(), 0, 'f', 1)
            .arg(answers.counts().goodReceipts)
            .arg(answers.counts().badReceipts));
    if (dropped > 0)
        return fail(QStringLiteral("the device did not take %1 chunks").arg(dropped));
    return code;
}

} // namespace

int replayCommand(const QStringList &arguments)
{
    CommandLine line(
        "replay", "[options] FILE",
        "Sends what the box said in the trace FILE once more, in its own time: to the\n"
        "plug-in, over a pseudo terminal, or to a serial device.",
        "canbench replay trip.trace\n"
        "canbench replay --speed 10 --from 30 --to 90 --only doors,0x21 trip.trace\n"
        "canbench replay --device /dev/ttyUSB0 --loop 0 trip.trace");
    line.addOptions({
        {"speed", "Play X times as fast, 0.01 to 1000 (default 1).", "X"},
        {"loop", "Play N times; 0 is for ever (default 1).", "N"},
        {"from", "Begin S seconds after the first line.", "S"},
        {"to", "End S seconds after the first line.", "S"},
        {"only", "Play frames of these types alone: numbers or names, as 'decode' shows them.",
         "TYPE,..."},
        {"device", "Play to the serial device DEV instead of the plug-in.", "DEV"},
        {"to-box", "Play what went to the box, not what came from it; needs --device."},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"model",
         "The car model that is selected in the head unit (default: the recording's, or 1).", "ID"},
        {"json", "One JSON object a line."},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    PlayOptions options;
    const QString file = line.positionalArguments().value(0);
    options.speed = line.factor("speed", 1, 0.01, 1000);
    options.passes = line.number("loop", 1, 0, 1'000'000'000);
    options.from = line.seconds("from", options.from, 0, options.to);
    options.to = line.seconds("to", options.to, options.from, options.to);
    options.fromBox = !line.isSet("to-box");
    int carModel = line.number("model", 1, 0, 65535);
    const TypeFilter only = readTypeFilter(&line, false);
    if (line.isWrong())
        return WrongUsage;
    options.only = options.fromBox ? only.fromBox : only.toBox;
    if (line.isSet("only") && options.only.isEmpty())
        return line.complain(
            QStringLiteral("--only %1 is of the other direction%2")
                .arg(line.value("only"), options.fromBox ? "; --to-box plays that one" : ""));
    if (file.isEmpty())
        return line.complain("name the trace to replay");
    if (line.isSet("to-box") && !line.isSet("device"))
        return line.complain("--to-box needs the --device of the box");

    QLoggingCategory::setFilterRules("default.debug=false");
    const SteadyClock clock;
    TracePlayer player(file, options, clock);
    const QString problem = player.prepare();
    if (!problem.isEmpty())
        return fail(problem);
    if (player.car() && !line.isSet("model"))
        carModel = player.car()->model;
    const int code = line.isSet("device") ? playToDevice(player, line.value("device"))
                                          : playToPlugin(player, line, carModel);
    if (!player.note().isEmpty())
        fail(player.note());
    return code != Done || player.problem().isEmpty() ? code : int(fail(player.problem()));
}

} // namespace bench
