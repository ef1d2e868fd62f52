// Park-assist radar: a distance code per sensor from the box, a coarse distance for the host.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <algorithm>

namespace canservice {

namespace {

constexpr int kRadarSize = 8;

// Sensors of one bumper, in this order in the store: left, middle-left, middle-right, right.
using Codes = std::array<quint8, 4>;

// On a high-end model each sensor has two payload bytes, and the smaller code counts.
struct BytePair
{
    int first;
    int second;
};
using Pairing = std::array<BytePair, 4>;
constexpr Pairing kRearPairs{{{4, 5}, {0, 1}, {2, 3}, {6, 7}}};
constexpr Pairing kFrontPairs{{{5, 6}, {0, 1}, {2, 3}, {4, 7}}};

Codes readCodes(const QByteArray &payload, bool highEnd, const Pairing &pairs)
{
    Codes codes{};
    for (std::size_t sensor = 0; sensor < codes.size(); ++sensor)
        codes[sensor] = highEnd ? std::min(canbox::byteAt(payload, pairs[sensor].first),
                                           canbox::byteAt(payload, pairs[sensor].second))
                                : canbox::byteAt(payload, static_cast<int>(sensor));
    return codes;
}

// Codes 1, the nearest, to 31 fall into bands; 0 and all above 31 are no obstacle.
constexpr quint8 kNothing = 0xFF;
struct LevelBand
{
    quint8 lastCode;
    quint8 level;
};
constexpr LevelBand kLevelBands[] = {{0, kNothing}, {1, 0},  {7, 1},  {13, 2},
                                     {19, 3},       {25, 4}, {31, 6}, {0xFF, kNothing}};

constexpr auto kLevelOfCode = [] {
    std::array<quint8, 256> levels{};
    std::size_t code = 0;
    for (const LevelBand &band : kLevelBands)
        while (code <= band.lastCode)
            levels[code++] = band.level;
    return levels;
}();
static_assert(kLevelOfCode[2] == 1 && kLevelOfCode[31] == 6 && kLevelOfCode[255] == kNothing);

// Places in the store. The side positions and the second sources are fed by no frame.
enum Position {
    FrontLeft,
    FrontMiddleLeft,
    FrontMiddleRight,
    FrontRight,
    RearLeft,
    RearMiddleLeft,
    RearMiddleRight,
    RearRight,
    LeftFront,
    LeftMiddleFront,
    LeftMiddleRear,
    LeftRear,
    RightFront,
    RightMiddleFront,
    RightMiddleRear,
    RightRear,
    FrontMiddleLeftSecond,
    FrontMiddleRightSecond,
};

constexpr quint8 kMaxLevel = 7;
constexpr int kNoDistance = 255;

} // namespace

void SimpleService::doRearRadar(int, QByteArray &payload)
{
    if (payload.size() != kRadarSize) {
        LOG_ERROR();
        return;
    }
    const bool highEnd = isHighEnd();
    LOG_DEBUG() << payload.toHex() << highEnd;
    storeRadarCodes(RearLeft, readCodes(payload, highEnd, kRearPairs));
}

void SimpleService::doFontRadar(int, QByteArray &payload)
{
    if (payload.size() != kRadarSize) {
        LOG_ERROR();
        return;
    }
    const bool highEnd = isHighEnd();
    LOG_DEBUG() << payload.toHex() << highEnd;
    storeRadarCodes(FrontLeft, readCodes(payload, highEnd, kFrontPairs));
}

void SimpleService::storeRadarCodes(int firstPosition, const Codes &codes)
{
    if (mRadarData.isEmpty())
        mRadarData.fill(static_cast<char>(kNothing), kRadarPositions);

    auto *stored = reinterpret_cast<quint8 *>(mRadarData.data()) + firstPosition;
    bool changed = false;
    for (const quint8 code : codes) {
        const quint8 level = kLevelOfCode[code];
        changed |= *stored != level;
        *stored++ = level;
    }
    if (changed)
        emit sigRadarChanged();
}

int SimpleService::radarDistance(int position) const
{
    if (position >= mRadarData.size())
        return kNoDistance;
    const quint8 level = canbox::byteAt(mRadarData, position);
    return level <= kMaxLevel ? level + 1 : kNoDistance;
}

// The middle sensors of the front have a second source. Distances order as levels do.
int SimpleService::getFrontRadarMiddleLeftDistance()
{
    return std::min(radarDistance(FrontMiddleLeft), radarDistance(FrontMiddleLeftSecond));
}

int SimpleService::getFrontRadarMiddleRightDistance()
{
    return std::min(radarDistance(FrontMiddleRight), radarDistance(FrontMiddleRightSecond));
}

int SimpleService::getFrontRadarLeftDistance() { return radarDistance(FrontLeft); }
int SimpleService::getFrontRadarRightDistance() { return radarDistance(FrontRight); }
int SimpleService::getRearRadarLeftDistance() { return radarDistance(RearLeft); }
int SimpleService::getRearRadarMiddleLeftDistance() { return radarDistance(RearMiddleLeft); }
int SimpleService::getRearRadarMiddleRightDistance() { return radarDistance(RearMiddleRight); }
int SimpleService::getRearRadarRightDistance() { return radarDistance(RearRight); }
int SimpleService::getLeftRadarFrontDistance() { return radarDistance(LeftFront); }
int SimpleService::getLeftRadarMiddleFrontDistance() { return radarDistance(LeftMiddleFront); }
int SimpleService::getLeftRadarMiddleRearDistance() { return radarDistance(LeftMiddleRear); }
int SimpleService::getLeftRadarRearDistance() { return radarDistance(LeftRear); }
int SimpleService::getRightRadarFrontDistance() { return radarDistance(RightFront); }
int SimpleService::getRightRadarMiddleFrontDistance() { return radarDistance(RightMiddleFront); }
int SimpleService::getRightRadarMiddleRearDistance() { return radarDistance(RightMiddleRear); }
int SimpleService::getRightRadarRearDistance() { return radarDistance(RightRear); }

} // namespace canservice
