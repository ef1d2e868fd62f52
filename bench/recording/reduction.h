// A recording of any length in a bounded number of points, without losing an extreme.
//
// What is over the bound is sorted into stretches of equal width, which doubles when the recording
// outgrows them: a stretch of the next width holds two of this one, so that reducing what was
// reduced before gives the same as reducing it all at once.
#pragma once

#include <QString>
#include <QVector>

#include <cmath>

namespace bench {

/// A width, in microseconds, at which \p span has at most \p most stretches: \p width, or as many
/// times twice that as it takes; 0 is no width yet.
qint64 wideEnough(qint64 width, qint64 span, int most);

/// One value over time. Of a stretch, what stays is the first and the last point, the smallest and
/// the largest number and the first word.
class Series
{
public:
    struct Point
    {
        qint64 time;   ///< Microseconds. It never goes back.
        double number; ///< NaN when a word stands for it.
        QString word;
    };

    static constexpr int kMostPoints = 4096;

    void add(const Point &point);
    const QVector<Point> &points() const { return mPoints; }
    qint64 width() const { return mWidth; }   ///< Of a stretch; 0 when nothing was left out.
    qint64 changes() const { return mAdded; } ///< Points that were added.

private:
    QVector<Point> mPoints;
    qint64 mWidth = 0;
    qint64 mAdded = 0;
};

/// Things of one kind that happened. Those of a stretch become one, with their number.
class Marks
{
public:
    struct Mark
    {
        qint64 first, last; ///< Microseconds.
        qint64 count;
        QString text; ///< Of the first.
    };

    static constexpr int kMostMarks = 2048;

    void add(qint64 time, const QString &text);
    const QVector<Mark> &marks() const { return mMarks; }
    qint64 width() const { return mWidth; }
    qint64 count() const { return mAdded; }

private:
    QVector<Mark> mMarks;
    qint64 mWidth = 0;
    qint64 mAdded = 0;
};

/// Bytes a second. Of a stretch of several seconds, what stays is their sum and the busiest one.
class Traffic
{
public:
    struct Stretch
    {
        qint64 bytes = 0;
        qint64 busiest = 0; ///< Bytes in its busiest second.
    };

    static constexpr int kMostStretches = 4096;

    /// Time never goes back.
    void add(qint64 time, int bytes);
    const QVector<Stretch> &stretches() const { return mStretches; }
    qint64 seconds() const { return mSeconds; } ///< In a stretch.

    void widen();

private:
    QVector<Stretch> mStretches;
    qint64 mSeconds = 1;
    qint64 mSecond = -1;
    qint64 mInSecond = 0; ///< Bytes in the latest second.
};

} // namespace bench
