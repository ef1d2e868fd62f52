// Which car model can do what. The host's selection may change at any time: every rule asks afresh.
#include "plugin/simpleservice.h"

#include "plugin/idset.h"
#include "protocol/diagnostics.h"

#include <canbusmanager.h>

namespace canservice {

namespace {

// Models with the newer climate control, on which every climate key exists.
constexpr ModelSet kNewControlModels{
    1,   2,   3,   6,   7,   15,  18,  21,  23,  30,  31,  32,  35,  36,  37, 38,
    42,  43,  44,  46,  76,  77,  78,  79,  80,  81,  82,  83,  84,  90,  96, 103,
    105, 106, 109, 110, 111, 112, 113, 114, 115, 116, 117, 119, 120, 121,
};
static_assert(kNewControlModels.size() == 46);

// Models whose radar frames carry two codes per sensor.
constexpr ModelSet kHighEndModels{1,  11, 27, 30, 35, 39, 47, 51, 55,  58,  65, 68,
                                  69, 76, 79, 82, 86, 92, 97, 98, 111, 112, 119};
static_assert(kHighEndModels.size() == 23);

using KeySet = IdSet<35>;

// The climate keys that some model with an older control has.
constexpr KeySet kKeys{0,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13,
                       14, 15, 16, 19, 20, 21, 22, 25, 26, 29, 31, 34};

// Keys that no such model has, and that are refused without a word.
constexpr KeySet kKeysOfNoModel{17, 18, 23, 24, 27, 28};
static_assert(!kKeys.overlaps(kKeysOfNoModel));
constexpr KeySet kListedKeys = kKeys | kKeysOfNoModel;

// Models with an older climate control, in groups that lack the same keys.
struct ModelGroup
{
    ModelSet models;
    KeySet lackingKeys;
};

constexpr ModelGroup kModelGroups[] = {
    {{14}, {8, 10, 11, 25, 26, 29}},
    {{16, 17}, {34}},
    {{19, 20, 85}, {29}},
    {{22}, {0, 2, 5, 6, 7, 8, 9, 10, 11, 25, 26, 29, 34}},
    {{24, 25, 91, 92, 93, 94, 95}, {29, 34}},
    {{45, 107}, {4, 5, 8, 9, 10, 11, 25, 26, 29, 34}},
    {{68, 69, 70, 71, 72, 73}, {10, 11, 21, 22, 29, 34}},
    {{74, 75}, {8, 34}},
    {{97, 98, 99, 100, 101, 102}, {4, 29, 34}},
};

constexpr ModelSet allGroups()
{
    ModelSet models;
    for (const ModelGroup &group : kModelGroups)
        models = models | group.models;
    return models;
}
static_assert(allGroups().size() == 30);
static_assert(!allGroups().overlaps(kNewControlModels));

constexpr bool groupsStandAlone()
{
    int size = 0;
    for (const ModelGroup &group : kModelGroups) {
        if (!kKeys.includes(group.lackingKeys))
            return false;
        size += group.models.size();
    }
    return size == allGroups().size();
}
static_assert(groupsStandAlone());

// The models that have a key, for each key.
constexpr auto kModelsOfKey = [] {
    std::array<ModelSet, KeySet::kLimit> models{};
    for (int key = 0; key < KeySet::kLimit; ++key)
        for (const ModelGroup &group : kModelGroups)
            if (kKeys.contains(key) && !group.lackingKeys.contains(key))
                models[static_cast<std::size_t>(key)] =
                    models[static_cast<std::size_t>(key)] | group.models;
    return models;
}();

// Models of blowing-mode class 1, for each raw wind mode.
constexpr ModelSet kCyclingInModes0And1{14, 19, 20, 24, 25, 45, 74,  75,  91,  92,
                                        93, 94, 95, 97, 98, 99, 100, 101, 102, 107};
constexpr ModelSet kCyclingInMode2{97, 98, 99, 100, 101, 102};
constexpr ModelSet kCyclingInModes3To5{16, 22, 68, 69, 70, 71, 72, 73, 85};
constexpr ModelSet kCyclingInMode[8] = {
    kCyclingInModes0And1,
    kCyclingInModes0And1,
    kCyclingInMode2,
    kCyclingInModes3To5,
    kCyclingInModes3To5,
    kCyclingInModes3To5,
    {},
    {},
};
static_assert(allGroups().includes(kCyclingInModes0And1 | kCyclingInMode2 | kCyclingInModes3To5));

} // namespace

bool SimpleService::isNewModelCtrl()
{
    const int model = CanBusManager::instance()->getCarModelId();
    LOG_DEBUG() << model;
    const bool found = kNewControlModels.contains(model);
    LOG_DEBUG() << ">>>>>>>>>>>>>>>>>>>>>" << found;
    return found;
}

bool SimpleService::isSupportAcCtrl(int key)
{
    if (isNewModelCtrl())
        return true;
    const int model = CanBusManager::instance()->getCarModelId();
    LOG_DEBUG() << model << key;
    if (!kListedKeys.contains(key))
        LOG_DEBUG() << "Function not supported,KEY = " << key;
    const bool found =
        kKeys.contains(key) && kModelsOfKey[static_cast<std::size_t>(key)].contains(model);
    LOG_DEBUG() << ">>>>>>>>>>>>>>>>>>>>>" << found;
    return found;
}

int SimpleService::AcBlowingModeCtrl()
{
    if (isNewModelCtrl())
        return 2;
    const int model = CanBusManager::instance()->getCarModelId();
    const int windMode = rawWindMode();
    LOG_DEBUG() << model << windMode;
    const bool found = kCyclingInMode[windMode].contains(model);
    LOG_DEBUG() << ">>>>>>>>>>>>>>>>>>>>>" << found;
    return found ? 1 : 0;
}

bool SimpleService::isHighEnd()
{
    const int model = CanBusManager::instance()->getCarModelId();
    LOG_DEBUG() << model;
    const bool found = kHighEndModels.contains(model);
    LOG_DEBUG() << ">>>>>>>>>>>>>>>>>>>>>" << found;
    return found;
}

} // namespace canservice
