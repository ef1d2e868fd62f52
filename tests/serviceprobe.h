// What the tests share: a service without a device, its writes, its signals and its log lines.
#pragma once

#include "rows.h"

#include "plugin/simpleservice.h"

#include <canbusmanager.h>

#include <QSignalSpy>

#include <memory>
#include <vector>

namespace canservice {

/// The parser and the timers of a service.
class ServiceProbe
{
    SimpleService &mService;

public:
    explicit ServiceProbe(SimpleService &service)
        : mService(service)
    {
    }

    const int &parseState = mService.mParseState;
    const QByteArray &recvPayload = mService.mRecvPayload;
    const int &noAnswerCount = mService.mNoAnswerCount;
    LazyTimer &checkConnect = mService.mCheckConnectTmr;
    QTimer &requestConnect = mService.mRequestConnectTmr;
    QTimer &send = mService.mSendTmr;
    QTimer &cartype = mService.mCartypeTmr;
    LazyTimer &longPress = mService.mLongPressTmr;
    LazyTimer &parseOut = mService.mParseOutTmr;
    const int &acKey = mService.mAcKey;
    const int &currentKey = mService.mCurrentKey;
    const QByteArray &radarData = mService.mRadarData;
};

} // namespace canservice

/// A float to its last bit, for comparisons that forgive nothing.
inline QString exact(float value) { return QString::number(double(value), 'g', 9); }

inline void selectCar(int model) { CanBusManager::instance()->setCarModelId(model); }

/// One service, and everything that it writes and signals, in order.
///
/// The journal has a line per event: "FF !" for a write with the flag true, "2e91010568" for one
/// with the flag false, "keyEvent 5 0 true" for a signal.
class ServiceTest
{
public:
    ServiceTest()
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

    /// Delivers a chunk as the port does.
    void receive(const QByteArray &bytes)
    {
        QMetaObject::invokeMethod(&service, "onDataReady", Q_ARG(QByteArray, bytes));
    }

    /// Runs a slot of a timer.
    void timeout(const char *slot) { QMetaObject::invokeMethod(&service, slot); }

    /// Hands over a good frame's payload. \returns what that signalled, but for the link code that
    /// comes with every frame.
    QString dispatch(int dataType, QByteArray payload)
    {
        take();
        service.dispatchEvent(dataType, payload);
        journal.removeAll(QStringLiteral("notifyCanbusStatus 3"));
        return taken();
    }

    /// The journal since the last call.
    QStringList take()
    {
        QStringList taken;
        taken.swap(journal);
        return taken;
    }

    /// The same in one line.
    QString taken() { return take().join(QStringLiteral(", ")); }

    canservice::SimpleService service;
    canservice::ServiceProbe probe{service};
    QStringList journal;
};

/// Keeps the log lines of a scope. Debug lines of the default category are on or off.
class LogCapture
{
public:
    struct Line
    {
        QtMsgType type;
        QByteArray file;
        int line;
        QByteArray function;
        QString text;
    };

    explicit LogCapture(bool debug = true)
    {
        QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, debug);
        sLines.clear();
        mPrevious = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &context, const QString &text) {
                sLines.push_back({type, context.file, context.line, context.function, text});
            });
    }
    ~LogCapture()
    {
        qInstallMessageHandler(mPrevious);
        QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    }
    Q_DISABLE_COPY(LogCapture)

    static const std::vector<Line> &lines() { return sLines; }

    /// Each line's own items: what follows the "--".
    static QStringList items()
    {
        QStringList items;
        for (const Line &line : sLines)
            items << line.text.section(QStringLiteral("--"), 1).trimmed();
        return items;
    }

private:
    QtMessageHandler mPrevious;
    static inline std::vector<Line> sLines;
};
