// The frame that both directions of the serial line share.
//
//   0x2E | data type | N | N payload bytes | checksum
//
// Payload byte k is the k-th byte after the length byte, counted from 0. Bits run from 7, the most
// significant, to 0. All bytes are unsigned.
#pragma once

#include <QByteArray>

#include <initializer_list>

namespace canbox {

constexpr quint8 kHead = 0x2E;

/// Single bytes outside any frame, with which the service answers every frame.
constexpr quint8 kReceiptGood = 0xFF;
constexpr quint8 kReceiptBad = 0xF0;

constexpr int kMaxPayload = 0xFF;

constexpr int kBaudRate = 38400;

/// What a frame from the box carries.
enum class Inbound : quint8 {
    SteeringWheelKey = 0x20,
    Climate = 0x21,
    RearRadar = 0x22,
    FrontRadar = 0x23,
    Doors = 0x24,
    UnitSettings = 0x28,
    Version = 0x30,
    AmbientLight = 0x61,
    VehicleInfo1 = 0x63,
    VehicleInfo2 = 0x69,
};

/// What a frame to the box asks for.
enum class Outbound : quint8 {
    StartStop = 0x81,
    Clock = 0x82,
    Request = 0x90, ///< Payload: the inbound data type to report, then 0.
    CarSelect = 0x91,
    Source = 0xC0,
    SourceText = 0xC1,
    AmbientLight = 0xC5,
    Climate = 0xC6,
    Unit = 0xC9,
};

inline const quint8 *bytesOf(const QByteArray &bytes)
{
    return reinterpret_cast<const quint8 *>(bytes.constData());
}

/// Byte \p index of \p bytes, 0 to 255. The index must be in range.
inline quint8 byteAt(const QByteArray &bytes, int index) { return bytesOf(bytes)[index]; }

/// NOT of the low 8 bits of the sum: over data type, length and payload, without the head.
constexpr quint8 checkSum(const quint8 *bytes, int size)
{
    unsigned sum = 0;
    for (int i = 0; i < size; ++i)
        sum += bytes[i];
    return static_cast<quint8>(~sum);
}

/// A whole frame, head to checksum. A payload beyond 255 bytes is cut there, because the length
/// byte could not tell of the rest.
inline QByteArray buildFrame(quint8 dataType, const QByteArray &payload)
{
    const int size = qMin(payload.size(), kMaxPayload);
    QByteArray frame;
    frame.reserve(size + 4);
    frame.append(static_cast<char>(kHead));
    frame.append(static_cast<char>(dataType));
    frame.append(static_cast<char>(size));
    frame.append(payload.constData(), size);
    frame.append(static_cast<char>(checkSum(bytesOf(frame) + 1, size + 2)));
    return frame;
}

template <typename Type>
QByteArray buildFrame(Type dataType, std::initializer_list<quint8> payload)
{
    return buildFrame(static_cast<quint8>(dataType),
                      QByteArray::fromRawData(reinterpret_cast<const char *>(payload.begin()),
                                              static_cast<int>(payload.size())));
}

} // namespace canbox
