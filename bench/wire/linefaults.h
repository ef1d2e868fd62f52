// Faults on the line between the virtual box and the host, on demand and by a seed.
#pragma once

#include <QByteArray>
#include <QPair>
#include <QStringList>
#include <QVector>

#include <array>
#include <random>

namespace bench {

enum class Fault {
    // In the bytes of a frame.
    BitFlip,
    DroppedByte,
    DoubledByte,
    InsertedByte,
    SwappedBytes,
    Truncated,
    BadChecksum,
    // Frames that the car never sends, before a frame that it does.
    UnknownType,
    WrongLength,
    ZeroLength,
    Flood,
    // In time.
    SplitWrite,
    Silence,
    StalledRead,
    NoAnswer,
    // The cable.
    Unplug,
    UnplugMidFrame,
    UnplugMidWrite,
    Count,
};

constexpr int kFaultCount = static_cast<int>(Fault::Count);

struct FaultInfo
{
    Fault fault;
    const char *name; ///< For example `bit-flip`.
    const char *help;
};

const FaultInfo &faultInfo(int index);
QStringList faultNames();
/// Null for an unknown name.
const FaultInfo *findFault(const QString &name);

/// How often each has happened.
using FaultCounts = std::array<qint64, kFaultCount>;
/// The names of those that have happened, and how often.
QVector<QPair<QString, qint64>> summaryOf(const FaultCounts &counts);

/// How often each fault happens: a probability per frame of the box, 0 to 1.
struct FaultPlan
{
    std::array<double, kFaultCount> rates{};

    double &rate(Fault fault) { return rates[static_cast<std::size_t>(fault)]; }
    double rate(Fault fault) const { return rates[static_cast<std::size_t>(fault)]; }
};

/// Random numbers that are the same on every machine for the same seed.
class FaultRandom
{
public:
    explicit FaultRandom(quint32 seed)
        : mEngine(seed)
    {
    }

    /// 0 to \p limit - 1.
    int below(int limit);
    bool happens(double rate);

private:
    quint32 draw() { return static_cast<quint32>(mEngine()); }

    std::mt19937 mEngine; ///< Its numbers are fixed by the language, those of distributions not.
};

/// What a fault of the first group makes of a frame; other faults leave it alone.
QByteArray damage(Fault fault, const QByteArray &frame, FaultRandom &random);

/// The bytes that a fault of the second group puts before a frame; nothing for other faults.
QByteArray intrusion(Fault fault, FaultRandom &random);

} // namespace bench
