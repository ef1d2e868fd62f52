// Commands and report requests to the box. Each frame goes to the port at once, link up or not, and
// whether the port took it is not looked at.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

namespace canservice {

using canbox::buildFrame;
using canbox::Inbound;
using canbox::Outbound;

namespace {

constexpr quint8 kStart = 1;
constexpr quint8 kStop = 0;

} // namespace

quint8 SimpleService::getCheckSum(QByteArray &bytes)
{
    return canbox::checkSum(canbox::bytesOf(bytes), bytes.size());
}

void SimpleService::sendStart()
{
    mSerialPort.writeData(buildFrame(Outbound::StartStop, {kStart}), true);
    mRequestConnectTmr.start();
    requestVersion();
}

void SimpleService::sendStop()
{
    CHECK_THREAD();
    mSerialPort.writeData(buildFrame(Outbound::StartStop, {kStop}), true);
    mCartypeTmr.stop();
}

void SimpleService::sendCarSelect(unsigned char index, unsigned char)
{
    mSerialPort.writeData(buildFrame(Outbound::CarSelect, {index}), false);
}

void SimpleService::sendSetSettings(unsigned char command, unsigned char value)
{
    mSerialPort.writeData(buildFrame(Outbound::AmbientLight, {command, value}), true);
}

void SimpleService::sendUnitSet(unsigned char command, unsigned char value)
{
    mSerialPort.writeData(buildFrame(Outbound::Unit, {command, value}), true);
}

void SimpleService::requestReport(Inbound dataType, bool flag)
{
    CHECK_THREAD();
    mSerialPort.writeData(buildFrame(Outbound::Request, {static_cast<quint8>(dataType), 0}), flag);
}

void SimpleService::requsetGauges() {}

void SimpleService::requsetClimate() { requestReport(Inbound::Climate, false); }

void SimpleService::requsetParkAssist()
{
    requestReport(Inbound::RearRadar, false);
    requestReport(Inbound::FrontRadar, false);
}

void SimpleService::requsetVehicleInfo()
{
    requestReport(Inbound::VehicleInfo1, false);
    requestReport(Inbound::VehicleInfo2, false);
}

void SimpleService::requsetCarSetting() { requestReport(Inbound::AmbientLight, false); }

void SimpleService::requsetDrinvingData()
{
    requestReport(Inbound::VehicleInfo1, false);
    requestReport(Inbound::VehicleInfo2, false);
}

void SimpleService::requsetMaintenance() {}

void SimpleService::requsetFuel() {}

void SimpleService::requsetUnitSettings() { requestReport(Inbound::UnitSettings, false); }

void SimpleService::requsetOtherInfo() { requestReport(Inbound::VehicleInfo1, false); }

void SimpleService::sendAnyData(QByteArray &data)
{
    CHECK_THREAD();
    mSerialPort.writeData(data, false);
}

} // namespace canservice
