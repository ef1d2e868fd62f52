#include "bench/car/virtualcar.h"

namespace bench {

namespace {

constexpr ValueId kKeyCode = valueId("key.code");
constexpr ValueId kKeyPressed = valueId("key.pressed");

} // namespace

bool Cluster::operator==(const Cluster &other) const
{
    return source == other.source && lines[0] == other.lines[0] && lines[1] == other.lines[1] &&
           clock == other.clock;
}

VirtualCar::VirtualCar(QObject *parent)
    : QObject(parent)
{
    for (int index = 0; index < kValueCount; ++index)
        mRaw[static_cast<std::size_t>(index)] = fieldOf(ValueId{index}).initial;
}

bool VirtualCar::store(ValueId id, int raw)
{
    int &stored = mRaw[static_cast<std::size_t>(id)];
    const int kept = raw & fieldOf(id).mask();
    if (kept == stored)
        return false;
    stored = kept;
    emit valueChanged(id);
    return true;
}

void VirtualCar::setRaw(ValueId id, int raw)
{
    if (store(id, raw))
        emit reportChanged(reportOf(id).type);
}

void VirtualCar::setTwoCodesPerSensor(bool on)
{
    if (on == mTwoCodesPerSensor)
        return;
    mTwoCodesPerSensor = on;
    emit reportChanged(Inbound::FrontRadar);
    emit reportChanged(Inbound::RearRadar);
}

void VirtualCar::pressKey(quint8 key)
{
    releaseKey();
    store(kKeyCode, key);
    setRaw(kKeyPressed, 1);
}

void VirtualCar::releaseKey() { setRaw(kKeyPressed, 0); }

QList<QByteArray> VirtualCar::report(Inbound type) const
{
    const Report *report = findReport(type);
    if (!report || report->fields.count == 0)
        return {};
    QList<QByteArray> payloads;
    QByteArray payload(report->size, '\0');
    int index = static_cast<int>(valueId(report->fields[0].name));
    for (const Field &field : report->fields) {
        if (field.selector >= 0)
            payload.fill('\0');
        pack(field, raw(ValueId{index++}), mTwoCodesPerSensor, &payload);
        if (field.selector >= 0)
            payloads.append(payload);
    }
    if (payloads.isEmpty())
        payloads.append(payload);
    return payloads;
}

} // namespace bench
