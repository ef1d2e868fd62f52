// What a CAN service answers for the functions that it lacks.
#include "canservicebase.h"

CanServiceBase::CanServiceBase(QObject *parent)
    : QObject(parent)
{
}

CanServiceBase::~CanServiceBase() = default;

int CanServiceBase::request(int, int) { return -1; }
void CanServiceBase::requestSpeed() {}
float CanServiceBase::getSpeed() { return 0.0F; }
QString CanServiceBase::getSpeedUnit() { return {}; }
QString CanServiceBase::getTemperatureStr() { return {}; }
float CanServiceBase::getTemperature() { return -1.0F; }
QString CanServiceBase::getTemperatureUnit() { return QStringLiteral(""); }
float CanServiceBase::getTimeAllMileage() { return -1.0F; }
float CanServiceBase::getOilAllMileage() { return -1.0F; }
int CanServiceBase::requestDrivingData() { return -1; }
int CanServiceBase::requestMaintenanceData() { return -1; }
int CanServiceBase::setSettings(int, int) { return -1; }
int CanServiceBase::getEarGlonass() { return -1; }
int CanServiceBase::getMileageUnits() { return -1; }
int CanServiceBase::flushDebugFile() { return -1; }
bool CanServiceBase::isRadarStatus() { return true; }
int CanServiceBase::getAcShowRequest() { return -1; }
int CanServiceBase::getAcAirClearStatus() { return -1; }
int CanServiceBase::sendCameraKey(int, CameraData) { return -1; }
int CanServiceBase::getManualClimateMode() { return -1; }
int CanServiceBase::getDualControllableState() { return 1; }
int CanServiceBase::getCameraMode() { return -1; }
int CanServiceBase::getAmbientStatus() { return 1; }
QString CanServiceBase::getDrivingDataTitle1() { return QStringLiteral(""); }
QString CanServiceBase::getDrivingDataTitle2() { return QStringLiteral(""); }
QString CanServiceBase::getDrivingDataTitle3() { return QStringLiteral(""); }
void CanServiceBase::setDrivingDataPage(int) {}
int CanServiceBase::getMaintenanceData(VehicleMaintenanceData &) { return -1; }
void CanServiceBase::setCanDrivingPosition(int) {}
int CanServiceBase::getCanDrivingPosition() { return -1; }
