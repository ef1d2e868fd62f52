#include "bench/commands/lineinput.h"

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace bench {

LineInput::LineInput(int descriptor, int longest, QObject *parent)
    : QObject(parent)
    , mDescriptor(descriptor)
    , mLongest(longest)
    , mNotifier(descriptor, QSocketNotifier::Read)
{
    connect(&mNotifier, &QSocketNotifier::activated, this, &LineInput::onReadable);
}

void LineInput::setPaused(bool on)
{
    if (on == mPaused)
        return;
    mPaused = on;
    if (!mPaused)
        deliver();
}

void LineInput::onReadable()
{
    char buffer[4096];
    const ssize_t size = read(mDescriptor, buffer, sizeof buffer);
    if (size < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (size > 0) {
        mBytes.append(buffer, static_cast<int>(size));
    } else {
        mClosed = true;
        mNotifier.setEnabled(false);
        emit closed();
    }
    deliver();
}

void LineInput::deliver()
{
    while (!mPaused) {
        int end = mBytes.indexOf('\n');
        if (end < 0 && mClosed && (mTooLong || !mBytes.isEmpty()))
            end = mBytes.size(); // The last line may lack its line end.
        if (end < 0)
            break;
        const QByteArray text = mBytes.left(end);
        mBytes.remove(0, end + 1);
        if (std::exchange(mTooLong, false) || text.size() > mLongest)
            emit tooLong();
        else
            emit line(text);
    }
    if (!mPaused && mBytes.size() > mLongest) {
        mTooLong = true;
        mBytes.clear();
    }
    if (!mPaused && mClosed && !std::exchange(mEnded, true))
        emit ended();
    if (!mClosed)
        mNotifier.setEnabled(!mPaused || mBytes.size() <= mLongest);
}

} // namespace bench
