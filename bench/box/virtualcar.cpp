#include "virtualcar.h"

#include "plugin/idset.h"

namespace bench {

using canbox::Inbound;

namespace {

constexpr canservice::ModelSet kTwoCodeModels{1,  11, 27, 30, 35, 39, 47, 51, 55,  58,  65, 68,
                                              69, 76, 79, 82, 86, 92, 97, 98, 111, 112, 119};

// The two bytes of each sensor slot in frames with two codes per sensor.
constexpr int kRearPairs[4][2] = {{4, 5}, {0, 1}, {2, 3}, {6, 7}};
constexpr int kFrontPairs[4][2] = {{5, 6}, {0, 1}, {2, 3}, {4, 7}};

constexpr quint8 kTemperatureSetting = 0x72;
constexpr quint8 kPressureSetting = 0x70;

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray result;
    for (int value : values)
        result.append(static_cast<char>(value));
    return result;
}

} // namespace

bool Cluster::operator==(const Cluster &other) const
{
    return source == other.source && lines[0] == other.lines[0] && lines[1] == other.lines[1] &&
           clock == other.clock;
}

VirtualCar::VirtualCar(QObject *parent)
    : QObject(parent)
{
    for (int i = 0; i < kCarValueCount; ++i)
        mRaw[static_cast<std::size_t>(i)] = carValueInfo(static_cast<CarValue>(i)).initial;
}

void VirtualCar::setRaw(CarValue value, int raw)
{
    const CarValueInfo &info = carValueInfo(value);
    int &stored = mRaw[static_cast<std::size_t>(value)];
    const int kept = raw & ((1 << info.bits) - 1);
    if (kept == stored)
        return;
    stored = kept;
    emit reportChanged(static_cast<quint8>(info.report));
}

QString VirtualCar::set(const QString &name, const QString &text)
{
    const CarValueInfo *info = findCarValue(name);
    if (!info)
        return QStringLiteral("the car has no value '%1'").arg(name);
    int raw = 0;
    QString error;
    if (parseCarValue(*info, text, &raw, &error))
        setRaw(info->id, raw);
    return error;
}

bool VirtualCar::hasTwoCodesPerSensor(int carModelId)
{
    return kTwoCodeModels.contains(carModelId);
}

void VirtualCar::setTwoCodesPerSensor(bool on)
{
    if (on == mTwoCodesPerSensor)
        return;
    mTwoCodesPerSensor = on;
    emit reportChanged(static_cast<quint8>(Inbound::FrontRadar));
    emit reportChanged(static_cast<quint8>(Inbound::RearRadar));
}

void VirtualCar::pressKey(quint8 key)
{
    releaseKey();
    mKey = key;
    mKeyHeld = true;
    emit reportChanged(static_cast<quint8>(Inbound::SteeringWheelKey));
}

void VirtualCar::releaseKey()
{
    if (!mKeyHeld)
        return;
    mKeyHeld = false;
    emit reportChanged(static_cast<quint8>(Inbound::SteeringWheelKey));
}

QList<QByteArray> VirtualCar::report(quint8 dataType) const
{
    const Inbound type{dataType};
    switch (type) {
    case Inbound::SteeringWheelKey:
        return {bytes({mKey, mKeyHeld})};
    case Inbound::Climate:
        return {place(type, 10)};
    case Inbound::RearRadar:
    case Inbound::FrontRadar:
        return {radar(type)};
    case Inbound::Doors:
        return {place(type, 7)};
    case Inbound::UnitSettings:
        return {bytes({kTemperatureSetting, raw(CarValue::UnitTemperature)}),
                bytes({kPressureSetting, raw(CarValue::UnitPressure)})};
    case Inbound::AmbientLight:
        return {place(type, 2)};
    case Inbound::VehicleInfo1:
        return {place(type, 18)};
    case Inbound::VehicleInfo2:
        return {place(type, 5)};
    case Inbound::Version:
        break;
    }
    return {};
}

QByteArray VirtualCar::place(Inbound report, int size) const
{
    QByteArray payload(size, '\0');
    for (int i = 0; i < kCarValueCount; ++i) {
        const CarValueInfo &info = carValueInfo(static_cast<CarValue>(i));
        if (info.report != report)
            continue;
        const int value = raw(info.id);
        const int extraBytes = (info.bits - 1) / 8;
        for (int k = 0; k <= extraBytes; ++k) {
            const int part = (value >> (8 * (extraBytes - k))) & 0xFF;
            const int byte = canbox::byteAt(payload, info.byte + k) | (part << info.shift);
            payload[info.byte + k] = static_cast<char>(byte);
        }
    }
    return payload;
}

QByteArray VirtualCar::radar(Inbound report) const
{
    QByteArray payload = place(report, 8);
    if (!mTwoCodesPerSensor)
        return payload;
    const QByteArray codes = payload.left(4);
    const auto &pairs = report == Inbound::RearRadar ? kRearPairs : kFrontPairs;
    for (int slot = 0; slot < 4; ++slot)
        for (int byte : pairs[slot])
            payload[byte] = codes[slot];
    return payload;
}

} // namespace bench
