#include "bench/wire/linefaults.h"

#include "bench/wire/reports.h"
#include "bench/wire/tables.h"

#include <iterator>

namespace bench {

namespace {

constexpr int kFloodFrames = 40;

constexpr FaultInfo kFaults[] = {
    {Fault::BitFlip, "bit-flip", "one bit of a frame is inverted"},
    {Fault::DroppedByte, "drop", "a byte is lost"},
    {Fault::DoubledByte, "double", "a byte comes twice"},
    {Fault::InsertedByte, "insert", "a byte comes that nobody sent"},
    {Fault::SwappedBytes, "swap", "two neighbouring bytes change places"},
    {Fault::Truncated, "truncate", "a frame ends early"},
    {Fault::BadChecksum, "checksum", "the checksum is wrong"},
    {Fault::UnknownType, "unknown-type", "a good frame of a type that nobody knows"},
    {Fault::WrongLength, "wrong-length", "a good frame of a known type, a byte too long"},
    {Fault::ZeroLength, "zero-length", "a frame without payload"},
    {Fault::Flood, "flood", "many good frames of an unknown type at once"},
    {Fault::SplitWrite, "split", "a frame comes in two pieces, 200 ms apart"},
    {Fault::Silence, "silence", "the box sends nothing for 3 s"},
    {Fault::StalledRead, "stall", "the box fetches nothing for 1 s"},
    {Fault::NoAnswer, "no-answer", "the box is silent for 35 s, which loses the link"},
    {Fault::Unplug, "unplug", "the cable is pulled between frames, for 1 s"},
    {Fault::UnplugMidFrame, "unplug-frame", "the cable is pulled in the middle of a frame"},
    {Fault::UnplugMidWrite, "unplug-write", "the cable is pulled while the host writes"},
};
static_assert(std::size(kFaults) == kFaultCount);
static_assert(isInEnumOrder(kFaults, [](const FaultInfo &row) { return row.fault; }));

// A type that the service knows, and one that it does not.
constexpr Report kKnown = *findReport(Inbound::Climate);
constexpr quint8 kKnownType = static_cast<quint8>(kKnown.type);
constexpr quint8 kUnknownType = 0x7A;
static_assert(!findReport(Inbound{kUnknownType}));

QByteArray randomBytes(int size, FaultRandom &random)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random.below(256));
    return bytes;
}

} // namespace

const FaultInfo &faultInfo(int index) { return kFaults[index]; }

const FaultInfo *findFault(const QString &name) { return findNamed(kFaults, name); }

QStringList faultNames() { return namesOf(kFaults); }

QVector<QPair<QString, qint64>> summaryOf(const FaultCounts &counts)
{
    QVector<QPair<QString, qint64>> rows;
    for (std::size_t i = 0; i < counts.size(); ++i)
        if (counts[i] > 0)
            rows.append({QLatin1String(kFaults[i].name), counts[i]});
    return rows;
}

int FaultRandom::below(int limit)
{
    return static_cast<int>(quint64(draw()) * static_cast<quint64>(limit) >> 32);
}

bool FaultRandom::happens(double rate) { return rate > 0 && draw() < rate * 4294967296.0; }

QByteArray damage(Fault fault, const QByteArray &frame, FaultRandom &random)
{
    if (frame.size() < 2)
        return frame;
    QByteArray damaged = frame;
    const int place = random.below(frame.size());
    char &byte = damaged.data()[place];
    switch (fault) {
    case Fault::BitFlip:
        byte = static_cast<char>(canbox::byteAt(frame, place) ^ 1 << random.below(8));
        break;
    case Fault::DroppedByte:
        damaged.remove(place, 1);
        break;
    case Fault::DoubledByte:
        damaged.insert(place, frame.at(place));
        break;
    case Fault::InsertedByte:
        damaged.insert(place, static_cast<char>(random.below(256)));
        break;
    case Fault::SwappedBytes:
        std::swap(byte, damaged.data()[place > 0 ? place - 1 : 1]);
        break;
    case Fault::Truncated:
        damaged.truncate(1 + random.below(frame.size() - 1));
        break;
    case Fault::BadChecksum:
        damaged[frame.size() - 1] =
            static_cast<char>(canbox::byteAt(frame, frame.size() - 1) + 1 + random.below(255));
        break;
    default:
        break;
    }
    return damaged;
}

QByteArray intrusion(Fault fault, FaultRandom &random)
{
    QByteArray bytes;
    switch (fault) {
    case Fault::UnknownType:
        return canbox::buildFrame(kUnknownType, randomBytes(1 + random.below(20), random));
    case Fault::WrongLength:
        return canbox::buildFrame(kKnownType, randomBytes(kKnown.size + 1, random));
    case Fault::ZeroLength:
        return canbox::buildFrame(kKnownType, {});
    case Fault::Flood:
        for (int i = 0; i < kFloodFrames; ++i)
            bytes += canbox::buildFrame(kUnknownType, randomBytes(1 + random.below(20), random));
        break;
    default:
        break;
    }
    return bytes;
}

} // namespace bench
