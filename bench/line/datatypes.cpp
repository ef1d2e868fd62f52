#include "datatypes.h"

#include "protocol/frame.h"

namespace bench {

namespace {

struct Name
{
    quint8 dataType;
    const char *text;
};

template <typename Type>
constexpr Name row(Type dataType, const char *text)
{
    return {static_cast<quint8>(dataType), text};
}

using canbox::Inbound;
using canbox::Outbound;

constexpr Name kInbound[] = {
    row(Inbound::SteeringWheelKey, "steering-wheel key"),
    row(Inbound::Climate, "climate"),
    row(Inbound::RearRadar, "rear radar"),
    row(Inbound::FrontRadar, "front radar"),
    row(Inbound::Doors, "doors"),
    row(Inbound::UnitSettings, "unit settings"),
    row(Inbound::Version, "version"),
    row(Inbound::AmbientLight, "ambient light"),
    row(Inbound::VehicleInfo1, "vehicle information 1"),
    row(Inbound::VehicleInfo2, "vehicle information 2"),
};

constexpr Name kOutbound[] = {
    row(Outbound::StartStop, "start/stop"),       row(Outbound::Clock, "clock"),
    row(Outbound::Request, "report request"),     row(Outbound::CarSelect, "car select"),
    row(Outbound::Source, "media source"),        row(Outbound::SourceText, "media text"),
    row(Outbound::AmbientLight, "ambient light"), row(Outbound::Climate, "climate command"),
    row(Outbound::Unit, "unit setting"),
};

template <typename Names>
QString nameIn(const Names &names, quint8 dataType)
{
    for (const Name &name : names)
        if (name.dataType == dataType)
            return QLatin1String(name.text);
    return QStringLiteral("unknown");
}

} // namespace

QString inboundName(quint8 dataType) { return nameIn(kInbound, dataType); }

QString outboundName(quint8 dataType) { return nameIn(kOutbound, dataType); }

QString hexByte(quint8 byte)
{
    return QStringLiteral("0x%1").arg(QString::number(byte, 16).toUpper(), 2, QLatin1Char('0'));
}

} // namespace bench
