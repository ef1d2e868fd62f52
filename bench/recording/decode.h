// What a recording meant to the service.
#pragma once

#include "linecutter.h"
#include "session.h"
#include "trace.h"
#include "virtualclock.h"

namespace bench {

/// Feeds what a recording has from the box to the plug-in itself, on the recording's own time: what
/// it signals is what it signalled, or would have. One at a time in a process.
class TraceDecoder : public QObject
{
    Q_OBJECT

public:
    explicit TraceDecoder(QObject *parent = nullptr);
    ~TraceDecoder() override;

    /// Loads \p plugin and starts its service for a car of \p carModel.
    /// \returns an empty text, or what went wrong.
    QString open(const QString &plugin, int carModel);
    /// The next line of the recording. Time never goes back: an earlier one counts as the latest.
    void feed(const TraceLine &line);
    /// The recording has ended.
    void finish();

    double seconds() const; ///< Since the recording's first line.
    const Snapshot &state() const { return mState; }
    Summary summary() const;

signals:
    void item(bool fromBox, const bench::LineItem &item);
    /// A signal of the service; it comes after the frame that it is about. The event `state` has
    /// changes that no signal told of.
    void happened(const bench::Event &event);

private:
    void onEvent(const QString &name, const QVariantList &arguments);

    VirtualClock mClock;
    PluginHost mHost;
    LineCutter mFromBox{false};
    LineCutter mToBox{true};
    Snapshot mState;
    QMap<QString, int> mEvents;
    bool mBegun = false;
    qint64 mStart = 0; ///< Microseconds, as the recording has them.
    qint64 mTime = 0;
    QElapsedTimer mSinceTime;
};

} // namespace bench
