#include "bench/recording/pcapng.h"

#include "bench/recording/export.h"

#include <QDataStream>
#include <QHash>
#include <QtEndian>

#include <algorithm>

namespace bench {

namespace {

// Every block is `type | length | body | length`, every option `code | length | value`, bodies and
// values padded to 4 bytes.
enum Block : quint32 { SectionHeader = 0x0A0D0D0A, Interface = 1, EnhancedPacket = 6 };
enum Option : quint16 {
    EndOfOptions = 0,
    Comment = 1,
    InterfaceName = 2,
    PacketFlags = 2,
    Application = 4,
    TimeResolution = 9
};
constexpr quint32 kByteOrder = 0x1A2B3C4D;
constexpr quint16 kUser0 = 147;
constexpr quint32 kDirections = 3, kInbound = 1, kOutbound = 2;
constexpr int kMaxPorts = 256;
constexpr int kLargestBlock = 1024 * 1024;
constexpr int kSectionFixed = 16; // Byte order, version, size of the section.
constexpr int kBlockFrame = 12;   // Type, length, and the length again.
constexpr char kMicroseconds = 6;
constexpr qint64 kLatest = 1'000'000'000'000LL * 1'000'000; // As of a text recording.

template <typename Number>
Number numberAt(const QByteArray &bytes, int at)
{
    return qFromLittleEndian<Number>(bytes.constData() + at);
}

// The value of an option behind the fixed part of a block; empty if it is not there.
QByteArray optionIn(const QByteArray &body, int at, Option wanted)
{
    while (at + 4 <= body.size()) {
        const auto code = numberAt<quint16>(body, at);
        const int size = numberAt<quint16>(body, at + 2);
        if (code == EndOfOptions || at + 4 + size > body.size())
            break;
        if (code == wanted)
            return body.mid(at + 4, size);
        at += 4 + (size + 3) / 4 * 4;
    }
    return {};
}

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

} // namespace

bool isPcapng(const QByteArray &firstFour) { return firstFour == QByteArray("\x0A\x0D\x0D\x0A"); }

bool PcapngReader::next(QIODevice &file, TraceLine *line, QString *problem)
{
    for (;;) {
        const QByteArray head = file.read(8);
        if (head.isEmpty())
            return false;
        const auto length = head.size() == 8 ? numberAt<quint32>(head, 4) : 0;
        const bool isWhole = length >= kBlockFrame && length <= kLargestBlock && length % 4 == 0;
        const QByteArray rest = isWhole ? file.read(length - 8) : QByteArray();
        const auto type = head.size() >= 4 ? numberAt<quint32>(head, 0) : 0;
        if (type == SectionHeader && rest.size() >= 4 && numberAt<quint32>(rest, 0) != kByteOrder)
            *problem = QStringLiteral("its byte order is not the one that 'export' writes");
        else if (!isWhole || rest.size() != static_cast<int>(length) - 8 ||
                 numberAt<quint32>(rest, rest.size() - 4) != length)
            *problem = QStringLiteral("the file is damaged, or ends in this block");
        else if (type == SectionHeader) {
            mPorts.clear();
            mComment = optionIn(rest.chopped(4), kSectionFixed, Comment);
        } else if (type == Interface)
            *problem = takeInterface(rest.chopped(4));
        else if (type == EnhancedPacket)
            *problem = takePacket(rest.chopped(4), line);
        if (!problem->isEmpty())
            return false;
        if (type == EnhancedPacket && !line->bytes.isEmpty())
            return true;
    }
}

// Link type, 2 unused bytes, largest size; options.
QString PcapngReader::takeInterface(const QByteArray &body)
{
    constexpr int kFixed = 8;
    if (body.size() < kFixed || numberAt<quint16>(body, 0) != kUser0)
        return QStringLiteral("its packets are no chunks of a serial line: link type USER0 (147) "
                              "is what 'export' writes");
    const QByteArray resolution = optionIn(body, kFixed, TimeResolution);
    if (!resolution.isEmpty() && resolution.at(0) != kMicroseconds)
        return QStringLiteral("its times are not in microseconds");
    QByteArray port = optionIn(body, kFixed, InterfaceName).left(kMaxTracePort);
    std::replace_if(
        port.begin(), port.end(), [](char c) { return c <= ' ' || c > '~'; }, '_');
    mPorts += port.isEmpty() ? QByteArray("pcapng") : port;
    return {};
}

// Interface, time (high and low half), size here, size on the line; bytes; options.
QString PcapngReader::takePacket(const QByteArray &body, TraceLine *line) const
{
    constexpr int kFixed = 20;
    if (body.size() < kFixed)
        return QStringLiteral("a packet is too short");
    const auto interface = numberAt<quint32>(body, 0);
    const auto size = numberAt<quint32>(body, 12);
    const quint64 time = quint64{numberAt<quint32>(body, 4)} << 32 | numberAt<quint32>(body, 8);
    if (interface >= static_cast<quint32>(mPorts.size()))
        return QStringLiteral("a packet is of an interface that the file does not have");
    if (size > kMaxTraceBytes || kFixed + static_cast<int>(size) > body.size())
        return QStringLiteral("a packet has %1 bytes; a chunk has at most %2")
            .arg(size)
            .arg(kMaxTraceBytes);
    if (time > static_cast<quint64>(kLatest))
        return QStringLiteral("a packet is of a time that no clock shows");
    const int options = kFixed + (static_cast<int>(size) + 3) / 4 * 4;
    const QByteArray flags = optionIn(body, options, PacketFlags);
    line->time = static_cast<qint64>(time);
    line->port = mPorts.at(static_cast<int>(interface));
    line->fromBox = flags.size() != 4 || (numberAt<quint32>(flags, 0) & kDirections) != kOutbound;
    line->bytes = body.mid(kFixed, static_cast<int>(size));
    return {};
}

QString exportPcapng(TraceReader &trace, QIODevice &out, const ExportOptions &)
{
    const auto put = [&out](const QByteArray &bytes) { return out.write(bytes) == bytes.size(); };
    if (!put(section(trace.car())))
        return out.errorString();
    QHash<QByteArray, quint32> ports;
    TraceLine line;
    while (trace.next(&line)) {
        if (!ports.contains(line.port)) {
            if (ports.size() == kMaxPorts)
                return QStringLiteral("the recording has more than %1 ports").arg(kMaxPorts);
            ports.insert(line.port, quint32(ports.size()));
            if (!put(interface(line.port)))
                return out.errorString();
        }
        if (!put(packet(ports.value(line.port), line)))
            return out.errorString();
    }
    return {};
}

} // namespace bench
