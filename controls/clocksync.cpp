// The head unit's clock, sent to the car.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

namespace canservice {

namespace {

/// The year since 2000, in 8 bits: right for 2000 to 2255.
constexpr quint8 yearCode(unsigned short year) { return static_cast<quint8>((year & 0xFF) + 0x30); }
static_assert(yearCode(2000) == 0 && yearCode(2255) == 255);

} // namespace

// Payload: [0] year, [1..4] the four fields from the last to the first, [5] zero.
GPSTimePacket SimpleService::GPSTimeSend(GPSTime &time)
{
    CHECK_THREAD();
    LOG_DEBUG() << "kwr enter into!";
    const QByteArray frame =
        canbox::buildFrame(canbox::Outbound::Clock, {yearCode(time.year), time.field3, time.field2,
                                                     time.field1, time.field0, 0});
    mSerialPort.writeData(frame, false);
    return {};
}

} // namespace canservice
