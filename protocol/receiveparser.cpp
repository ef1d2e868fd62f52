// The receive parser: bytes from the box, in chunks of any size, to checked frames.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <configmanager.h>

namespace canservice {

// A host slot that runs an event loop of its own, and a port that reads while it writes, lead here
// from within an earlier call. The line's order holds all the same: this call first takes what the
// earlier ones have left, and these find nothing to do when they go on.
void SimpleService::onDataReady(QByteArray buf)
{
    CHECK_THREAD();
    const bool debugging = diagnostics::debugEnabled();
    LOG_DEBUG_IF(debugging) << ConfigManager::instance()->getPluginFullPath();
    LOG_DEBUG_IF(debugging) << buf.toHex();

    Chunk chunk{canbox::bytesOf(buf), canbox::bytesOf(buf) + buf.size(), nullptr};
    appendChunk(chunk);
    finishFrame();
    do {
        const quint8 *byte = mNextByte;
        while (byte != mEndOfChunk) {
            LOG_DEBUG_IF(debugging) << mParseState;
            if (!takeByte(*byte++))
                continue;
            mNextByte = byte;
            if (!answerFrame(byte[-1]))
                LOG_ERROR() << "checksum err!";
            byte = mNextByte;
        }
        mNextByte = byte;
    } while (beginChunk());
}

// Before the call that has the chunk returns, no chunk waits.
inline void SimpleService::appendChunk(Chunk &chunk)
{
    *mLastWaiting = &chunk;
    mLastWaiting = &chunk.newer;
}

inline bool SimpleService::beginChunk()
{
    if (!mWaiting)
        return false;
    mNextByte = mWaiting->begin;
    mEndOfChunk = mWaiting->end;
    mWaiting = mWaiting->newer;
    if (!mWaiting)
        mLastWaiting = &mWaiting;
    if (mParseState != Idle && !mParseOutTmr.isActive())
        mParseOutTmr.start();
    return true;
}

inline bool SimpleService::takeByte(quint8 byte)
{
    // Most bytes are payload.
    if (mParseState == Payload) {
        takePayloadByte(byte);
        return false;
    }
    switch (mParseState) {
    case Idle:
        if (byte == canbox::kHead)
            mParseState = AwaitType;
        break;
    case AwaitType:
        mRecvDataType = byte;
        mRecvSum = byte;
        mParseState = AwaitLength;
        break;
    case AwaitLength:
        mRecvRemain = byte;
        mRecvSum += byte;
        mRecvPayload.resize(byte);
        mRecvNext = mRecvPayload.data();
        mParseState = Payload;
        break;
    case AwaitChecksum:
        mParseState = Idle;
        return true;
    }
    return false;
}

inline void SimpleService::takePayloadByte(quint8 byte)
{
    // A length of 0 leaves nothing to take: the frame stays open until the parse-out timer.
    if (mRecvRemain == 0)
        return;
    *mRecvNext++ = static_cast<char>(byte);
    mRecvSum += byte;
    if (--mRecvRemain == 0)
        mParseState = AwaitChecksum;
}

inline bool SimpleService::answerFrame(quint8 checksum)
{
    if (checksum != static_cast<quint8>(~mRecvSum)) {
        mSerialPort.writeData(mBadReceipt, true);
        return false;
    }
    mAccepted = true;
    // The receipt goes out before the frame is handled, so that a slow host slot cannot delay it.
    mSerialPort.writeData(mGoodReceipt, true);
    finishFrame();
    return true;
}

void SimpleService::onmParseOutTmrout()
{
    LOG_DEBUG() << "parse out!!!" << mParseState;
    mParseState = Idle;
}

} // namespace canservice
