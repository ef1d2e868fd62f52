#include "commandline.h"
#include "eventprinter.h"
#include "faultinjector.h"
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

struct KeyPress
{
    quint8 key;
    int milliseconds;
};

// Presses keys one after the other, from the moment the link is up.
class Fingers : public QObject
{
public:
    Fingers(VirtualCar *car, const QList<KeyPress> &presses)
        : mCar(car)
        , mPresses(presses)
    {
    }

    void begin()
    {
        if (!mBegun)
            QTimer::singleShot(kPauseMs, this, [this] { pressNext(); });
        mBegun = true;
    }

private:
    static constexpr int kPauseMs = 300;

    void pressNext()
    {
        if (mPresses.isEmpty())
            return;
        const KeyPress press = mPresses.takeFirst();
        mCar->pressKey(press.key);
        QTimer::singleShot(press.milliseconds, this, [this] {
            mCar->releaseKey();
            QTimer::singleShot(kPauseMs, this, [this] { pressNext(); });
        });
    }

    VirtualCar *mCar;
    QList<KeyPress> mPresses;
    bool mBegun = false;
};

// Reads KEY or KEY:MS. \returns an empty text or what is wrong.
QString readKeyPress(const QString &text, QList<KeyPress> *presses)
{
    bool isKey = false;
    bool isTime = true;
    const QString time = text.section(QLatin1Char(':'), 1);
    const int key = text.section(QLatin1Char(':'), 0, 0).toInt(&isKey, 0);
    const int milliseconds = time.isNull() ? 200 : time.toInt(&isTime);
    if (!isKey || key < 0 || key > 255 || !isTime || milliseconds < 1 || milliseconds > 600000)
        return QStringLiteral("--press needs a key code from 0 to 255, and after a colon the "
                              "milliseconds that it is held, 1 to 600000, not '%1'")
            .arg(text);
    presses->append({static_cast<quint8>(key), milliseconds});
    return {};
}

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
        {"list-values", "List the values of the embedded car, what they are and may be."},
        {"json", "One JSON object a line."},
        {"plain", "A line per event on a terminal too, instead of the live view."},
        {"log", "Show the service's own log on standard error."},
    });
}

void printVerdict(const ValueWitness &witness, const SessionOptions &options, EventPrinter &printer)
{
    ValueWitness::Verdict verdict;
    QLoggingCategory::setFilterRules("default=false"); // What the service says of the past.
    const QString plugin = options.plugin.isEmpty() ? defaultPluginFile() : options.plugin;
    const QString problem = witness.judge(plugin, options.carModel, &verdict);
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

    SessionOptions options;
    options.plugin = line.value("plugin");
    options.device = line.value("device");
    options.carModel = line.number("model", 1, -32768, 65535);
    options.carIndex = line.number("hwd-index", 1, 0, 65535);
    const int seed = line.number("seed", 1, 0, 0x7FFFFFFF);
    const double duration = line.seconds("duration", 0, 0.001, 1e6);
    if (line.isWrong())
        return WrongUsage;
    const bool isEmbedded = !line.isSet("device");
    if (!isEmbedded && options.device.isEmpty())
        return line.complain("--device needs the name of a device, such as /dev/ttyUSB0");
    if (!isEmbedded && (line.isSet("set") || line.isSet("press") || line.isSet("faults")))
        return line.complain(
            "--set, --press and --faults are for the embedded box, not for a --device");

    UnixSignals unixSignals;
    auto theSession = std::make_unique<Session>(options);
    Session &session = *theSession;
    if (line.isSet("list-values")) {
        listValues(session.car());
        return Done;
    }
    for (const QString &setting : line.values("set")) {
        const QString problem =
            session.car().set(setting.section('=', 0, 0), setting.section('=', 1));
        if (!problem.isEmpty())
            return line.complain(problem + "; see 'canbench run --list-values'");
    }
    QList<KeyPress> presses;
    for (const QString &press : line.values("press")) {
        const QString problem = readKeyPress(press, &presses);
        if (!problem.isEmpty())
            return line.complain(problem);
    }

    FaultPlan faults;
    if (line.isSet("faults")) {
        const QString problem = faults.read(line.value("faults"));
        if (!problem.isEmpty())
            return line.complain(problem);
    }

    QLoggingCategory::setFilterRules(line.isSet("log") ? "default.debug=true"
                                                       : "default.debug=false");
    EventPrinter printer(line.isSet("json") ? EventPrinter::Json : EventPrinter::Text);
    std::unique_ptr<LiveView> view;
    const bool wantsLines = line.isSet("json") || line.isSet("plain") || line.isSet("log");
    if (Terminal::isAvailable() && !wantsLines) {
        view = std::make_unique<LiveView>(&session);
        QObject::connect(view.get(), &LiveView::quit, [] { QCoreApplication::exit(Done); });
    }
    Fingers fingers(&session.car(), presses);
    QObject::connect(&session, &Session::happened, [&](const Event &event) {
        if (view)
            view->show(event);
        else
            printer.print(event, session.state());
        if (isEmbedded && session.linkCode() == 3)
            fingers.begin();
    });
    QObject::connect(&unixSignals, &UnixSignals::caught,
                     [](int number) { QCoreApplication::exit(SignalBase + number); });
    if (duration > 0)
        QTimer::singleShot(static_cast<int>(duration * 1000), [] { QCoreApplication::exit(Done); });

    TraceRecorder recorder;
    if (line.isSet("trace")) {
        const QString problem =
            recorder.start(line.value("trace"), isEmbedded ? "canbox" : options.device);
        if (!problem.isEmpty())
            return fail(problem);
    }
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    std::unique_ptr<FaultInjector> injector;
    std::unique_ptr<ValueWitness> witness;
    if (line.isSet("faults")) {
        witness = std::make_unique<ValueWitness>(&session);
        injector = std::make_unique<FaultInjector>(&session, static_cast<quint32>(seed));
        injector->setPlan(faults);
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
        printVerdict(*witness, options, printer);
    }
    return recorder.problem().isEmpty() ? code : int(fail(recorder.problem()));
}

} // namespace bench
