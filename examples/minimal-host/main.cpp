// The least that a host does with the plug-in: load it, start it, listen, ask, press a climate key,
// stop. See README.md beside for how it is built and what it needs.
#include <canbusmanager.h>
#include <canservicebase.h>
#include <serialport.h>

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QPluginLoader>
#include <QTimer>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "Usage: minimal-host DEVICE, for example /dev/ttyUSB0\n");
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false")); // The service's log.

    // What the user of a head unit has chosen: the line to the box and the car.
    canservice::SerialPort::setDefaultDevice(QFile::decodeName(argv[1]));
    CanBusManager::instance()->setCarModelId(1);
    CanBusManager::instance()->setHwdCarModelIndex(1);

    QPluginLoader loader(QStringLiteral(PLUGIN_FILE));
    auto *service = qobject_cast<CanServiceBase *>(loader.instance());
    if (!service) {
        std::fprintf(stderr, "%s\n", qPrintable(loader.errorString()));
        return 1;
    }

    // Code 3 comes with every frame; a host shows the change.
    int link = 0;
    QObject::connect(service, &CanServiceBase::notifyCanbusStatus, [&](int status) {
        if (status != link)
            std::printf("link %s\n", status == 3 ? "up" : "lost");
        link = status;
    });
    QObject::connect(service, &CanServiceBase::sigVersionData,
                     [&] { std::printf("box version %s\n", qPrintable(service->version())); });
    QObject::connect(service, &CanServiceBase::doorChanged, [&] {
        std::printf("left front door %s\n", service->isLeftFrontDoorOpen() ? "open" : "closed");
    });

    // The first report says how things are; the air conditioning key changes it.
    enum { Unknown, Off, On } before = Unknown;
    QObject::connect(service, &CanServiceBase::acStatusChanged, [&] {
        const auto now = service->isAc() ? On : Off;
        if (now != before)
            std::printf("air conditioning %s, left %.1f %s\n", now == On ? "on" : "off",
                        double(service->getAcTemperature()),
                        qPrintable(service->getAcTemperatureUnit()));
        if (before == Unknown)
            service->sendAcKey(2, 0);
        else if (now != before)
            app.quit();
        before = now;
    });

    service->start();
    QTimer::singleShot(10000, &app, [] {
        std::fprintf(stderr,
                     "No answer to the key within 10 s: is the box on, is the line right?\n");
        QCoreApplication::exit(1);
    });
    const int result = app.exec();
    service->stop();
    loader.unload(); // Deletes the service.
    return result;
}
