// From a good frame to the handler of its data type.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <array>

namespace canservice {

namespace {

struct Route
{
    canbox::Inbound dataType;
    void (SimpleService::*handler)(int, QByteArray &);
};

constexpr Route kRoutes[] = {
    {canbox::Inbound::SteeringWheelKey, &SimpleService::doSwc},
    {canbox::Inbound::Climate, &SimpleService::doClimate},
    {canbox::Inbound::RearRadar, &SimpleService::doRearRadar},
    {canbox::Inbound::FrontRadar, &SimpleService::doFontRadar},
    {canbox::Inbound::Doors, &SimpleService::doCarBasicInfor},
    {canbox::Inbound::UnitSettings, &SimpleService::doSettingStatus},
    {canbox::Inbound::Version, &SimpleService::doVersion},
    {canbox::Inbound::AmbientLight, &SimpleService::doAmbientLight},
    {canbox::Inbound::VehicleInfo1, &SimpleService::doCarInformationData1},
    {canbox::Inbound::VehicleInfo2, &SimpleService::doCarInformationData2},
};

// For each data type the number of its route, counted from 1; 0 for a type that nobody handles.
constexpr auto kRouteOf = [] {
    std::array<quint8, 256> routes{};
    quint8 number = 0;
    for (const Route &route : kRoutes)
        routes[static_cast<quint8>(route.dataType)] = ++number;
    return routes;
}();

} // namespace

void SimpleService::dispatchEvent(int dataType, QByteArray &payload)
{
    LOG_DEBUG() << dataType << payload.toHex();
    mParseOutTmr.stop();

    const auto type = static_cast<std::size_t>(dataType);
    const quint8 route = type < kRouteOf.size() ? kRouteOf[type] : 0;
    const Handler *const handler = route > 0 ? &kRoutes[route - 1].handler : nullptr;
    mSteps = {handler, handler ? handler + 1 : nullptr, dataType, &payload};
    keepLinkAlive();
    if (!handler)
        LOG_DEBUG() << "ID IS ERROR!" << dataType;
    finishFrame();
}

} // namespace canservice
