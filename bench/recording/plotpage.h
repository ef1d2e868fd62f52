// A recording as one page of plots that a browser shows by itself: no network, no other file.
#pragma once

#include "bench/headunit/value.h"
#include "bench/recording/reduction.h"
#include "bench/wire/linecutter.h"

#include <QIODevice>
#include <QJsonObject>
#include <QMap>

namespace bench {

class StateWatch;
struct Event;

/// A value as it is drawn.
struct PlotValue
{
    enum Kind { Switch, Number, Text };

    Kind kind;
    double number = 0; ///< 0 or 1 of a switch; NaN where a word stands for the number.
    QString word;      ///< A text, or what stands for a number: "low", "none", "open".
    QString unit;      ///< Of a number; empty without.
};

/// Is told of a recording in the order of time, in memory that does not grow with it, and writes
/// the page. Times are microseconds since the recording's first line; an earlier one than the
/// latest counts as the latest.
class PlotPage
{
public:
    struct About
    {
        QString title;
        int carModel = 1;
        qint64 start = 0; ///< The time of the first line, microseconds since 1970.
    };

    void setAbout(const About &about) { mAbout = about; }
    /// What ended the recording before its end.
    void setProblem(const QString &problem) { mProblem = problem; }

    void chunk(qint64 time, const QByteArray &port, bool fromBox, int bytes);
    void item(qint64 time, bool fromBox, const LineItem &item);
    /// All values as they are.
    void state(const StateWatch &state, qint64 time);
    /// A signal, and the values that changed with it.
    void event(const Event &event);

    /// A heading of a scenario.
    void say(qint64 time, const QString &text);
    /// An expectation of a scenario that was not met.
    void unmet(qint64 time, const QString &text);

    /// \returns an empty text, or why \p out took no more.
    QString write(QIODevice &out) const;

private:
    struct Plot
    {
        QString name;  ///< Of the plot.
        QString value; ///< What it shows; a value has a plot for each of its units.
        QString unit;
        const char *kind = nullptr;
        Series series;
        bool hasNumber = false; ///< Else its unit may still be unknown.
        QString words[2];       ///< Of a switch, as far as they came.
    };

    struct FrameCount
    {
        qint64 good = 0, bad = 0;
        qint64 first = 0, last = 0;
        qint64 gap = 0, gapAt = 0; ///< The longest time between two good ones, and its begin.
    };

    enum MarkKind { Unmet, BadChecksum, GivenUp, Noise, BadReceipt, LinkLost, Resent, kMarkKinds };

    void signal(qint64 time, const QString &name, const QVector<Value> &arguments);
    /// What \p name is from now on. A value that changes its unit goes on as another one.
    void value(qint64 time, const QString &name, const PlotValue &value);
    qint64 reach(qint64 time); ///< \returns the time, or the latest one.
    void mark(MarkKind kind, qint64 time, const QString &text);
    void countFrame(qint64 time, bool fromBox, const LineItem &item);
    void link(qint64 time, int code);
    void key(qint64 time, int key, int state);
    int plot(const QString &name, const QString &unit, const char *kind);
    QJsonObject json() const;
    QJsonArray totals() const;
    QJsonArray marks() const;
    QJsonArray frames() const;

    About mAbout;
    QString mProblem;
    qint64 mSpan = 0;
    QList<QByteArray> mPorts;
    QVector<Plot> mPlots;
    QHash<QString, int> mPresent; ///< The plot of a value that goes on.
    Marks mMarks[kMarkKinds];
    QMap<QString, Marks> mSignals;
    Traffic mFromBox, mToBox;
    QMap<QPair<bool, quint8>, FrameCount> mFrames; ///< By direction, the box first, and type.
    QHash<quint8, qint64> mDamaged; ///< When a frame of this type from the box was bad.
};

} // namespace bench
