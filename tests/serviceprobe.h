// The inside of a service.
#pragma once

#include "plugin/simpleservice.h"

namespace canservice {

/// What tests and measurements see of a service: parser, timers, and the port, which is the way in.
class ServiceProbe
{
    SimpleService &mService;

public:
    explicit ServiceProbe(SimpleService &service)
        : mService(service)
    {
    }

    SerialPort &port = mService.mSerialPort;
    const int &parseState = mService.mParseState;
    const QByteArray &recvPayload = mService.mRecvPayload;
    const int &recvRemain = mService.mRecvRemain;
    const int &noAnswerCount = mService.mNoAnswerCount;
    LazyTimer &checkConnect = mService.mCheckConnectTmr;
    QTimer &requestConnect = mService.mRequestConnectTmr;
    QTimer &send = mService.mSendTmr;
    QTimer &cartype = mService.mCartypeTmr;
    LazyTimer &longPress = mService.mLongPressTmr;
    LazyTimer &parseOut = mService.mParseOutTmr;
    const int &acKey = mService.mAcKey;
    const bool &keyPressed = mService.mKeyPressed;
    const int &currentKey = mService.mCurrentKey;
    const QByteArray &radarData = mService.mRadarData;
};

} // namespace canservice
