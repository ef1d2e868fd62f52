// One run of the plug-in, on the embedded box or on a real device.
#pragma once

#include "framereader.h"
#include "getters.h"
#include "pluginhost.h"
#include "pseudoterminal.h"
#include "virtualbox.h"

#include <QElapsedTimer>

#include <memory>

namespace bench {

struct SessionOptions
{
    QString plugin; ///< Empty: the plug-in of this build.
    QString device; ///< Empty: an embedded box.
    int carModel = 1;
    int carIndex = 1;
    bool readsState = true; ///< Asks all getters at each event; without, an event has no changes.
};

/// Something that happened on the host's side.
struct Event
{
    double seconds; ///< Since the session was made.
    /// A signal of the service, or `device` (arguments: open, message) or `cluster` (source, lines,
    /// clock).
    QString name;
    QVariantList arguments;
    QVector<Snapshot::Change>
        changes; ///< What the getters answer differently since the last event.
};

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

    CanServiceBase &service() { return *mHost.service(); }
    const Snapshot &state() const { return mState; }
    /// Asks all getters again; what changed since the last event is part of the next one.
    Snapshot readState() { return Snapshot(service()); }
    int linkCode() const { return mLinkCode; } ///< -1 before the first one.
    double seconds() const { return static_cast<double>(mClock.nsecsElapsed()) / 1e9; }
    const Summary &summary();

    bool isEmbedded() const { return mTerminal != nullptr; }
    // The embedded side; only when isEmbedded().
    VirtualCar &car() { return mCar; }
    VirtualBox &box() { return mBox; }
    PseudoTerminal &terminal() { return *mTerminal; }
    void unplug();
    /// Plugs the box in again. \returns false when there is no device left for it.
    bool plug();

signals:
    void happened(const bench::Event &event);

private:
    void onEvent(const QString &name, const QVariantList &arguments);

    const SessionOptions mOptions;
    QElapsedTimer mClock;
    VirtualCar mCar;
    VirtualBox mBox{&mCar};
    std::unique_ptr<PseudoTerminal> mTerminal;
    PluginHost mHost;
    FrameReader mFromBox;
    FrameReader mToBox;
    Snapshot mState;
    int mLinkCode = -1;
    bool mStarted = false;
    Summary mSummary;
};

} // namespace bench
