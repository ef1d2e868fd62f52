// The climate frame and what the host reads from it.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <algorithm>

namespace canservice {

namespace {

// A flag of the climate frame: payload byte and bit.
struct Flag
{
    int byte;
    int bit;
};

constexpr Flag kPowerOff{0, 7};
constexpr Flag kAc{0, 6};
constexpr Flag kInside{0, 5};
constexpr Flag kAuto{0, 3};
constexpr Flag kNotDual{0, 2};
constexpr Flag kRearDefrost{0, 0};
constexpr Flag kRearClimate{4, 7};
constexpr Flag kFrontDefrost{4, 5};
constexpr Flag kSwcHeat{4, 3};
constexpr Flag kAcMax{4, 2};

bool isSet(const QByteArray &climate, Flag flag)
{
    return (canbox::byteAt(climate, flag.byte) >> flag.bit & 1) != 0;
}

// The host's wind mode for each raw one, byte 1 bits 7..5.
constexpr int kWindModes[] = {0, 2, 1, 3, 7, 5, 4, 6};

constexpr quint8 kWindScaleMask = 0x07;

// Byte 8 has a seat code in each half: 1 to 3 ventilate, 4 to 6 heat, the rest do neither.
int leftSeatCode(const QByteArray &climate) { return canbox::byteAt(climate, 8) & 0x0F; }
int rightSeatCode(const QByteArray &climate) { return canbox::byteAt(climate, 8) >> 4; }

constexpr int ventilation(int seatCode) { return seatCode <= 3 ? seatCode : 0; }
constexpr int heating(int seatCode) { return seatCode >= 4 && seatCode <= 6 ? seatCode - 3 : 0; }

} // namespace

void SimpleService::doClimate(int, QByteArray &payload)
{
    if (payload.size() != kClimateSize) {
        LOG_ERROR();
        return;
    }
    // Into the store's own memory: a shared copy would cost the parser a new buffer.
    std::copy(payload.cbegin(), payload.cend(), mAcData.begin());
    emit acStatusChanged();
}

bool SimpleService::isPowerOff() { return isSet(mAcData, kPowerOff); }
bool SimpleService::isPowerOffRear() { return false; }
bool SimpleService::isRearClimate() { return isSet(mAcData, kRearClimate); }
bool SimpleService::isAcMax() { return isSet(mAcData, kAcMax); }
bool SimpleService::isAc() { return isSet(mAcData, kAc); }
bool SimpleService::isInside() { return isSet(mAcData, kInside); }
bool SimpleService::isAuto() { return isSet(mAcData, kAuto); }
bool SimpleService::isDual() { return !isSet(mAcData, kNotDual); }
bool SimpleService::isRearDefrost() { return isSet(mAcData, kRearDefrost); }
bool SimpleService::isFrontDefrost() { return isSet(mAcData, kFrontDefrost); }
int SimpleService::getAcFrontLeftHeat() { return heating(leftSeatCode(mAcData)); }
int SimpleService::getAcFrontRightHeat() { return heating(rightSeatCode(mAcData)); }
int SimpleService::getAcRearLeftHeat() { return 0; }
int SimpleService::getAcRearRightHeat() { return 0; }
bool SimpleService::isAcSwcHeat() { return isSet(mAcData, kSwcHeat); }
bool SimpleService::isAcGlassHeat() { return false; }
bool SimpleService::isAirCareActive() { return false; }
int SimpleService::getAirConProfile() { return 0; }
int SimpleService::getLeftVentilation() { return ventilation(leftSeatCode(mAcData)); }
int SimpleService::getRightVentilation() { return ventilation(rightSeatCode(mAcData)); }

int SimpleService::getAcWindMode()
{
    const int raw = rawWindMode();
    LOG_DEBUG() << raw;
    const int mode = kWindModes[raw];
    LOG_DEBUG() << mode;
    return mode;
}

int SimpleService::getAcWindScale() { return canbox::byteAt(mAcData, 1) & kWindScaleMask; }
int SimpleService::getAcWindModeRear() { return 0; }
int SimpleService::getAcWindScaleRear() { return 0; }

int SimpleService::rawWindMode() const { return canbox::byteAt(mAcData, 1) >> 5; }

} // namespace canservice
