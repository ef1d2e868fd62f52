// What a recording meant to the service.
#pragma once

#include "bench/headunit/servicetime.h"
#include "bench/headunit/session.h"
#include "bench/recording/trace.h"

#include <QMetaMethod>

namespace bench {

/// Feeds what a recording has from the box to the plug-in itself, on the recording's own time: what
/// it signals is what it signalled, or would have. One at a time in a process.
class TraceDecoder : public QObject
{
    Q_OBJECT

public:
    explicit TraceDecoder(QObject *parent = nullptr);
    ~TraceDecoder() override;

    /// Loads \p plugin, as PluginHost::load(), and starts its service for a car of \p carModel.
    /// \returns an empty text, or what went wrong.
    QString open(const QString &plugin, int carModel);
    /// The next line of the recording. Time never goes back: an earlier one counts as the latest.
    void feed(const TraceLine &line);
    /// The recording has ended.
    void finish();

    /// Of the recording's first line, in microseconds.
    qint64 origin() const { return mStart; }
    double seconds() const; ///< Since the recording's first line.
    const StateWatch &state() const { return mState; }
    Summary summary() const;

signals:
    void item(bool fromBox, const bench::LineItem &item);
    /// A signal of the service; it comes after the frame that it is about. The event `state` has
    /// changes that no signal told of.
    void happened(const bench::Event &event);

private:
    void onSignal(int signal, const QVector<Value> &arguments);

    ServiceTime mTime;
    PluginHost mHost;
    QMetaMethod mOnDataReady; ///< The service's slot for what comes from the box.
    LineCutter mFromBox{LineCutter::Host};
    LineCutter mToBox{LineCutter::Box};
    StateWatch mState;
    QVector<int> mEvents; ///< Counts, by signal.
    bool mBegun = false;
    qint64 mStart = 0; ///< Microseconds, as the recording has them.
    qint64 mLatest = 0;
    qint64 mMark = 0; ///< Where the latest line stands on the service's time.
};

} // namespace bench
