#include "bench/commands/sessionrun.h"
#include "bench/language/parser.h"
#include "bench/language/runner.h"
#include "bench/screen/liveview.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace bench {

namespace {

void addRunOptions(CommandLine *line)
{
    addSessionOptions(line);
    line->addOptions({
        {"device", "Talk to the box on the serial device DEV instead of the embedded one.", "DEV"},
        {"model", "The car model that is selected in the head unit (default 1).", "ID"},
        {"hwd-index", "The index under which the box knows the car (default 1).", "N"},
        {"duration", "End after S seconds; without it, on Ctrl-C.", "S"},
        {"set", "Set a value of the embedded car before the start; may be repeated.", "NAME=VALUE"},
        {"press",
         "Press a steering-wheel key of the embedded car for MS milliseconds (default "
         "200) once the link is up; may be repeated.",
         "KEY[:MS]"},
        {"faults",
         "Faults on the line to the embedded box: KIND[=RATE],... with RATE a probability "
         "per frame (default 0.02), or 'all'. A wrong kind lists them.",
         "KINDS"},
        {"list-values", "List the values of the embedded car, as 'canbench names' does."},
        {"control", kControlHelp, "PATH"},
        {"plain", "A line per event on a terminal too, instead of the live view."},
    });
}

// Steps that options stand for.
struct OptionSteps
{
    Scenario before; ///< The start.
    Scenario linked; ///< Once the link is up.
};

// `NAME=VALUE`, `KEY:MS` and `KIND=RATE,...` in the words of the language.
// \returns an empty text, or what is wrong.
QString readSteps(const CommandLine &line, OptionSteps *steps)
{
    ParseContext before{&steps->before};
    ParseContext linked{&steps->linked};
    QString problem;
    const auto read = [&problem](const QString &option, const QStringList &words,
                                 ParseContext &context) {
        const QString mistake = parseWords(words, context);
        if (problem.isEmpty() && !mistake.isEmpty())
            problem = QStringLiteral("--%1: %2").arg(option, mistake);
    };
    for (const QString &text : line.values("set"))
        read("set", QStringList{"set", text.section('=', 0, 0)} + text.split('=').mid(1), before);
    for (const QString &text : line.values("press")) {
        const QStringList parts = text.split(':');
        QStringList words{"press", parts.first()};
        if (parts.size() > 1)
            words += {"for", parts.mid(1).join(':') + "ms"};
        read("press", words, linked);
        read("press", {"wait", "300ms", "real"}, linked);
    }
    if (problem.isEmpty() && line.isSet("faults"))
        problem = readFaultOption(line.value("faults"), before);
    return problem;
}

int run(const CommandLine &line, const RunOptions &options, const OptionSteps &steps,
        double duration)
{
    SessionRun run(options);
    Session &session = run.session();
    Runner given(Stage(session), 1);
    std::optional<int> ending; // Which may be earlier than the event loop.
    const auto end = [&ending](int code) {
        ending = ending.value_or(code);
        QCoreApplication::exit(*ending);
    };

    std::unique_ptr<LiveView> view;
    const bool wantsLines =
        line.isSet("json") || line.isSet("plain") || line.isSet("log") || options.control == "-";
    if (Terminal::isAvailable() && !wantsLines)
        view = std::make_unique<LiveView>(&session);
    bool wasLinked = false;
    QObject::connect(&session, &Session::happened, [&](const Event &event) {
        if (view)
            view->show(event);
        else
            run.printer().print(event, session.state());
        if (session.linkCode() == 3 && !std::exchange(wasLinked, true))
            given.run(steps.linked.steps);
    });
    Control keys((Stage(session)));
    QStringList pressed; // Done one after the other, however fast they were pressed.
    const auto doNext = [&] {
        if (!keys.isBusy() && !pressed.isEmpty())
            keys.take(pressed.takeFirst().toLatin1());
    };
    if (view) {
        QObject::connect(view.get(), &LiveView::quit, [end] { end(Done); });
        QObject::connect(view.get(), &LiveView::acted, [&](const QString &text) {
            pressed += text.split('\n');
            doNext();
        });
        QObject::connect(&keys, &Control::answered, [&](const QString &answer) {
            if (view && answer != QLatin1String("ok"))
                view->note(QString(11, ' ') + answer.section(' ', 1)); // Without its kind.
            doNext();
        });
    }
    QObject::connect(&run.channel(), &ControlChannel::ended, [end] { end(Done); });
    QObject::connect(&run.channel(), &ControlChannel::said, [&](const QString &text) {
        if (view)
            view->note(text);
        else
            run.printer().heading(text, session.seconds());
    });
    QObject::connect(&run.unixSignals(), &UnixSignals::caught,
                     [end](int number) { end(SignalBase + number); });
    if (duration > 0)
        QTimer::singleShot(static_cast<int>(duration * 1000), [end] { end(Done); });

    QString problem = options.control.isEmpty() ? QString() : run.channel().open(options.control);
    if (!problem.isEmpty()) {
        view.reset();
        fail(problem);
        return WrongUsage;
    }
    problem = run.open();
    if (!problem.isEmpty()) {
        view.reset();
        return fail(problem);
    }
    given.play(steps.before.steps);
    session.start();
    const int code = ending ? *ending : QCoreApplication::exec();
    view.reset();
    const bool wasOpen = session.summary().fromBox.frameTotal() > 0 || session.isDeviceOpen();
    const int result = run.finish(code);
    if (result == Done && !wasOpen)
        return fail(QStringLiteral("the device was never open, and nothing was tried; see above"));
    return result;
}

} // namespace

int runCommand(const QStringList &arguments)
{
    CommandLine line(
        "run", "[options]",
        "Loads the plug-in as a head unit does, starts it and prints every signal with\n"
        "its time in seconds and what the getters answer differently since the signal\n"
        "before. Ends with a summary.",
        "canbench run --duration 5\n"
        "canbench run --set door.left_front=open --set climate.left=24 --press 5:2000\n"
        "canbench run --device /dev/ttyUSB0 --model 22 --hwd-index 7 --json\n"
        "canbench run --faults bit-flip=0.05,unplug --seed 7 --trace faults.trace");
    addRunOptions(&line);
    if (const auto code = line.read(arguments))
        return *code;
    RunOptions options = readSessionOptions(&line);
    options.session.device = line.value("device");
    options.session.carModel = line.number("model", 1, 0, 65535);
    options.session.carIndex = line.number("hwd-index", 1, 0, 65535);
    const double duration = line.seconds("duration", 0, 0.001, 1e6);
    OptionSteps steps;
    if (line.isWrong())
        return WrongUsage;
    if (line.isSet("control") && line.value("control").isEmpty())
        return line.complain("--control needs the name of a socket, or -");
    options.control = line.value("control");
    if (line.isSet("device")) {
        if (options.session.device.isEmpty())
            return line.complain("--device needs the name of a device, such as /dev/ttyUSB0");
        if (line.isSet("set") || line.isSet("press") || line.isSet("faults"))
            return line.complain(
                "--set, --press and --faults are for the embedded box, not for a --device");
    }
    const QString problem = readSteps(line, &steps);
    if (!problem.isEmpty())
        return line.complain(problem);
    if (line.isSet("list-values"))
        return sayNames({}, line.isSet("json"), true);
    QLoggingCategory::setFilterRules(line.isSet("log") ? "default.debug=true"
                                                       : "default.debug=false");
    return run(line, options, steps, duration);
}

} // namespace bench
