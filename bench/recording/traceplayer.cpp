#include "bench/recording/traceplayer.h"

#include <cmath>

namespace bench {

namespace {

// Without a pause, an empty or very short recording that is played for ever would take the whole
// processor.
constexpr double kShortestPass = 0.01;

// What is due at once goes out in portions, between which the receiver gets its turn.
constexpr int kPortion = 2048;

} // namespace

TracePlayer::TracePlayer(const QString &file, const PlayOptions &options, QObject *parent)
    : QObject(parent)
    , mOptions(options)
    , mTrace(file)
    , mCutter(options.fromBox ? LineCutter::Host : LineCutter::Box)
{
    mTimer.setSingleShot(true);
    mTimer.setTimerType(Qt::PreciseTimer);
    connect(&mTimer, &QTimer::timeout, this, &TracePlayer::onTimer);
    connect(&mCutter, &LineCutter::item, this, [this](const LineItem &item) {
        if (item.kind == LineItem::Frame && mOptions.only.contains(item.dataType))
            mSelected += canbox::buildFrame(item.dataType, item.bytes);
    });
}

QString TracePlayer::prepare()
{
    TraceLine line;
    qint64 last = 0;
    qint64 lines = 0;
    while (mTrace.next(&line)) {
        if (lines++ == 0)
            mFirst = last = line.time;
        last = qMax(last, line.time);
    }
    mDamaged = !mTrace.problem().isEmpty();
    if (lines == 0)
        return mDamaged ? mTrace.problem() : QStringLiteral("the recording is empty");
    const double seconds = static_cast<double>(last - mFirst) / 1e6;
    if (mOptions.from > seconds)
        return QStringLiteral("the recording ends after %1 s").arg(seconds, 0, 'f', 6);
    mPassSeconds = std::max(std::min(seconds, mOptions.to) - mOptions.from, kShortestPass);
    return mTrace.rewind() ? QString()
                           : QStringLiteral("a pipe cannot be replayed; record it to a file");
}

void TracePlayer::start()
{
    mClock.start();
    fetch();
    mTimer.start(0);
}

double TracePlayer::elapsed() const { return static_cast<double>(mClock.nsecsElapsed()) / 1e9; }

std::optional<double> TracePlayer::duration() const
{
    if (mDamaged)
        return mPassSeconds / mOptions.speed;
    if (mOptions.passes == 0)
        return std::nullopt;
    return mPassSeconds * mOptions.passes / mOptions.speed;
}

// Finds the next line of the direction and the window, in the next pass if need be.
void TracePlayer::fetch()
{
    mHasLine = false;
    while (!mHasLine && mTrace.next(&mLine)) {
        mLineTime = std::max(mLineTime, static_cast<double>(mLine.time - mFirst) / 1e6);
        mHasLine = mLine.fromBox == mOptions.fromBox && mLineTime >= mOptions.from &&
                   mLineTime <= mOptions.to;
    }
}

double TracePlayer::due() const
{
    const double inPass = mHasLine ? mLineTime - mOptions.from : mPassSeconds;
    return (mPass * mPassSeconds + inPass) / mOptions.speed;
}

void TracePlayer::onTimer()
{
    int portion = 0;
    while (mHasLine && due() <= elapsed() && portion < kPortion) {
        const QByteArray bytes = mOptions.only.isEmpty() ? mLine.bytes : selected(mLine);
        portion += mLine.bytes.size();
        fetch();
        if (bytes.isEmpty())
            continue;
        ++mChunks;
        emit chunk(bytes);
    }
    if (!mHasLine && due() <= elapsed()) {
        ++mPass;
        if (mDamaged || mPass == mOptions.passes) {
            emit finished();
            return;
        }
        mTrace.rewind();
        mCutter.reset();
        mLineTime = 0;
        fetch();
    }
    const double wait = std::ceil((due() - elapsed()) * 1000);
    mTimer.start(static_cast<int>(qBound(0.0, wait, 60'000.0)));
}

QByteArray TracePlayer::selected(const TraceLine &line)
{
    mSelected.clear();
    mCutter.feed(line.bytes, line.time);
    return mSelected;
}

} // namespace bench
