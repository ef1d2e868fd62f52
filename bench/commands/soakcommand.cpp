// Much traffic, all faults, and the question what is left of them.
#include "commandline.h"
#include "eventprinter.h"
#include "faultinjector.h"
#include "session.h"
#include "unixsignals.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

#include <cstdio>
#include <malloc.h>

namespace bench {

namespace {

constexpr int kWarmUp = 5000; // ms until memory has found its size
constexpr int kSettle = 4000; // ms for the host to come back and hear the whole car
// KiB. Queues keep the room of their longest moment; one small block lost per frame would be
// megabytes.
constexpr int kAllowedGrowth = 1024;

// Per frame; what stops the traffic for seconds is rare.
constexpr char kDefaultFaults[] = "all=0.0002,silence=1e-5,stall=1e-5,no-answer=0,unplug=1e-5,"
                                  "unplug-frame=1e-5,unplug-write=1e-5";

// Values whose getter answers what goes over the wire, under the same name.
constexpr const char *kComparable[] = {
    "door.left_front", "door.right_front",     "door.left_rear",        "door.right_rear",
    "door.rear",       "climate.ac",           "climate.inside_air",    "climate.auto",
    "climate.max",     "climate.rear",         "climate.front_defrost", "climate.wheel_heat",
    "climate.fan",     "climate.rear_defrost",
};

qint64 heapKibibytes() { return static_cast<qint64>(mallinfo2().uordblks / 1024); }

int descriptors() { return QDir(QStringLiteral("/proc/self/fd")).entryList().size(); }

/// Changes the car with every frame, so that the line is never idle.
class RestlessCar
{
public:
    RestlessCar(Session *session, quint32 seed)
        : mSession(session)
        , mRandom(seed)
    {
        mTick.setInterval(50); // Begins again what a silent box has ended.
        QObject::connect(&mTick, &QTimer::timeout, &mTick, [this] { change(); });
        QObject::connect(&mSession->box(), &VirtualBox::frameSent, &mTick, [this] {
            if (mTick.isActive())
                change();
        });
    }

    void begin() { mTick.start(); }
    void end() { mTick.stop(); }

private:
    void change()
    {
        for (int i = 0; i < 4; ++i) {
            const auto value = static_cast<CarValue>(mRandom.below(kCarValueCount));
            mSession->car().setRaw(value, mRandom.below(1 << carValueInfo(value).bits));
        }
    }

    Session *const mSession;
    FaultRandom mRandom;
    QTimer mTick;
};

QStringList differences(Session &session)
{
    QStringList texts;
    const Snapshot state = session.readState();
    for (int i = 0; i < kCarValueCount; ++i) {
        const CarValueInfo &info = carValueInfo(static_cast<CarValue>(i));
        const bool comparable =
            std::any_of(std::begin(kComparable), std::end(kComparable),
                        [&info](const char *name) { return qstrcmp(name, info.name) == 0; });
        const int answer = state.value(info.name).value.toInt();
        if (comparable && answer != session.car().raw(info.id))
            texts += QStringLiteral("%1 is %2, and the getter answers %3")
                         .arg(QLatin1String(info.name))
                         .arg(session.car().raw(info.id))
                         .arg(answer);
    }
    return texts;
}

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
        {"losses", "How often the box is silent for 35 s, which loses the link (default 1).", "N"},
        {"seed", "The same seed gives the same car and faults (default 1).", "N"},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
    });
    if (const auto code = line.read(arguments))
        return *code;
    const double duration = line.seconds("duration", 120, 1, 1e6);
    const int speed = line.number("speed", 30, 1, 30);
    const int losses = line.number("losses", 1, 0, 1000);
    const auto seed = static_cast<quint32>(line.number("seed", 1, 0, 0x7FFFFFFF));
    if (line.isWrong())
        return WrongUsage;
    FaultPlan plan;
    const QString wrongPlan =
        plan.read(line.isSet("faults") ? line.value("faults") : kDefaultFaults);
    if (!wrongPlan.isEmpty())
        return line.complain(wrongPlan);

    QLoggingCategory::setFilterRules("default.debug=false\ndefault.warning=false\n"
                                     "default.critical=false\ndefault.info=false");
    UnixSignals unixSignals;
    SessionOptions options;
    options.plugin = line.value("plugin");
    options.readsState = false;
    Session session(options);
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    session.box().setBaudRate(canbox::kBaudRate * speed);
    FaultInjector injector(&session, seed);
    RestlessCar car(&session, seed);
    int lossesSignalled = 0;
    QObject::connect(&session, &Session::happened, [&lossesSignalled](const Event &event) {
        const bool isLink = event.name == QLatin1String("notifyCanbusStatus");
        lossesSignalled += isLink && event.arguments.first().toInt() == 0;
    });
    QObject::connect(&unixSignals, &UnixSignals::caught,
                     [](int number) { QCoreApplication::exit(SignalBase + number); });

    std::fprintf(stderr,
                 "Soaking for %.0f s, and some more to begin and to end. Ctrl-C stops it.\n",
                 duration);
    session.start();
    car.begin();
    wait(kWarmUp, unixSignals);
    if (unixSignals.latest() != 0)
        return SignalBase + unixSignals.latest();
    const qint64 heapBefore = heapKibibytes();
    const int descriptorsBefore = descriptors();
    injector.setPlan(plan);

    for (int loss = 0; loss < losses; ++loss)
        QTimer::singleShot(static_cast<int>(duration * 1000 * (loss + 0.5) / losses), &injector,
                           [&injector] { injector.inject(Fault::NoAnswer); });
    QTimer::singleShot(static_cast<int>(duration * 1000), [] { QCoreApplication::exit(Done); });
    const int code = QCoreApplication::exec();
    if (code != Done)
        return code;

    // The line becomes whole again, and the host hears the car once more.
    car.end();
    injector.setPlan({});
    while (injector.isBusy() && unixSignals.latest() == 0)
        wait(100, unixSignals);
    wait(kSettle, unixSignals);
    session.box().reportAll();
    wait(1000, unixSignals);
    if (unixSignals.latest() != 0)
        return SignalBase + unixSignals.latest();

    const qint64 growth = heapKibibytes() - heapBefore;
    const int moreDescriptors = descriptors() - descriptorsBefore;
    QStringList failures = differences(session);
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

    EventPrinter printer(EventPrinter::Text);
    printer.print(session.summary(), session.seconds());
    printer.print(QStringLiteral("faults"), injector.summary());
    printer.print(QStringLiteral("resources"),
                  {{QStringLiteral("seconds of a full line"),
                    injector.bytesPassed() / (canbox::kBaudRate / 10)},
                   {QStringLiteral("heap growth, KiB"), growth},
                   {QStringLiteral("descriptors more"), moreDescriptors}});
    for (const QString &failure : failures)
        fail(failure);
    return failures.isEmpty() ? Done : ExpectationFailed;
}

} // namespace bench
