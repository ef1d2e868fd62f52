// What the tests share: a service without a device, its writes, its signals and its log lines.
#pragma once

#include "bench/headunit/servicetime.h"
#include "rows.h"
#include "serviceprobe.h"

#include <canbusmanager.h>

#include <QSignalSpy>

#include <climits>
#include <functional>
#include <vector>

/// A float to its last bit, for comparisons that forgive nothing.
inline QString exact(float value) { return QString::number(double(value), 'g', 9); }

inline void selectCar(int model) { CanBusManager::instance()->setCarModelId(model); }

/// Ids as people write them: "14 16-17 22".
QVector<int> ids(const QString &text);

/// Every model that a list could hold, and some that none can.
inline const QVector<int> kModels = ids("0-128 200 65537") + QVector<int>{-1, -5, INT_MIN, INT_MAX};

/// Time that a test sets, in milliseconds, for what is made and ends under it.
struct TestTime : bench::ServiceTime
{
    void pass(int milliseconds) { advance(milliseconds * 1000LL); }
};

/// One service, and everything that it writes and signals, in order.
///
/// The journal has a line per event: "FF !" for a write with the flag true, "2e91010568" for one
/// with the flag false, "keyEvent 5 0 true" for a signal.
class ServiceTest
{
public:
    ServiceTest();

    /// Delivers a chunk as the port does.
    void receive(const QByteArray &bytes);

    /// Runs a slot of a timer.
    void timeout(const char *slot) { QMetaObject::invokeMethod(&service, slot); }

    /// Hands over a good frame's payload. \returns what that signalled, but for the link code that
    /// comes with every frame.
    QString dispatch(int dataType, QByteArray payload);

    /// The journal since the last call.
    QStringList take();

    /// The same in one line.
    QString taken() { return take().join(QStringLiteral(", ")); }

    canservice::SimpleService service;
    canservice::ServiceProbe probe{service};
    QStringList journal;
    std::function<void()> afterEvent; ///< What a host does within each write and each signal.

private:
    void note(const QString &event);
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

    explicit LogCapture(bool debug = true);
    ~LogCapture();
    Q_DISABLE_COPY(LogCapture)

    static const std::vector<Line> &lines() { return sLines; }

    /// Each line's own items: what follows the "--".
    static QStringList items();

private:
    QtMessageHandler mPrevious;
    static inline std::vector<Line> sLines;
};
