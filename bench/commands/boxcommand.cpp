// The virtual box and car alone.
#include "bench/box/devicelink.h"
#include "bench/box/pseudoterminal.h"
#include "bench/commands/controlchannel.h"
#include "bench/commands/scenariofile.h"
#include "bench/commands/sessionrun.h"
#include "bench/language/parser.h"
#include "bench/language/runner.h"
#include "bench/screen/boxprinter.h"
#include "bench/screen/output.h"

#include <QCoreApplication>
#include <QDateTime>

namespace bench {

namespace {

struct BoxOptions
{
    QString device; ///< Empty: a pseudo terminal.
    QString link;
    QString file; ///< Of the scenario.
    Scenario scenario;
    Scenario faults;
    double speed = 1;
    double duration = 0; ///< Seconds; 0 for no end.
    quint32 seed = 1;
    QString control;
    QString trace;
    bool force = false;
    Printer::Format format = Printer::Text;
};

void addBoxOptions(CommandLine *line)
{
    line->addOptions({
        {"device", "Be the box on the serial device DEV instead of a pseudo terminal.", "DEV"},
        {"link", "Make PATH a symbolic link to the pseudo terminal, for as long as it is there.",
         "PATH"},
        {"model", "The car's model, for what its bumpers report (default 1).", "ID"},
        {"duration", "End after S seconds; without it, on Ctrl-C.", "S"},
        {"scenario",
         "Play the scenario FILE, of steps and expectations of box and car, and end with it.",
         "FILE"},
        {"speed", "Play its waits and ramps X times as fast, 0.001 to 1000 (default 1).", "X"},
        {"control", kControlHelp, "PATH"},
        {"faults",
         "Faults on the line to the host: KIND[=RATE],... with RATE a probability per frame "
         "(default 0.02), or 'all'. A wrong kind lists them.",
         "KINDS"},
        {"seed", "The same seed gives the same faults (default 1).", "N"},
        {"trace", "Record the serial line to the trace FILE.", "FILE"},
        {"force", "Replace the trace FILE if it exists."},
        {"json", "One JSON object a line."},
    });
}

// \returns the exit code for what is wrong.
std::optional<int> readOptions(CommandLine &line, BoxOptions *options)
{
    options->scenario.carModel = line.number("model", 1, -32768, 65535);
    options->duration = line.seconds("duration", 0, 0.001, 1e6);
    options->speed = line.factor("speed", 1, 0.001, 1000);
    options->seed = static_cast<quint32>(line.number("seed", 1, 0, 0x7FFFFFFF));
    if (line.isWrong())
        return WrongUsage;
    for (const char *option : {"device", "link", "scenario", "control", "trace"})
        if (line.isSet(option) && line.value(option).isEmpty())
            return line.complain(QStringLiteral("--%1 needs a name").arg(option));
    options->device = line.value("device");
    options->link = line.value("link");
    options->file = line.value("scenario");
    options->control = line.value("control");
    options->trace = line.value("trace");
    options->force = line.isSet("force");
    options->format = line.isSet("json") ? Printer::Json : Printer::Text;
    if (line.isSet("device") && line.isSet("link"))
        return line.complain("--link is for a pseudo terminal, not for a --device");
    if (line.isSet("faults")) {
        ParseContext context{&options->faults};
        const QString problem = readFaultOption(line.value("faults"), context);
        if (!problem.isEmpty())
            return line.complain(problem);
    }
    return std::nullopt;
}

// The scenario's own car model counts, if it has one.
std::optional<int> readScenario(BoxOptions *options)
{
    if (options->file.isEmpty())
        return std::nullopt;
    QByteArray text;
    const QString problem = readScenarioFile(options->file, &text);
    if (!problem.isEmpty())
        return fail(problem);
    const int model = options->scenario.carModel;
    options->scenario = parseScenario(text, options->file, readScenarioFile);
    if (model != 1)
        options->scenario.carModel = model;
    QVector<Mistake> mistakes = options->scenario.mistakes;
    if (mistakes.isEmpty())
        mistakes = findObstacles(options->scenario.steps, NeedsBox);
    if (!mistakes.isEmpty())
        return complainAbout(options->file, mistakes);
    return std::nullopt;
}

/// The box at work.
class BoxRun
{
public:
    explicit BoxRun(const BoxOptions &options)
        : mOptions(options)
        , mEnd(mClock, options.seed)
        , mChannel(Stage(nullptr, &mEnd))
        , mPrinter(printerFor(options.control, options.format))
        , mEventPrinter(Printer::Json, [this](const QByteArray &json) { mChannel.publish(json); })
    {
        for (Printer *printer : {&mPrinter, &mEventPrinter})
            printer->setOrigin(QDateTime::currentMSecsSinceEpoch() * 1000 - mClock.microseconds());
        mEnd.car().setTwoCodesPerSensor(hasTwoCodesPerSensor(options.scenario.carModel));
        QObject::connect(&mSignals, &UnixSignals::caught,
                         [this](int number) { end(SignalBase + number); });
    }

    int run();

private:
    QString open(int *code);
    void announce();
    void end(int code);
    int exec();
    int playScenario();
    void printSummary();
    double seconds() const { return static_cast<double>(mClock.nanoseconds()) / 1e9; }

    const BoxOptions &mOptions;
    SteadyClock mClock;
    UnixSignals mSignals;
    BoxEnd mEnd;
    DeviceLink mLink;
    ControlChannel mChannel;
    Printer mPrinter;
    Printer mEventPrinter; ///< For the clients of the channel.
    TraceRecorder mRecorder;
    std::unique_ptr<BoxWatch> mWatch;
    std::optional<int> mCode; ///< Once it is to end.
};

QString BoxRun::open(int *code)
{
    *code = Failed;
    const QString device = mOptions.device;
    QString problem;
    if (!mOptions.trace.isEmpty()) {
        QStringList inputs;
        if (!mOptions.file.isEmpty())
            inputs += mOptions.file;
        problem = mRecorder.start({mOptions.trace, inputs, mOptions.force},
                                  device.isEmpty() ? QStringLiteral("canbox") : device,
                                  {mOptions.scenario.carModel, mOptions.scenario.carIndex});
        if (!problem.isEmpty())
            return problem;
    }
    problem = mEnd.open(device);
    if (!problem.isEmpty())
        return problem;
    *code = WrongUsage;
    if (!mOptions.link.isEmpty())
        problem = mLink.create(mOptions.link, mEnd.terminal().path());
    if (problem.isEmpty() && !mOptions.control.isEmpty())
        problem = mChannel.open(mOptions.control);
    if (!problem.isEmpty())
        return problem;
    QObject::connect(&mChannel, &ControlChannel::ended, [this] { end(Done); });
    QObject::connect(&mChannel, &ControlChannel::said,
                     [this](const QString &text) { mPrinter.heading(text, seconds()); });

    // Recorded before anything comes of it.
    QObject::connect(&mEnd.box(), &VirtualBox::transmit, &mRecorder,
                     [this](const QByteArray &bytes) { mRecorder.record(true, bytes); });
    QObject::connect(&mEnd.terminal(), &SerialLine::received, &mRecorder,
                     [this](const QByteArray &bytes) { mRecorder.record(false, bytes); });
    mWatch = std::make_unique<BoxWatch>(&mEnd, mClock);
    QObject::connect(mWatch.get(), &BoxWatch::happened, [this](const BoxEvent &event) {
        print(event, mPrinter);
        if (mChannel.hasListeners())
            print(event, mEventPrinter);
    });
    return {};
}

// Whoever started the program waits for this line.
void BoxRun::announce()
{
    QString device = mOptions.device;
    if (const auto *terminal = qobject_cast<PseudoTerminal *>(&mEnd.terminal()))
        device = terminal->device();
    Printer(mOptions.format).outcome(QStringLiteral("box at ") + device, {{"box", device}});
    standardOutput().flush();
}

// Whoever ends it may be earlier than the event loop.
void BoxRun::end(int code)
{
    mCode = mCode.value_or(code);
    QCoreApplication::exit(*mCode);
}

int BoxRun::exec() { return mCode ? *mCode : QCoreApplication::exec(); }

int BoxRun::playScenario()
{
    Runner runner(Stage(nullptr, &mEnd), mOptions.speed);
    QObject::connect(&runner, &Runner::said,
                     [this](const QString &text) { mPrinter.heading(text, seconds()); });
    QObject::connect(&runner, &Runner::finished, [&](Runner::Result result) {
        end(result == Runner::Passed ? Done : result == Runner::Unmet ? ExpectationFailed : Failed);
    });
    runner.run(mOptions.scenario.steps);
    const int code = exec();
    if (code == ExpectationFailed || code == Failed)
        standardError().line(QStringLiteral("%1:%2: %3")
                                 .arg(mOptions.file)
                                 .arg(runner.line())
                                 .arg(runner.failure()));
    return code;
}

void BoxRun::printSummary()
{
    Summary summary;
    summary.fromBox.frames = mEnd.box().sent();
    summary.toBox = mEnd.box().received();
    mPrinter.print(summary, seconds());
    if (mEnd.faults().wasUsed())
        mPrinter.print("faults", mEnd.faults().summary());
}

int BoxRun::run()
{
    int code = Done;
    const QString problem = open(&code);
    if (!problem.isEmpty()) {
        fail(problem);
        return code;
    }
    announce();
    Runner(Stage(nullptr, &mEnd), 1).play(mOptions.faults.steps);
    if (mOptions.duration > 0)
        QTimer::singleShot(static_cast<int>(mOptions.duration * 1000), [this] { end(Done); });
    code = mOptions.file.isEmpty() ? exec() : playScenario();
    printSummary();
    if (!mRecorder.problem().isEmpty() && code == Done)
        return fail(mRecorder.problem());
    return code;
}

} // namespace

int boxCommand(const QStringList &arguments)
{
    CommandLine line(
        "box", "[options]",
        "The virtual box and car alone, for a host that is not the bench's. The first line\n"
        "of the output says which device the host is to open; each line after it is what\n"
        "the host does, and what becomes of it in the car. Exit code 3: an expectation of\n"
        "the scenario was not met.",
        "canbench box --link /tmp/canbox\n"
        "canbench box --device /dev/ttyUSB0 --model 22\n"
        "canbench box --scenario my.scenario --faults bit-flip=0.05 --trace my.trace");
    addBoxOptions(&line);
    if (const auto code = line.read(arguments))
        return *code;
    BoxOptions options;
    if (const auto code = readOptions(line, &options))
        return *code;
    if (const auto code = readScenario(&options))
        return *code;
    return BoxRun(options).run();
}

} // namespace bench
