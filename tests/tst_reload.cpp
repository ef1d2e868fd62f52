// The plug-in comes and goes a thousand times in one process, and leaves nothing behind.
#include "rows.h"

#include "bench/box/pseudoterminal.h"
#include "bench/headunit/getters.h"

#include <canservicebase.h>
#include <serialport.h>

#include <QDir>
#include <QLoggingCategory>
#include <QPluginLoader>
#include <QSignalSpy>

#include <dlfcn.h>
#include <malloc.h>

#include <memory>

namespace {

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries).size();
}

/// Bytes that are allocated now. The C library counts its cache of freed blocks as allocated, so
/// that the cache must be off. A sanitizer has its own allocator and counts for itself.
size_t allocatedBytes() { return mallinfo2().uordblks; }

bool isMapped(const char *file)
{
    void *handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return handle != nullptr;
}

/// What a host keeps from a service that it has had.
struct Keepsake
{
    QVector<bench::Value> state;
    FuelConsumptionData fuel;
    DrivingData driving;
    OtherInfoData other;
    UnitData units;
    CarSettingData settings;
};

/// Loads the plug-in, brings it to work and unloads it with every timer running but the watchdog's.
Keepsake visit()
{
    QPluginLoader loader(QStringLiteral(PLUGIN_FILE));
    loader.setLoadHints({}); // By default the loader keeps the library mapped.
    auto *service = qobject_cast<CanServiceBase *>(loader.instance());
    if (!service) {
        qCritical("%s", qPrintable(loader.errorString()));
        return {};
    }
    const auto receive = [service](const char *digits) {
        QMetaObject::invokeMethod(service, "onDataReady", Q_ARG(QByteArray, hex(digits)));
    };
    service->start();
    receive("2e300456313235dd");                             // version: check, car-type
    receive("2e631201020303e7955501020304000000001207008d"); // vehicle information 1
    receive("2e6905ff000000ff93");                           // vehicle information 2
    receive("2e2802720162");                                 // temperature unit
    receive("2e20020501d7");                                 // key down: long press
    service->start();                                        // knock
    receive("2e210ac885");                                   // half a frame
    receive("2930");                                         // parse-out

    Keepsake kept{{}, {}, {}, {}, {}, service->getCarSettingData()};
    for (int index = 0; index < bench::getterCount(); ++index)
        kept.state += bench::getter(index).read(*service);
    service->getFuelConsumptionData(kept.fuel);
    service->getDrivingData(kept.driving);
    service->getOtherInfoData(kept.other);
    service->getUnitData(kept.units);
    delete service;
    if (!loader.unload())
        qCritical("%s", qPrintable(loader.errorString()));
    return kept;
}

} // namespace

class ReloadTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules("default.debug=false");
        mDevice = std::make_unique<bench::PseudoTerminal>();
        QVERIFY2(mDevice->isPlugged(), qPrintable(mDevice->errorString()));
        canservice::SerialPort::setDefaultDevice(mDevice->path());
    }

    // What points into an unloaded library is gone with it.
    void hostKeepsWhatItWasGiven()
    {
        QSignalSpy written(canservice::SerialMonitor::instance(),
                           &canservice::SerialMonitor::written);
        const Keepsake kept = visit();
        QVERIFY(!isMapped(PLUGIN_FILE));

        QCOMPARE(bench::plainText(kept.state.at(bench::findGetter("version"))), QString("V125"));
        QCOMPARE(kept.driving.odometer, QString("66051km"));
        QCOMPARE(kept.driving.speed, QString("--"));
        QVERIFY(kept.fuel.reserved[5].isNull() && kept.other.reserved[8].isNull());
        QCOMPARE(kept.units.texts, QStringList({"", "", "", QString::fromUtf8("°F"), "", ""}));
        QCOMPARE(kept.settings.evr.reserved0, QByteArray("16777215"));
        QCOMPARE(written.first().first().toByteArray(), hex("2e8101017c"));
        QCOMPARE(written.at(2).first().toByteArray(), hex("ff"));
    }

    void nothingIsLeftBehind()
    {
        // Qt's and the system's own tables grow to their size first.
        for (int i = 0; i < 20; ++i)
            visit();
        const int descriptors = openDescriptors();
        const size_t bytes = allocatedBytes();
        for (int i = 0; i < 1000; ++i) {
            visit();
            QVERIFY(!isMapped(PLUGIN_FILE));
            QCOMPARE(openDescriptors(), descriptors);
            QCoreApplication::processEvents();
        }
        const QString growth = "%1 bytes more than before 1000 visits; is GLIBC_TUNABLES="
                               "glibc.malloc.tcache_count=0 set?";
        QVERIFY2(allocatedBytes() < bytes + 1000, qPrintable(growth.arg(allocatedBytes() - bytes)));

        // Longer than the longest of the timers of a started service but the check.
        QSignalSpy written(canservice::SerialMonitor::instance(),
                           &canservice::SerialMonitor::written);
        QVERIFY(!written.wait(2200));
    }

private:
    std::unique_ptr<bench::PseudoTerminal> mDevice;
};

QTEST_GUILESS_MAIN(ReloadTest)
#include "tst_reload.moc"
