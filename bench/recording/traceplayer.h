// Plays a recording in its own time.
#pragma once

#include "bench/recording/trace.h"
#include "bench/wire/linecutter.h"

#include <QElapsedTimer>
#include <QSet>
#include <QTimer>

#include <optional>

namespace bench {

struct PlayOptions
{
    double speed = 1;    ///< 2 plays a minute in half a minute.
    int passes = 1;      ///< How often the whole is played; 0 is for ever.
    double from = 0;     ///< Seconds since the first line of the recording.
    double to = 1e12;    ///< The same.
    bool fromBox = true; ///< The direction that is played.
    QSet<quint8>
        only; ///< Data types of the frames to play, and nothing else; empty plays every byte.
};

/// Every chunk is due at a time that is counted from the start, so that late ones do not add up.
class TracePlayer : public QObject
{
    Q_OBJECT

public:
    TracePlayer(const QString &file, const PlayOptions &options, QObject *parent = nullptr);

    /// Reads the recording once. \returns an empty text, or why there is nothing to play. A
    /// recording that is damaged later on is played to there, once.
    QString prepare();
    void start();

    double elapsed() const; ///< Seconds since the start.
    /// Seconds that all passes take; nothing for ever.
    std::optional<double> duration() const;
    qint64 chunks() const { return mChunks; } ///< Played so far.

    const std::optional<TraceCar> &car() const { return mTrace.car(); }
    /// What is wrong with the recording; empty for nothing.
    QString problem() const { return mTrace.problem(); }
    QString note() const { return mTrace.note(); }

signals:
    void chunk(const QByteArray &bytes);
    void finished();

private:
    void fetch();
    void onTimer();
    double due() const;
    QByteArray selected(const TraceLine &line);

    const PlayOptions mOptions;
    TraceReader mTrace;
    LineCutter mCutter;
    QByteArray mSelected; ///< Frames of the present chunk that are among those to play.
    qint64 mFirst = 0;    ///< Microseconds.
    double mPassSeconds = 0;
    bool mDamaged = false;

    QTimer mTimer;
    QElapsedTimer mClock;
    TraceLine mLine;
    bool mHasLine = false;
    double mLineTime = 0; ///< Seconds since the first line; never goes back.
    int mPass = 0;
    qint64 mChunks = 0;
};

} // namespace bench
