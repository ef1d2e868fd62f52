// The link to the box: alive with every good frame, checked after 30 s of silence, lost 1.2 s after
// an unanswered check, knocked at every 2 s until the box answers. The timers are the state.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <canbusmanager.h>

namespace canservice {

namespace {

enum LinkStatus { LinkLost = 0, LinkAlive = 3 };

// The tick after these declares the loss.
constexpr int kTicksToAnswer = 3;

constexpr unsigned char kUnused = 0xFF;

} // namespace

void SimpleService::keepLinkAlive()
{
    mNoAnswerCount = 0;
    mSendTmr.stop();
    mRequestConnectTmr.stop();
    mCheckConnectTmr.start();
    emit notifyCanbusStatus(LinkAlive);
}

void SimpleService::onCheckConnectTmrout()
{
    const int index = CanBusManager::instance()->getHwdCarModelIndex();
    sendCarSelect(static_cast<unsigned char>(index & 0xFF), kUnused);
    mSendTmr.start();
    requestVersion();
}

void SimpleService::onSendTmrout()
{
    if (mNoAnswerCount < kTicksToAnswer) {
        ++mNoAnswerCount;
        return;
    }
    mNoAnswerCount = 0;
    mSendTmr.stop();
    mCheckConnectTmr.stop();
    mCartypeTmr.stop();
    mRequestConnectTmr.start();
    emit notifyCanbusStatus(LinkLost);
}

void SimpleService::onRequestConnect()
{
    sendStop();
    sendStart();
}

void SimpleService::onCartypeConnect()
{
    const int index = CanBusManager::instance()->getHwdCarModelIndex();
    LOG_DEBUG() << index << (index & 0xFF);
    sendCarSelect(static_cast<unsigned char>(index & 0xFF), kUnused);
}

} // namespace canservice
