// Life of the service: what it is made of, how it starts and how it stops.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

namespace canservice {

SimpleService::SimpleService()
{
    mSerialPort.open(QString(), canbox::kBaudRate);

    connect(&mSerialPort, SIGNAL(read(QByteArray)), this, SLOT(onDataReady(QByteArray)));

    mLongPressTmr.setSingleShot(true);
    connect(&mLongPressTmr, SIGNAL(timeout()), this, SLOT(onLongPressTimeout()));

    mCheckConnectTmr.setInterval(30000);
    connect(&mCheckConnectTmr, SIGNAL(timeout()), this, SLOT(onCheckConnectTmrout()));

    mRequestConnectTmr.setInterval(2000);
    connect(&mRequestConnectTmr, SIGNAL(timeout()), this, SLOT(onRequestConnect()));

    mSendTmr.setInterval(300);
    connect(&mSendTmr, SIGNAL(timeout()), this, SLOT(onSendTmrout()));

    mCartypeTmr.setInterval(1000);
    connect(&mCartypeTmr, SIGNAL(timeout()), this, SLOT(onCartypeConnect()));

    mParseOutTmr.setInterval(500);
    mParseOutTmr.setSingleShot(true);
    connect(&mParseOutTmr, SIGNAL(timeout()), this, SLOT(onmParseOutTmrout()));

    // Capacity that is reserved stays through resize(), so that no frame allocates.
    mRecvPayload.reserve(canbox::kMaxPayload);
    mAcData.fill(0, kClimateSize);
}

SimpleService::~SimpleService() = default;

void SimpleService::start()
{
    LOG_DEBUG() << "Start Varne_Ford";
    sendStart();
    initData();
}

void SimpleService::initData()
{
    mRadarData.append(kRadarPositions, '\xFF');
    mCarSettingData.ambient.colour = 0;
    mCarSettingData.ambient.level = 0;
}

void SimpleService::stop() { sendStop(); }

} // namespace canservice
