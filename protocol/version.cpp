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
void SimpleService::doVersion(int, QByteArray &payload)
{
    const auto size = qstrnlen(payload.constData(), static_cast<uint>(payload.size()));
    mVersion = QString::fromUtf8(payload.constData(), static_cast<int>(size));
    LOG_DEBUG() << mVersion;
    emit sigVersionData();

    LOG_DEBUG() << mNoAnswerCount;
    keepLinkAlive();
    if (!mCartypeTmr.isActive())
        mCartypeTmr.start();
}

QString SimpleService::version() { return mVersion; }

} // namespace canservice
