// Life of the service: what it is made of, how it starts and how it stops.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

namespace canservice {

namespace {

// Intervals, in ms.
constexpr int kLinkCheck = 30000;
constexpr int kKnock = 2000;
constexpr int kAnswerTick = 300;
constexpr int kCarSelection = 1000;
constexpr int kParseOut = 500;

} // namespace

SimpleService::SimpleService()
{
    mSerialPort.open(QString(), canbox::kBaudRate);

    connect(&mSerialPort, SIGNAL(read(QByteArray)), this, SLOT(onDataReady(QByteArray)));

    mLongPressTmr.setSingleShot(true);
    connect(&mLongPressTmr, SIGNAL(timeout()), this, SLOT(onLongPressTimeout()));

    mCheckConnectTmr.setInterval(kLinkCheck);
    connect(&mCheckConnectTmr, SIGNAL(timeout()), this, SLOT(onCheckConnectTmrout()));

    mRequestConnectTmr.setInterval(kKnock);
    connect(&mRequestConnectTmr, SIGNAL(timeout()), this, SLOT(onRequestConnect()));

    mSendTmr.setInterval(kAnswerTick);
    connect(&mSendTmr, SIGNAL(timeout()), this, SLOT(onSendTmrout()));

    mCartypeTmr.setInterval(kCarSelection);
    connect(&mCartypeTmr, SIGNAL(timeout()), this, SLOT(onCartypeConnect()));

    mParseOutTmr.setInterval(kParseOut);
    mParseOutTmr.setSingleShot(true);
    connect(&mParseOutTmr, SIGNAL(timeout()), this, SLOT(onmParseOutTmrout()));

    // Capacity that is reserved stays through resize(), so that no frame allocates.
    mRecvPayload.reserve(canbox::kMaxPayload);
    mAcData.fill(0, kClimateSize);
}

SimpleService::~SimpleService() = default;

void SimpleService::start()
{
    CHECK_THREAD();
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
