// The host's ambient light keys. The stored level and colour are the box's last report: a key sends
// a command and leaves them alone.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"
#include "vehicle/ambientpalette.h"

#include <canbusmanager.h>

namespace canservice {

namespace {

enum SettingKey { LevelStep = 4, Colour = 5 };

constexpr int kMaxAmbientLevel = 20;

/// The box's value for a level, in 8 bits.
constexpr unsigned char boxLevel(int level) { return static_cast<unsigned char>(level * 5); }

} // namespace

int SimpleService::sendCarSettingKey(int key, int value)
{
    CHECK_THREAD();
    LOG_DEBUG() << "ggggggggggg" << key << value;
    if (key != LevelStep && key != Colour)
        return 0;

    const int level = mCarSettingData.ambient.level;
    const unsigned colour = mCarSettingData.ambient.colour;
    const int model = CanBusManager::instance()->getCarModelId();
    const bool ownPalette = kOwnPaletteModels.contains(model);
    LOG_DEBUG() << level;
    LOG_DEBUG() << colour;
    LOG_DEBUG() << model;
    LOG_DEBUG() << ownPalette;
    const AmbientPalette &palette = ownPalette ? kOwnPalette : kCommonPalette;

    if (key == Colour)
        sendSetSettings(palette.codeOf(static_cast<unsigned>(value)), boxLevel(level));
    else if (value == 1 && level < kMaxAmbientLevel)
        sendSetSettings(palette.codeOf(colour), boxLevel(level + 1));
    else if (value == -1 && level > 0)
        sendSetSettings(palette.codeOf(colour), boxLevel(level - 1));
    return 0;
}

CarSettingData SimpleService::getCarSettingData()
{
    CHECK_THREAD();
    return mCarSettingData;
}

} // namespace canservice
