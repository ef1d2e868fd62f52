#include "commandline.h"
#include "eventprinter.h"
#include "faultinjector.h"
#include "fingers.h"
#include "liveview.h"
#include "pluginfile.h"
#include "session.h"
#include "tracerecorder.h"
#include "unixsignals.h"
#include "valuewitness.h"

#include <QCoreApplication>
#include <QLoggingCategory>

namespace bench {

namespace {

void listValues(const VirtualCar &car)
{
    for (int i = 0; i < kCarValueCount; ++i) {
        const CarValueInfo &info = carValueInfo(static_cast<CarValue>(i));
        say(QStringLiteral("%1 %2 %3")
                .arg(QLatin1String(info.name), -26)
                .arg(car.text(info.id), -14)
                .arg(carValueRange(info)));
    }
}

void addOptions(CommandLine *line)
{
    line->addOptions({
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
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
         "per frame, or 'all'. A wrong kind lists them.",
         "KINDS"},
        {"seed", "The same seed gives the same faults (default 1).", "N"},
        {"trace", "Record what the serial line carries to the trace FILE.", "FILE"},
        {"force", "Replace the trace FILE if it exists."},
        {"list-values", "List the values of the embedded car, what they are and may be."},
        {"json", "One JSON object a line."},
        {"plain", "A line per event on a terminal too, instead of the live view."},
        {"log", "Show the service's own log on standard error."},
    });
}

QString pluginFile(const SessionOptions &options)
{
    return options.plugin.isEmpty() ? defaultPluginFile() : options.plugin;
}

void printVerdict(const ValueWitness &witness, const SessionOptions &options, EventPrinter &printer)
{
    ValueWitness::Verdict verdict;
    QLoggingCategory::setFilterRules("default=false"); // What the service says of the past.
    const QString problem = witness.judge(pluginFile(options), options.carModel, &verdict);
    if (!problem.isEmpty()) {
        fail(problem);
        return;
    }
    printer.print(QStringLiteral("values"),
                  {{QStringLiteral("shown by the host"), verdict.shown},
                   {QStringLiteral("never sent by the box"), verdict.neverSent},
                   {QStringLiteral("of these damaged, with a right sum"), verdict.unseenDamage}});
    for (const QString &value : verdict.unexplained)
        fail(QStringLiteral("%1 was shown, which no frame said").arg(value));
}

struct RunSettings
{
    SessionOptions session;
    QList<KeyPress> presses;
    std::optional<FaultPlan> faults;
    quint32 seed = 1;
    double duration = 0; ///< Seconds; 0 for no end.
};

// \returns an empty text, or what is wrong.
QString readSettings(CommandLine *line, RunSettings *settings)
{
    settings->session.plugin = line->value("plugin");
    settings->session.device = line->value("device");
    settings->session.carModel = line->number("model", 1, -32768, 65535);
    settings->session.carIndex = line->number("hwd-index", 1, 0, 65535);
    settings->seed = static_cast<quint32>(line->number("seed", 1, 0, 0x7FFFFFFF));
    settings->duration = line->seconds("duration", 0, 0.001, 1e6);
    if (line->isSet("device")) {
        if (settings->session.device.isEmpty())
            return QStringLiteral("--device needs the name of a device, such as /dev/ttyUSB0");
        if (line->isSet("set") || line->isSet("press") || line->isSet("faults"))
            return QStringLiteral(
                "--set, --press and --faults are for the embedded box, not for a --device");
    }
    for (const QString &press : line->values("press")) {
        const QString problem = readKeyPress(press, &settings->presses);
        if (!problem.isEmpty())
            return "--press needs " + problem;
    }
    if (line->isSet("faults")) {
        settings->faults.emplace();
        return settings->faults->read(line->value("faults"));
    }
    return {};
}

// \returns an empty text, or what is wrong.
QString setValues(VirtualCar *car, const QStringList &settings)
{
    for (const QString &setting : settings) {
        const QString problem = car->set(setting.section('=', 0, 0), setting.section('=', 1));
        if (!problem.isEmpty())
            return problem + "; see 'canbench run --list-values'";
    }
    return {};
}

int run(CommandLine *line, const RunSettings &settings)
{
    UnixSignals unixSignals;
    auto theSession = std::make_unique<Session>(settings.session);
    Session &session = *theSession;
    const QString wrongValue = setValues(&session.car(), line->values("set"));
    if (!wrongValue.isEmpty())
        return line->complain(wrongValue);

    QLoggingCategory::setFilterRules(line->isSet("log") ? "default.debug=true"
                                                        : "default.debug=false");
    EventPrinter printer(line->isSet("json") ? EventPrinter::Json : EventPrinter::Text);
    std::unique_ptr<LiveView> view;
    const bool wantsLines = line->isSet("json") || line->isSet("plain") || line->isSet("log");
    if (Terminal::isAvailable() && !wantsLines) {
        view = std::make_unique<LiveView>(&session);
        QObject::connect(view.get(), &LiveView::quit, [] { QCoreApplication::exit(Done); });
    }
    auto *fingers = new Fingers(&session.car(), settings.presses);
    QObject::connect(&session, &Session::happened, [&](const Event &event) {
        if (view)
            view->show(event);
        else
            printer.print(event, session.state());
        if (session.linkCode() == 3)
            fingers->begin();
    });
    QObject::connect(&unixSignals, &UnixSignals::caught,
                     [](int number) { QCoreApplication::exit(SignalBase + number); });
    if (settings.duration > 0)
        QTimer::singleShot(static_cast<int>(settings.duration * 1000),
                           [] { QCoreApplication::exit(Done); });

    TraceRecorder recorder;
    if (line->isSet("trace")) {
        const QString &device = settings.session.device;
        const OutputTarget target{
            line->value("trace"), {pluginFile(settings.session)}, line->isSet("force")};
        const QString problem = recorder.start(target, device.isEmpty() ? "canbox" : device);
        if (!problem.isEmpty())
            return fail(problem);
    }
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    std::unique_ptr<FaultInjector> injector;
    std::unique_ptr<ValueWitness> witness;
    if (settings.faults) {
        witness = std::make_unique<ValueWitness>(&session);
        injector = std::make_unique<FaultInjector>(&session, settings.seed);
        injector->setPlan(*settings.faults);
    }
    session.start();
    const int code = QCoreApplication::exec();
    session.stop();
    view.reset();
    printer.print(session.summary(), session.seconds());
    if (injector) {
        printer.print(QStringLiteral("faults"), injector->summary());
        injector.reset();
        theSession.reset(); // It has the plug-in's one service.
        printVerdict(*witness, settings.session, printer);
    }
    return recorder.problem().isEmpty() ? code : int(fail(recorder.problem()));
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
    addOptions(&line);
    if (const auto code = line.read(arguments))
        return *code;
    RunSettings settings;
    const QString problem = readSettings(&line, &settings);
    if (line.isWrong())
        return WrongUsage;
    if (!problem.isEmpty())
        return line.complain(problem);
    if (line.isSet("list-values")) {
        listValues(VirtualCar());
        return Done;
    }
    return run(&line, settings);
}

} // namespace bench
