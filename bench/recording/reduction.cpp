#include "bench/recording/reduction.h"

#include <algorithm>

namespace bench {

namespace {

// The points of one stretch that stay, in their order.
void keepExtremes(const Series::Point *begin, const Series::Point *end,
                  QVector<Series::Point> *kept)
{
    const Series::Point *keep[] = {begin, end - 1, nullptr, nullptr, nullptr};
    const Series::Point *&low = keep[2], *&high = keep[3], *&word = keep[4];
    for (const Series::Point *point = begin; point != end; ++point) {
        if (std::isnan(point->number)) {
            if (!word)
                word = point;
            continue;
        }
        if (!low || point->number < low->number)
            low = point;
        if (!high || point->number > high->number)
            high = point;
    }
    std::sort(std::begin(keep), std::end(keep));
    const Series::Point *before = nullptr;
    for (const Series::Point *point : keep)
        if (point != before)
            kept->append(*(before = point));
}

} // namespace

qint64 wideEnough(qint64 width, qint64 span, int most)
{
    if (width == 0)
        return span / most + 1;
    while (span / width >= most)
        width *= 2;
    return width;
}

void Series::add(const Point &point)
{
    mPoints.append(point);
    ++mAdded;
    if (mPoints.size() < kMostPoints)
        return;
    // Five points stay of a stretch at most, so that half the bound is reached in any case.
    mWidth = wideEnough(mWidth, point.time, kMostPoints / 10);
    QVector<Point> kept;
    for (auto begin = mPoints.cbegin(); begin != mPoints.cend();) {
        const qint64 stretch = begin->time / mWidth;
        const auto end = std::find_if(begin, mPoints.cend(), [this, stretch](const Point &one) {
            return one.time / mWidth != stretch;
        });
        keepExtremes(begin, end, &kept);
        begin = end;
    }
    mPoints = kept;
}

void Marks::add(qint64 time, const QString &text)
{
    mMarks.append({time, time, 1, text});
    ++mAdded;
    if (mMarks.size() < kMostMarks)
        return;
    mWidth = wideEnough(mWidth, time, kMostMarks / 2);
    QVector<Mark> joined;
    for (const Mark &mark : qAsConst(mMarks)) {
        if (!joined.isEmpty() && joined.last().first / mWidth == mark.first / mWidth) {
            joined.last().last = mark.last;
            joined.last().count += mark.count;
        } else {
            joined.append(mark);
        }
    }
    mMarks = joined;
}

void Traffic::add(qint64 time, int bytes)
{
    const qint64 second = time / 1'000'000;
    if (second != mSecond) {
        mSecond = second;
        mInSecond = 0;
    }
    mInSecond += bytes;
    while (second / mSeconds >= kMostStretches)
        widen();
    const int at = static_cast<int>(second / mSeconds);
    if (mStretches.size() <= at)
        mStretches.resize(at + 1);
    mStretches[at].bytes += bytes;
    mStretches[at].busiest = std::max(mStretches[at].busiest, mInSecond);
}

void Traffic::widen()
{
    mSeconds *= 2;
    for (int i = 0; i < mStretches.size(); i += 2) {
        const Stretch next = mStretches.value(i + 1);
        mStretches[i / 2] = {mStretches[i].bytes + next.bytes,
                             std::max(mStretches[i].busiest, next.busiest)};
    }
    mStretches.resize((mStretches.size() + 1) / 2);
}

} // namespace bench
