#include "linecutter.h"

namespace bench {

namespace {

constexpr qint64 kFrameTimeout = 500'000; // us

} // namespace

LineCutter::LineCutter(bool hasReceipts, QObject *parent)
    : QObject(parent)
    , mHasReceipts(hasReceipts)
{
    connect(&mReader, &FrameReader::frame, this,
            [this](quint8 dataType, const QByteArray &payload) {
                mFrameEnded = true;
                mGiveUpAt = -1;
                emit item({LineItem::Frame, dataType, payload});
            });
    connect(&mReader, &FrameReader::badFrame, this,
            [this](quint8 dataType, const QByteArray &payload, quint8 received, quint8 expected) {
                mFrameEnded = true;
                emit item({LineItem::BadChecksum, dataType, payload, received, expected});
            });
}

void LineCutter::take(const QByteArray &bytes, qint64 time)
{
    if (mGiveUpAt >= 0 && time >= mGiveUpAt)
        giveUp();
    if (mReader.isFrameOpen() && mGiveUpAt < 0)
        mGiveUpAt = time + kFrameTimeout;
    mWaiting += bytes;
}

void LineCutter::cutFrame()
{
    mFrameEnded = false;
    while (!mWaiting.isEmpty() && !mFrameEnded)
        cutByte();
}

void LineCutter::cutAll()
{
    while (!mWaiting.isEmpty())
        cutByte();
    flushNoise();
}

void LineCutter::finish()
{
    cutAll();
    giveUp();
}

void LineCutter::cutByte()
{
    const QByteArray byte = mWaiting.left(1);
    mWaiting.remove(0, 1);
    const bool between = !mReader.isFrameOpen();
    const quint8 value = canbox::byteAt(byte, 0);
    const bool isReceipt =
        mHasReceipts && (value == canbox::kReceiptGood || value == canbox::kReceiptBad);
    if (between && value != canbox::kHead && !isReceipt)
        mNoise += byte;
    else
        flushNoise();
    mReader.feed(byte);
    if (mReader.isFrameOpen())
        mOpen += byte;
    else
        mOpen.clear();
    if (between && isReceipt)
        emit item({value == canbox::kReceiptGood ? LineItem::GoodReceipt : LineItem::BadReceipt, 0,
                   byte});
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
    mGiveUpAt = -1;
    if (!mReader.isFrameOpen())
        return;
    mReader.reset();
    QByteArray open;
    open.swap(mOpen);
    emit item({LineItem::Incomplete, canbox::byteAt(open, qMin(1, open.size() - 1)), open});
}

LineCounts LineCutter::counts() const
{
    LineCounts counts = mReader.counts();
    if (!mHasReceipts) {
        counts.noiseBytes += counts.goodReceipts + counts.badReceipts;
        counts.goodReceipts = counts.badReceipts = 0;
    }
    return counts;
}

} // namespace bench
