#include "serviceprobe.h"

#include <QLoggingCategory>

ServiceTest::ServiceTest()
{
    QObject::connect(canservice::SerialMonitor::instance(), &canservice::SerialMonitor::written,
                     &service, [this](const QByteArray &bytes, bool flag, bool) {
                         journal << QString::fromLatin1(bytes.toHex()) +
                                        QLatin1String(flag ? " !" : "");
                     });
    const auto note = [this](const char *name) {
        return [this, name] { journal << QString::fromLatin1(name); };
    };
    using Base = CanServiceBase;
    QObject::connect(&service, &Base::notifyCanbusStatus, [this](int status) {
        journal << QStringLiteral("notifyCanbusStatus %1").arg(status);
    });
    QObject::connect(&service, &Base::keyEvent, [this](int key, int state, bool fromSwc) {
        journal << QStringLiteral("keyEvent %1 %2 %3")
                       .arg(key)
                       .arg(state)
                       .arg(QLatin1String(fromSwc ? "true" : "false"));
    });
    QObject::connect(&service, &Base::sigVersionData, note("sigVersionData"));
    QObject::connect(&service, &Base::acStatusChanged, note("acStatusChanged"));
    QObject::connect(&service, &Base::sigRadarChanged, note("sigRadarChanged"));
    QObject::connect(&service, &Base::doorChanged, note("doorChanged"));
    QObject::connect(&service, &Base::drivingDataChanged, note("drivingDataChanged"));
    QObject::connect(&service, &Base::tireDataChanged, note("tireDataChanged"));
    QObject::connect(&service, &Base::tireAlert, note("tireAlert"));
    QObject::connect(&service, &Base::batteryVoltageChange, note("batteryVoltageChange"));
    QObject::connect(&service, &Base::sigAmbientChanged, note("sigAmbientChanged"));
    QObject::connect(&service, &Base::unitDataChanged, note("unitDataChanged"));
}

void ServiceTest::receive(const QByteArray &bytes)
{
    QMetaObject::invokeMethod(&service, "onDataReady", Q_ARG(QByteArray, bytes));
}

QString ServiceTest::dispatch(int dataType, QByteArray payload)
{
    take();
    service.dispatchEvent(dataType, payload);
    journal.removeAll(QStringLiteral("notifyCanbusStatus 3"));
    return taken();
}

QStringList ServiceTest::take()
{
    QStringList taken;
    taken.swap(journal);
    return taken;
}

LogCapture::LogCapture(bool debug)
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, debug);
    sLines.clear();
    mPrevious = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
            sLines.push_back({type, context.file, context.line, context.function, text});
        });
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(mPrevious);
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
}

QStringList LogCapture::items()
{
    QStringList items;
    for (const Line &line : sLines)
        items << line.text.section(QStringLiteral("--"), 1).trimmed();
    return items;
}
