// The box's version text. Its answer is the link's heartbeat.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

namespace canservice {

void SimpleService::requestVersion()
{
    LOG_DEBUG() << "reques varne_Ford Version";
    requestReport(canbox::Inbound::Version, true);
}

// Payload: UTF-8 up to the first zero byte, or all of it.
void SimpleService::doVersion(int dataType, QByteArray &payload)
{
    const auto size = qstrnlen(payload.constData(), static_cast<uint>(payload.size()));
    mVersion = QString::fromUtf8(payload.constData(), static_cast<int>(size));
    LOG_DEBUG() << mVersion;
    static constexpr Handler kSteps[] = {&SimpleService::selectCarEachSecond};
    setSteps(kSteps, dataType, payload);
    emit sigVersionData();
    LOG_DEBUG() << mNoAnswerCount;
    finishFrame();
}

void SimpleService::selectCarEachSecond(int, QByteArray &)
{
    keepLinkAlive();
    // A host slot may have run an event loop until the link was lost.
    if (mCheckConnectTmr.isActive() && !mCartypeTmr.isActive())
        mCartypeTmr.start();
}

QString SimpleService::version()
{
    CHECK_THREAD();
    return mVersion;
}

} // namespace canservice
