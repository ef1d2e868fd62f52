// Keys of the steering wheel and of a panel: the box tells when one goes down and when it comes up,
// the service times the long press. One key at a time.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <utility>

namespace canservice {

namespace {

constexpr int kKeySize = 2;
constexpr int kLongPress = 1500; // ms

enum Action { Released = 0, Pressed = 1 };

enum KeyState { KeyDown = 0, KeyUp = 1, LongPressReached = 2, LongPressEnded = 3 };

} // namespace

// Payload: [0] key code, [1] action; other actions than 0 and 1 are ignored.
void SimpleService::doSwc(int, QByteArray &payload)
{
    if (payload.size() != kKeySize) {
        LOG_ERROR();
        return;
    }
    const int key = canbox::byteAt(payload, 0);
    const int action = canbox::byteAt(payload, 1);
    LOG_DEBUG() << key << action << mKeyPressed;
    trackKey(key, action, true);
}

void SimpleService::doPanelKey(int, QByteArray &payload)
{
    if (payload.size() != kKeySize) {
        LOG_ERROR();
        return;
    }
    const int key = canbox::byteAt(payload, 0);
    const int action = canbox::byteAt(payload, 1);
    LOG_DEBUG() << key << action << mKeyPressed;
    trackKey(key, action, false);
}

void SimpleService::trackKey(int key, int action, bool fromSwc)
{
    if (action == Pressed && !mKeyPressed) {
        mKeyFromSwc = fromSwc;
        mCurrentKey = key;
        mKeyPressed = true;
        mLongPressTmr.start(kLongPress);
        emit keyEvent(mCurrentKey, KeyDown, fromSwc);
    } else if (action == Released && mKeyPressed) {
        const bool shortPress = mLongPressTmr.isActive();
        mLongPressTmr.stop();
        // Before the signal: its slots may let the next press in.
        mKeyPressed = false;
        const int released = std::exchange(mCurrentKey, key);
        emit keyEvent(released, shortPress ? KeyUp : LongPressEnded, mKeyFromSwc);
    }
}

void SimpleService::onLongPressTimeout()
{
    emit keyEvent(mCurrentKey, LongPressReached, mKeyFromSwc);
}

} // namespace canservice
