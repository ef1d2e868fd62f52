// The receive parser: bytes from the box, in chunks of any size, to checked frames.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <configmanager.h>

namespace canservice {

void SimpleService::onDataReady(QByteArray buf)
{
    const bool debugging = diagnostics::debugEnabled();
    LOG_DEBUG_IF(debugging) << ConfigManager::instance()->getPluginFullPath();
    LOG_DEBUG_IF(debugging) << buf.toHex();

    if (mParseState != Idle && !mParseOutTmr.isActive())
        mParseOutTmr.start();

    const quint8 *const end = canbox::bytesOf(buf) + buf.size();
    for (const quint8 *byte = canbox::bytesOf(buf); byte != end; ++byte) {
        LOG_DEBUG_IF(debugging) << mParseState;
        if (!takeByte(*byte))
            LOG_ERROR() << "checksum err!";
    }
}

inline bool SimpleService::takeByte(quint8 byte)
{
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
    case Payload:
        // A length of 0 leaves nothing to take: the frame stays open until the parse-out timer.
        if (mRecvRemain == 0)
            break;
        *mRecvNext++ = static_cast<char>(byte);
        mRecvSum += byte;
        if (--mRecvRemain == 0)
            mParseState = AwaitChecksum;
        break;
    case AwaitChecksum:
        mParseState = Idle;
        if (byte != static_cast<quint8>(~mRecvSum)) {
            mSerialPort.writeData(mBadReceipt, true);
            return false;
        }
        acceptFrame();
        break;
    }
    return true;
}

void SimpleService::acceptFrame()
{
    // The parser is idle by now and the payload out of its reach: a host slot that runs an event
    // loop of its own lets the next bytes in.
    QByteArray payload;
    payload.swap(mRecvPayload);
    // The receipt goes out before the frame is handled, so that a slow host slot cannot delay it.
    mSerialPort.writeData(mGoodReceipt, true);
    dispatchEvent(mRecvDataType, payload);
    if (mParseState == Idle)
        payload.swap(mRecvPayload);
}

void SimpleService::onmParseOutTmrout()
{
    LOG_DEBUG() << "parse out!!!" << mParseState;
    mParseState = Idle;
}

} // namespace canservice
