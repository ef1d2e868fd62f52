// The ambient light report.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"
#include "vehicle/ambientpalette.h"

#include <canbusmanager.h>

namespace canservice {

namespace {

constexpr int kAmbientSize = 2;
constexpr quint8 kColourMask = 0x7F;
constexpr int kBoxStepsPerLevel = 5;

} // namespace

// Payload: [0] bits 6..0 colour code, bit 7 unused; [1] level in the box's steps.
void SimpleService::doAmbientLight(int, QByteArray &payload)
{
    if (payload.size() != kAmbientSize) {
        LOG_ERROR();
        return;
    }
    const int model = CanBusManager::instance()->getCarModelId();
    const bool ownPalette = kOwnPaletteModels.contains(model);
    LOG_DEBUG() << ownPalette;
    const AmbientPalette &palette = ownPalette ? kOwnPalette : kCommonPalette;

    AmbientLightData &ambient = mCarSettingData.ambient;
    ambient.colour = palette.indexOf(canbox::byteAt(payload, 0) & kColourMask);
    ambient.level = static_cast<quint8>(canbox::byteAt(payload, 1) / kBoxStepsPerLevel);
    LOG_DEBUG() << int(ambient.colour);
    LOG_DEBUG() << int(ambient.level);
    emit sigAmbientChanged();
}

} // namespace canservice
