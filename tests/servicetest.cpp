#include "servicetest.h"

#include <QLoggingCategory>

QVector<int> ids(const QString &text)
{
    QVector<int> found;
    for (const QString &range : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const int last = range.section(QLatin1Char('-'), -1).toInt();
        for (int id = range.section(QLatin1Char('-'), 0, 0).toInt(); id <= last; ++id)
            found << id;
    }
    return found;
}

ServiceTest::ServiceTest()
{
    QObject::connect(canservice::SerialMonitor::instance(), &canservice::SerialMonitor::written,
                     &service, [this](const QByteArray &bytes, bool flag, bool) {
                         note(QString::fromLatin1(bytes.toHex()) + QLatin1String(flag ? " !" : ""));
                     });
    using Base = CanServiceBase;
    QObject::connect(&service, &Base::notifyCanbusStatus, [this](int status) {
        note(QStringLiteral("notifyCanbusStatus %1").arg(status));
    });
    QObject::connect(&service, &Base::keyEvent, [this](int key, int state, bool fromSwc) {
        note(QStringLiteral("keyEvent %1 %2 %3")
                 .arg(key)
                 .arg(state)
                 .arg(QLatin1String(fromSwc ? "true" : "false")));
    });
    const auto noted = [this](const char *name) {
        return [this, name] { note(QString::fromLatin1(name)); };
    };
    QObject::connect(&service, &Base::sigVersionData, noted("sigVersionData"));
    QObject::connect(&service, &Base::acStatusChanged, noted("acStatusChanged"));
    QObject::connect(&service, &Base::sigRadarChanged, noted("sigRadarChanged"));
    QObject::connect(&service, &Base::doorChanged, noted("doorChanged"));
    QObject::connect(&service, &Base::drivingDataChanged, noted("drivingDataChanged"));
    QObject::connect(&service, &Base::tireDataChanged, noted("tireDataChanged"));
    QObject::connect(&service, &Base::tireAlert, noted("tireAlert"));
    QObject::connect(&service, &Base::batteryVoltageChange, noted("batteryVoltageChange"));
    QObject::connect(&service, &Base::sigAmbientChanged, noted("sigAmbientChanged"));
    QObject::connect(&service, &Base::unitDataChanged, noted("unitDataChanged"));
}

void ServiceTest::note(const QString &event)
{
    journal << event;
    if (afterEvent)
        afterEvent();
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
