// The vehicle's display units: reported by the box, stepped by the host.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <translator.h>

#include <algorithm>

namespace canservice {

namespace {

constexpr int kSettingSize = 2;

// A unit setting: its place in the host's lists, the box's code, and the host's text per value.
struct UnitSetting
{
    int index;
    quint8 code;
    int valueCount;
    int texts[3];
};

constexpr UnitSetting kUnitSettings[] = {
    {3, 0x72, 2, {990, 993, 0}},     // temperature: degrees Celsius, Fahrenheit
    {5, 0x70, 3, {1007, 1006, 989}}, // pressure: psi, kPa, bar
};

template <typename Predicate>
const UnitSetting *findSetting(Predicate matches)
{
    const auto *found = std::find_if(std::begin(kUnitSettings), std::end(kUnitSettings), matches);
    return found == std::end(kUnitSettings) ? nullptr : found;
}

} // namespace

// Payload: [0] setting code, [1] value.
void SimpleService::doSettingStatus(int dataType, QByteArray &payload)
{
    if (payload.size() != kSettingSize) {
        LOG_ERROR();
        return;
    }
    const quint8 code = canbox::byteAt(payload, 0);
    const int value = canbox::byteAt(payload, 1);
    LOG_DEBUG() << dataType << payload.toHex();

    const auto *setting = findSetting([code](const UnitSetting &row) { return row.code == code; });
    if (setting && value < setting->valueCount) {
        mUnitData.values[setting->index] = value;
        mUnitData.texts[setting->index] = Translator::translate(setting->texts[value]);
    }
    emit unitDataChanged();
}

int SimpleService::getUnitData(UnitData &data)
{
    CHECK_THREAD();
    data = mUnitData;
    return 0;
}

// The value steps at once, so that quick commands step on; text and signal wait for the report.
void SimpleService::setUnitCmd(int command)
{
    CHECK_THREAD();
    LOG_DEBUG() << command;
    const auto *setting =
        findSetting([command](const UnitSetting &row) { return row.index == command; });
    if (!setting)
        return;
    const int value = mUnitData.values.at(command);
    LOG_DEBUG() << value << mUnitData.reserved.at(command);
    const int next = (value + 1) % setting->valueCount;
    sendUnitSet(setting->code, static_cast<unsigned char>(next));
    mUnitData.values[command] = next;
}

} // namespace canservice
