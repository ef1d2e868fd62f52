#include "framereader.h"

#include <numeric>

namespace bench {

qint64 LineCounts::frameTotal() const
{
    return std::accumulate(frames.cbegin(), frames.cend(), qint64(0));
}

void FrameReader::feed(const QByteArray &bytes)
{
    for (int i = 0; i < bytes.size(); ++i)
        feedByte(canbox::byteAt(bytes, i));
}

void FrameReader::feedByte(quint8 byte)
{
    switch (mState) {
    case Idle:
        betweenFrames(byte);
        break;
    case DataType:
        mDataType = byte;
        mState = Length;
        break;
    case Length:
        mLength = byte;
        mPayload.clear();
        mState = mLength > 0 ? Payload : CheckSum;
        break;
    case Payload:
        mPayload.append(static_cast<char>(byte));
        if (mPayload.size() == mLength)
            mState = CheckSum;
        break;
    case CheckSum:
        // Idle first: a listener may answer, and the answer's echo may come back here.
        mState = Idle;
        finish(byte);
        break;
    }
}

void FrameReader::betweenFrames(quint8 byte)
{
    switch (byte) {
    case canbox::kHead:
        mState = DataType;
        break;
    case canbox::kReceiptGood:
        ++mCounts.goodReceipts;
        emit receipt(true);
        break;
    case canbox::kReceiptBad:
        ++mCounts.badReceipts;
        emit receipt(false);
        break;
    default:
        ++mCounts.noiseBytes;
        emit noise(byte);
    }
}

void FrameReader::finish(quint8 received)
{
    const QByteArray payload = mPayload;
    const quint8 expected = canbox::byteAt(canbox::buildFrame(mDataType, payload), mLength + 3);
    if (received == expected) {
        ++mCounts.frames[mDataType];
        emit frame(mDataType, payload);
    } else {
        ++mCounts.badChecksums;
        emit badFrame(mDataType, payload, received, expected);
    }
}

} // namespace bench
