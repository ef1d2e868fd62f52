#include "bench/recording/export.h"

#include <QDataStream>
#include <QHash>

namespace bench {

namespace {

// pcapng: every block is `type | length | body | length`, every option `code | length | value`,
// bodies and values padded to 4 bytes.
enum Block : quint32 { SectionHeader = 0x0A0D0D0A, Interface = 1, EnhancedPacket = 6 };
enum Option : quint16 {
    EndOfOptions = 0,
    Comment = 1,
    InterfaceName = 2,
    PacketFlags = 2,
    Application = 4
};
constexpr quint32 kByteOrder = 0x1A2B3C4D;
constexpr quint16 kUser0 = 147;
constexpr quint32 kInbound = 1;
constexpr quint32 kOutbound = 2;
constexpr int kMaxPorts = 256;

template <typename... Fields>
QByteArray littleEndian(Fields... fields)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    (stream << ... << fields);
    return bytes;
}

QByteArray padded(const QByteArray &bytes)
{
    return bytes + QByteArray((4 - bytes.size() % 4) % 4, '\0');
}

QByteArray option(Option code, const QByteArray &value)
{
    return littleEndian(quint16(code), quint16(value.size())) + padded(value);
}

QByteArray block(Block type, const QByteArray &body, const QByteArray &options)
{
    const QByteArray content = body + options + option(EndOfOptions, {});
    const auto length = quint32(content.size() + 12);
    return littleEndian(quint32(type), length) + content + littleEndian(length);
}

QByteArray section(const std::optional<TraceCar> &car)
{
    constexpr qint64 kUnknownLength = -1;
    return block(SectionHeader, littleEndian(kByteOrder, quint16(1), quint16(0), kUnknownLength),
                 (car ? option(Comment, traceText(*car)) : QByteArray()) +
                     option(Application, "canbench"));
}

QByteArray interface(const QByteArray &port)
{
    constexpr quint32 kNoLimit = 0;
    return block(Interface, littleEndian(kUser0, quint16(0), kNoLimit),
                 option(InterfaceName, port));
}

QByteArray packet(quint32 interfaceNumber, const TraceLine &line)
{
    const auto time = quint64(line.time); // Microseconds are the default unit.
    const auto size = quint32(line.bytes.size());
    return block(EnhancedPacket,
                 littleEndian(interfaceNumber, quint32(time >> 32), quint32(time), size, size) +
                     padded(line.bytes),
                 option(PacketFlags, littleEndian(line.fromBox ? kInbound : kOutbound)));
}

QByteArray canFrames(const TraceLine &line)
{
    constexpr int kFrameSize = 8;
    const QByteArray text = traceText(line);
    const QByteArray start = text.left(text.indexOf(' ')) + ' ' + line.port;
    const char *first = line.fromBox ? " 100#" : " 200#";
    const char *next = line.fromBox ? " 101#" : " 201#";
    QByteArray frames;
    for (int at = 0; at < line.bytes.size(); at += kFrameSize)
        frames += start + (at == 0 ? first : next) +
                  line.bytes.mid(at, kFrameSize).toHex().toUpper() + '\n';
    return frames;
}

bool put(QIODevice &out, const QByteArray &bytes) { return out.write(bytes) == bytes.size(); }

} // namespace

QString exportCandump(TraceReader &trace, QIODevice &out)
{
    TraceLine line;
    while (trace.next(&line))
        if (!put(out, canFrames(line)))
            return out.errorString();
    return {};
}

QString exportPcapng(TraceReader &trace, QIODevice &out)
{
    if (!put(out, section(trace.car())))
        return out.errorString();
    QHash<QByteArray, quint32> ports;
    TraceLine line;
    while (trace.next(&line)) {
        if (!ports.contains(line.port)) {
            if (ports.size() == kMaxPorts)
                return QStringLiteral("the recording has more than %1 ports").arg(kMaxPorts);
            ports.insert(line.port, quint32(ports.size()));
            if (!put(out, interface(line.port)))
                return out.errorString();
        }
        if (!put(out, packet(ports.value(line.port), line)))
            return out.errorString();
    }
    return {};
}

} // namespace bench
