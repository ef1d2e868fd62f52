// A guided run: each step says what it does, and the events show what comes of it.
#include "commandline.h"
#include "eventprinter.h"
#include "session.h"
#include "unixsignals.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <utility>

namespace bench {

namespace {

struct Step
{
    int milliseconds;  // After the start.
    const char *title; // Empty: goes on with the step before.
    void (*act)(Session &session);
};

void askForEverything(Session &session)
{
    CanServiceBase &service = session.service();
    service.requsetClimate();
    service.requsetParkAssist();
    service.requsetVehicleInfo();
    service.requsetCarSetting();
    service.requsetUnitSettings();
}

template <int Code>
void putObstacle(Session &session)
{
    session.car().setRaw(CarValue::RadarRearLeft, Code);
    session.car().setRaw(CarValue::RadarRearMiddleLeft, Code > 2 ? Code - 2 : Code);
}

void reportMedia(Session &session)
{
    CanServiceBase &service = session.service();
    service.onRadioSourceInformation("FM1", {"87.50MHz"}, 0);
    service.onRadioSourceInformation("Disc", {"First line", "Second line", ""}, 3);
    GPSTime time{30, 10, 15, 6, 2025};
    service.GPSTimeSend(time);
}

// Inverts one bit of the checksum of the next frame, of that one only.
void damageNextFrame(Session &session)
{
    session.box().setFrameFilter([done = false](const QByteArray &frame) mutable {
        QByteArray passed = frame;
        if (!std::exchange(done, true))
            passed[passed.size() - 1] =
                static_cast<char>(canbox::byteAt(frame, frame.size() - 1) ^ 1);
        return passed;
    });
}

constexpr Step kSteps[] = {
    {1000, "The host asks for every report", askForEverything},
    {2000, "The driver's door opens and closes",
     [](Session &s) { s.car().setRaw(CarValue::DoorLeftFront, 1); }},
    {2500, "", [](Session &s) { s.car().setRaw(CarValue::DoorLeftFront, 0); }},
    {3000, "An obstacle comes near at the rear left", putObstacle<28>},
    {3250, "", putObstacle<16>},
    {3500, "", putObstacle<10>},
    {3750, "", putObstacle<1>},
    {4000, "", putObstacle<0>},
    {4500, "Climate keys of the host: warmer, more air, another direction",
     [](Session &s) { s.service().sendAcKey(19, 0); }},
    {4750, "", [](Session &s) { s.service().sendAcKey(15, 0); }},
    {5000, "", [](Session &s) { s.service().sendAcKey(31, 0); }},
    {5500, "The host changes the ambient light: brighter, another colour",
     [](Session &s) { s.service().sendCarSettingKey(4, 1); }},
    {5750, "", [](Session &s) { s.service().sendCarSettingKey(5, 6); }},
    {6250, "The host changes the units of temperature and pressure",
     [](Session &s) { s.service().setUnitCmd(3); }},
    {6500, "", [](Session &s) { s.service().setUnitCmd(5); }},
    {7000, "The host reports its station, a text source and the time to the cluster", reportMedia},
    {7750, "A steering-wheel key, short and long", [](Session &s) { s.car().pressKey(5); }},
    {7950, "", [](Session &s) { s.car().releaseKey(); }},
    {8250, "", [](Session &s) { s.car().pressKey(5); }},
    {10000, "", [](Session &s) { s.car().releaseKey(); }},
    {10500, "A frame is damaged on the line: bad receipt, and the box sends it again",
     [](Session &s) {
         damageNextFrame(s);
         s.car().setRaw(CarValue::Speed, 50);
     }},
    {11250, "The cable is pulled; meanwhile the tailgate opens",
     [](Session &s) {
         s.unplug();
         s.car().setRaw(CarValue::DoorRear, 1);
     }},
    {12250, "The cable is back", [](Session &s) { s.plug(); }},
    {15000, "", nullptr},
};

constexpr Step kSilence[] = {
    {15000, "The box falls silent: after 30 s the service checks, 1.2 s later it gives up",
     [](Session &s) { s.box().setSilent(true); }},
    {48000, "The box answers again, at the next knock",
     [](Session &s) { s.box().setSilent(false); }},
    {51000, "", nullptr},
};

} // namespace

int tourCommand(const QStringList &arguments)
{
    CommandLine line(
        "tour", "[--full]",
        "A run of 15 s on the embedded box that shows the link, the version, each kind of\n"
        "report, the host's commands, a damaged frame and a pulled cable, and ends with\n"
        "a summary. It fails if the link is not up at the end.",
        "canbench tour\n"
        "canbench tour --full");
    line.addOption({"full", "Also a silence of the box that loses the link: 36 s more."});
    if (const auto code = line.read(arguments))
        return *code;

    QLoggingCategory::setFilterRules("default.debug=false");
    UnixSignals unixSignals;
    Session session(SessionOptions{});
    EventPrinter printer(EventPrinter::Text);
    printer.setTerse(true);
    QObject::connect(&session, &Session::happened,
                     [&](const Event &event) { printer.print(event, session.state()); });
    QObject::connect(&unixSignals, &UnixSignals::caught,
                     [](int number) { QCoreApplication::exit(SignalBase + number); });

    QVector<Step> steps(std::begin(kSteps), std::end(kSteps));
    if (line.isSet("full")) {
        steps.removeLast();
        std::copy(std::begin(kSilence), std::end(kSilence), std::back_inserter(steps));
    }
    for (const Step &step : steps)
        QTimer::singleShot(step.milliseconds, Qt::PreciseTimer, [&session, &printer, step] {
            if (*step.title)
                printer.heading(step.title);
            if (step.act)
                step.act(session);
            else
                QCoreApplication::exit(session.linkCode() == 3 ? Done : Failed);
        });

    printer.heading("The host loads the plug-in and starts it");
    const QString problem = session.open();
    if (!problem.isEmpty())
        return fail(problem);
    session.start();
    const int code = QCoreApplication::exec();
    session.stop();
    printer.print(session.summary(), session.seconds());
    return code;
}

} // namespace bench
