#include "bench/wire/linecutter.h"

#include <limits>
#include <numeric>

namespace bench {

namespace {

constexpr qint64 kFrameTimeout = 500'000; // us
constexpr int kLength = 2;                // Where the length byte is in a frame.

const LineItem kGoodReceipt{LineItem::GoodReceipt, 0,
                            QByteArray(1, static_cast<char>(canbox::kReceiptGood))};
const LineItem kBadReceipt{LineItem::BadReceipt, 0,
                           QByteArray(1, static_cast<char>(canbox::kReceiptBad))};

} // namespace

qint64 LineCounts::frameTotal() const
{
    return std::accumulate(frames.cbegin(), frames.cend(), qint64(0));
}

LineCutter::LineCutter(Listener listener, QObject *parent)
    : QObject(parent)
    , mListener(listener)
{
    mOpen.reserve(canbox::kMaxPayload + 4);
}

void LineCutter::feed(const QByteArray &bytes, qint64 time)
{
    take(bytes, time);
    cutAll();
}

void LineCutter::take(const QByteArray &bytes, qint64 time)
{
    const bool isLate =
        mListener == Host ? mGiveUpAt >= 0 && time >= mGiveUpAt : time - mLastByte > kFrameTimeout;
    if (isLate)
        giveUp();
    if (mListener == Host && isFrameOpen() && mGiveUpAt < 0)
        mGiveUpAt = time + kFrameTimeout;
    mLastByte = time;
    mChunk = mNext == mChunk.size() ? bytes : mChunk.mid(mNext) + bytes;
    mNext = 0;
}

void LineCutter::cutFrame()
{
    while (mNext < mChunk.size() && !cutNext()) {
    }
}

void LineCutter::cutAll()
{
    while (mNext < mChunk.size())
        cutNext();
    mChunk.clear(); // Whoever has made the chunk may use its memory again.
    mNext = 0;
    flushNoise();
}

void LineCutter::finish()
{
    cutAll();
    giveUp();
}

void LineCutter::reset()
{
    mGiveUpAt = -1;
    mOpen.resize(0);
}

// Cuts a byte between frames, or what the chunk has of a frame. \returns whether a frame has ended.
bool LineCutter::cutNext()
{
    if (!isFrameOpen()) {
        cutBetweenFrames(canbox::byteAt(mChunk, mNext++));
        return false;
    }
    const int size = qMin(missingBytes(), mChunk.size() - mNext);
    mOpen.append(mChunk.constData() + mNext, size);
    mNext += size;
    if (missingBytes() > 0)
        return false;
    endFrame();
    return true;
}

void LineCutter::cutBetweenFrames(quint8 byte)
{
    const bool isGood = byte == canbox::kReceiptGood;
    if (byte == canbox::kHead) {
        flushNoise();
        mOpen.append(static_cast<char>(byte));
    } else if (mListener == Box && (isGood || byte == canbox::kReceiptBad)) {
        flushNoise();
        ++(isGood ? mCounts.goodReceipts : mCounts.badReceipts);
        emit item(isGood ? kGoodReceipt : kBadReceipt);
    } else {
        ++mCounts.noiseBytes;
        mNoise.append(static_cast<char>(byte));
    }
}

// Up to the length byte, and from there to the end of the frame that is open.
int LineCutter::missingBytes() const
{
    if (mOpen.size() <= kLength)
        return kLength + 1 - mOpen.size();
    const int length = canbox::byteAt(mOpen, kLength);
    if (length == 0 && mListener == Host)
        return std::numeric_limits<int>::max();
    return length + 4 - mOpen.size();
}

void LineCutter::endFrame()
{
    const int size = mOpen.size();
    const quint8 dataType = canbox::byteAt(mOpen, 1);
    const quint8 received = canbox::byteAt(mOpen, size - 1);
    const quint8 expected = canbox::checkSum(canbox::bytesOf(mOpen) + 1, size - 2);
    const QByteArray payload = mOpen.mid(3, size - 4);
    // Closed before anybody hears of it: a listener may cause the next bytes.
    mOpen.resize(0);
    if (received == expected) {
        mGiveUpAt = -1;
        ++mCounts.frames[dataType];
        emit item({LineItem::Frame, dataType, payload});
    } else {
        ++mCounts.badChecksums;
        emit item({LineItem::BadChecksum, dataType, payload, received, expected});
    }
}

void LineCutter::flushNoise()
{
    if (mNoise.isEmpty())
        return;
    QByteArray noise;
    noise.swap(mNoise);
    emit item({LineItem::Noise, 0, noise});
}

void LineCutter::giveUp()
{
    if (!isFrameOpen())
        return;
    const QByteArray open = mOpen;
    reset();
    mOpen.reserve(canbox::kMaxPayload + 4);
    emit item({LineItem::Incomplete, canbox::byteAt(open, qMin(1, open.size() - 1)), open});
}

} // namespace bench
