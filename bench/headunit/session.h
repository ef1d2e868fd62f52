// One run of the plug-in in its host, on the embedded box or on a real device.
#pragma once

#include "bench/box/boxend.h"
#include "bench/headunit/pluginhost.h"
#include "bench/headunit/statewatch.h"
#include "bench/wire/linecutter.h"

#include <memory>

namespace bench {

struct SessionOptions
{
    QString plugin; ///< Empty: the plug-in of this build.
    QString device; ///< Empty: an embedded box.
    int carModel = 1;
    int carIndex = 1;
    quint32 seed = 1; ///< Of the embedded box's faults.
};

/// Something that happened on the host's side.
struct Event
{
    double seconds; ///< Since the session was made.
    /// A signal of the service, or one of the bench's own: `device` (open, message), `cluster`
    /// (source, lines, clock) and `state` (changes that no signal told of).
    QString name;
    QVector<Value> arguments;
    QVector<Change> changes;

    bool isLink() const;
};

/// The names of an event's arguments, also of the bench's own events; empty for an unknown event.
QStringList eventArguments(const QString &event);
/// The signals of the service and the bench's own events.
QStringList eventNames();

/// What a session has counted. The line is seen from the host.
struct Summary
{
    LineCounts fromBox;
    LineCounts toBox;
    QMap<QString, int> events;
    qint64 droppedWrites = 0; ///< Writes that found the device closed or stalled.
};

/// Box, line, host and plug-in, put together.
class Session : public QObject
{
    Q_OBJECT

public:
    explicit Session(const SessionOptions &options, QObject *parent = nullptr);
    ~Session() override;

    /// Loads the plug-in on the chosen line. \returns an empty text, or what went wrong.
    QString open();
    void start();
    /// Stops the service and lets the event loop run for 50 ms, so that the box hears of it.
    void stop();
    /// The same without running the event loop.
    void halt();
    bool isStarted() const { return mStarted; }

    CanServiceBase &service() { return *mHost.service(); }
    const StateWatch &state() const { return mState; }
    int linkCode() const { return mLinkCode; } ///< -1 before the first one.
    bool isDeviceOpen() const { return mDeviceOpen; }
    double seconds() const { return mClock.seconds(); }
    /// Seconds since the box's last byte; since the session's making before the first.
    double secondsSinceByte() const { return seconds() - mLastByte; }
    const Clock &clock() const { return mClock; }
    const SessionOptions &options() const { return mOptions; }
    const Summary &summary();

    /// Null on a real device.
    BoxEnd *boxEnd() { return mBoxEnd.get(); }
    /// Everything that host or box have sent has arrived and was answered.
    bool isQuiet();

signals:
    void happened(const bench::Event &event);
    /// What the line has carried, before it is cut.
    void carried(bool fromBox, const QByteArray &bytes);
    /// What came from the box, cut as the service cuts it.
    void received(const bench::LineItem &item);

private:
    void onEvent(const QString &name, const QVector<Value> &arguments, int signal = -1);
    void lookAround();
    void onReceived(const QByteArray &bytes);
    void onWritten(const QByteArray &bytes, bool delivered);

    const SessionOptions mOptions;
    SteadyClock mClock;
    std::unique_ptr<BoxEnd> mBoxEnd;
    PluginHost mHost;
    LineCutter mFromBox{LineCutter::Host};
    LineCutter mToBox{LineCutter::Box};
    StateWatch mState;
    QTimer mAroundTmr; ///< After what was received has been handled.
    int mLinkCode = -1;
    bool mStarted = false;
    bool mDeviceOpen = false;
    double mLastByte = 0;
    qint64 mBytesIn = 0;
    qint64 mBytesOut = 0;
    qint64 mBoxBytes = 0; ///< That the embedded box has put on the line.
    Summary mSummary;
};

} // namespace bench
