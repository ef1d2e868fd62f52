// Much traffic, all faults, and the question what is left of them.
#include "bench/commands/commandline.h"
#include "bench/headunit/witness.h"
#include "bench/language/parser.h"
#include "bench/language/runner.h"
#include "bench/screen/output.h"
#include "bench/screen/printer.h"
#include "bench/screen/progress.h"
#include "bench/screen/unixsignals.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

#include <malloc.h>

namespace bench {

namespace {

constexpr int kWarmUp = 3000;       // ms until memory has found its size
constexpr double kTimeForLoss = 80; // s: a silence of 35 s, and traffic before and after
constexpr int kSettle = 4000;       // ms for the host to come back and hear the whole car
// KiB. Queues keep the room of their longest moment; one small block lost per frame would be
// megabytes.
constexpr int kAllowedGrowth = 1024;

// Per frame; what stops the traffic for seconds is rare.
constexpr char kDefaultFaults[] = "all=0.0002,silence=0.00001,stall=0.00001,no-answer=0,"
                                  "unplug=0.00001,unplug-frame=0.00001,unplug-write=0.00001";

qint64 heapKibibytes() { return static_cast<qint64>(mallinfo2().uordblks / 1024); }

int descriptors() { return QDir(QStringLiteral("/proc/self/fd")).entryList().size(); }

// Ends early, as the main loop does, on a signal.
void wait(int milliseconds, const UnixSignals &unixSignals)
{
    if (unixSignals.latest() != 0)
        return;
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

int soakCommand(const QStringList &arguments)
{
    CommandLine line("soak", "[options]",
                     "Lets a car that changes all the time talk through the embedded box, with all "
                     "faults on the line, and checks afterwards that memory and descriptors are "
                     "where they were, that every loss of the link was signalled and ended, and "
                     "that the host knows the car as it is. Exit code 3 if not.",
                     "canbench soak --duration 120 --speed 30\n"
                     "canbench soak --duration 3600 --seed 7");
    line.addOptions({
        {"duration", "Seconds of real time (default 120).", "S"},
        {"speed", "The line's speed, in times of 38400 baud, 1 to 30 (default 30).", "X"},
        {"faults", "As for run; without it, all of them, those that stop the traffic seldom.",
         "KINDS"},
        {"losses",
         "How often the box is silent for 35 s, which loses the link (default 1, or 0 if the "
         "duration is less than 80 s).",
         "N"},
        {"seed", "The same seed gives the same car and faults (default 1).", "N"},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
    });
    if (const auto code = line.read(arguments))
        return *code;
    const double duration = line.seconds("duration", 120, 1, 1e6);
    const int speed = line.number("speed", 30, 1, 30);
    const int losses = line.number("losses", duration < kTimeForLoss ? 0 : 1, 0, 1000);
    const auto seed = static_cast<quint32>(line.number("seed", 1, 0, 0x7FFFFFFF));
    if (line.isWrong())
        return WrongUsage;
    Scenario faults;
    ParseContext context{&faults};
    const QString wrongPlan =
        readFaultOption(line.isSet("faults") ? line.value("faults") : kDefaultFaults, context);
    if (!wrongPlan.isEmpty())
        return line.complain(wrongPlan);

    QLoggingCategory::setFilterRules("default.debug=false\ndefault.warning=false\n"
                                     "default.critical=false\ndefault.info=false");
    UnixSignals unixSignals;
    SessionOptions options;
    options.plugin = line.value("plugin");
    options.seed = seed;
    int lossesSignalled = 0;
    Session session(options);
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    BoxEnd &end = *session.boxEnd();
    end.box().setBaudRate(canbox::kBaudRate * speed);
    FaultInjector &injector = end.faults();
    Witness witness(&session, Witness::Present);
    Runner runner(Stage(session), 1);
    // The car changes with every frame, so that the line is never idle.
    FaultRandom random(seed);
    QTimer restless; // Begins again what a silent box has ended.
    const auto change = [&] {
        for (int i = 0; restless.isActive() && i < 4; ++i) {
            const ValueId id{random.below(kValueCount)};
            end.car().setRaw(id, random.below(fieldOf(id).mask() + 1));
        }
    };
    QObject::connect(&restless, &QTimer::timeout, &restless, change);
    QObject::connect(&end.box(), &VirtualBox::frameSent, &restless, change);
    QObject::connect(&session, &Session::happened, [&lossesSignalled](const Event &event) {
        lossesSignalled += event.isLink() && numberOf(event.arguments.first()) == 0;
    });
    QObject::connect(&unixSignals, &UnixSignals::caught,
                     [](int number) { QCoreApplication::exit(SignalBase + number); });

    standardError().line(QStringLiteral("Soaking for %1 s, and some 10 s more to begin and to end. "
                                        "Ctrl-C stops it.")
                             .arg(duration, 0, 'f', 0));
    session.start();
    restless.start(50);
    wait(kWarmUp, unixSignals);
    if (unixSignals.latest() != 0)
        return SignalBase + unixSignals.latest();
    const qint64 heapBefore = heapKibibytes();
    const int descriptorsBefore = descriptors();
    runner.play(faults.steps);

    for (int loss = 0; loss < losses; ++loss)
        QTimer::singleShot(static_cast<int>(duration * 1000 * (loss + 0.5) / losses), &injector,
                           [&injector] { injector.inject(Fault::NoAnswer); });
    QTimer::singleShot(static_cast<int>(duration * 1000), [] { QCoreApplication::exit(Done); });
    Progress progress;
    QElapsedTimer elapsed;
    QTimer tick;
    elapsed.start();
    QObject::connect(&tick, &QTimer::timeout, [&] {
        progress.show(static_cast<double>(elapsed.elapsed()) / 1000, duration);
    });
    if (progress.isVisible())
        tick.start(200);
    const int code = QCoreApplication::exec();
    tick.stop();
    progress.clear();
    if (code != Done)
        return code;

    // The line becomes whole again, and the host hears the car once more.
    restless.stop();
    injector.setPlan({});
    while (injector.isBusy() && unixSignals.latest() == 0)
        wait(100, unixSignals);
    wait(kSettle, unixSignals);
    // A frame that the last fault left open takes the first of these for its rest, and is given up.
    for (int report = 0; report < 2; ++report) {
        end.box().reportAll();
        wait(1000, unixSignals);
    }
    if (unixSignals.latest() != 0)
        return SignalBase + unixSignals.latest();

    const qint64 growth = heapKibibytes() - heapBefore;
    const int moreDescriptors = descriptors() - descriptorsBefore;
    QStringList failures;
    for (const QString &difference : witness.differences())
        failures += QStringLiteral("the host does not know the car: %1").arg(difference);
    if (session.linkCode() != 3)
        failures += QStringLiteral("the link did not come back");
    if (growth > kAllowedGrowth)
        failures += QStringLiteral("the heap has grown by %1 KiB").arg(growth);
    if (moreDescriptors != 0)
        failures += QStringLiteral("there are %1 descriptors more").arg(moreDescriptors);
    if (lossesSignalled != injector.count(Fault::NoAnswer))
        failures += QStringLiteral("the link was lost %1 times, and signalled lost %2 times")
                        .arg(injector.count(Fault::NoAnswer))
                        .arg(lossesSignalled);

    Printer printer(Printer::Text);
    printer.print(session.summary(), session.seconds());
    printer.print("faults", injector.summary());
    printer.print("resources", {{QStringLiteral("seconds of a full line"),
                                 injector.bytesPassed() / (canbox::kBaudRate / 10)},
                                {QStringLiteral("heap growth, KiB"), growth},
                                {QStringLiteral("descriptors more"), moreDescriptors}});
    for (const QString &failure : failures)
        fail(failure);
    const qint64 frames = session.summary().fromBox.frameTotal();
    qint64 faultTotal = 0;
    for (const auto &row : injector.summary())
        faultTotal += row.second;
    printer.outcome({}, {});
    printer.outcome(failures.isEmpty()
                        ? QStringLiteral("The soak passed: %1 frames, %2 faults, %3 losses of the "
                                         "link, and the host knows the car")
                              .arg(frames)
                              .arg(faultTotal)
                              .arg(lossesSignalled)
                        : QStringLiteral("The soak failed: %1").arg(failures.join("; ")),
                    {});
    return failures.isEmpty() ? Done : ExpectationFailed;
}

} // namespace bench
