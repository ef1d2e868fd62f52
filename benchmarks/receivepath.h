// What the measurements of the receive path share: the bytes, the way in, and the host's ears.
#pragma once

#include "bench/wire/reports.h"
#include "tests/serviceprobe.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <vector>

namespace receivepath {

/// The climate frame, 14 bytes, all of which may come at any speed.
inline QByteArray climateFrame()
{
    return canbox::buildFrame(canbox::Inbound::Climate,
                              {0x44, 0x23, 0x10, 0x12, 0x20, 0x00, 0x14, 0x00, 0x21, 0x00});
}

// Car models.
constexpr int kOrdinary = 0;
constexpr int kHighEnd = 1; // Two radar codes per sensor.
constexpr int kOwnPalette = 97;

/// Frames of one type: two that differ in each value that the service stores.
struct Traffic
{
    const char *name;
    int model;
    quint8 dataType;
    const char *payloads[2];
    /// What a frame's texts take that are not those of the frame before: of each the number and the
    /// whole, and one more for a number with decimals. A version text is made each time.
    /// First for frames that repeat themselves, then for the two in turn.
    int allocations[2];

    QByteArray frame(int which) const
    {
        return canbox::buildFrame(dataType, QByteArray::fromHex(payloads[which]));
    }
};

constexpr Traffic kTraffic[] = {
    {"climate", kOrdinary, 0x21, {"44231012200014002100", "bbdcefed9f00ebff42ff"}, {0, 0}},
    {"rear radar", kOrdinary, 0x22, {"0107131900000000", "1f0d070100000000"}, {0, 0}},
    {"rear radar, high end", kHighEnd, 0x22, {"0107131901071319", "1f0d07011f0d0701"}, {0, 0}},
    {"front radar", kOrdinary, 0x23, {"0107131900000000", "1f0d070100000000"}, {0, 0}},
    {"front radar, high end", kHighEnd, 0x23, {"0107131901071319", "1f0d07011f0d0701"}, {0, 0}},
    {"doors", kOrdinary, 0x24, {"80000000000000", "78000000000000"}, {0, 0}},
    {"ambient light", kOrdinary, 0x61, {"0132", "020a"}, {0, 0}},
    {"ambient light, own palette", kOwnPalette, 0x61, {"0132", "020a"}, {0, 0}},
    {"keys", kOrdinary, 0x20, {"0501", "0500"}, {0, 0}},
    {"unknown types", kOrdinary, 0x25, {"0102", "ff00ff"}, {0, 0}},
    {"unit settings", kOrdinary, 0x28, {"7200", "7201"}, {0, 0}},
    {"version", kOrdinary, 0x30, {"56312e32", "56312e33"}, {1, 1}},
    {"vehicle information 1",
     kOrdinary,
     0x63,
     {"01e24001f43c0050515253000000001200ff", "01e24101f53d00515253540000000021ff00"},
     {0, 7}},
    {"vehicle information 2", kOrdinary, 0x69, {"32000000a0", "33000000b0"}, {0, 2}},
};

constexpr bool everyReportIsMeasured()
{
    for (const bench::Report &report : bench::kReports) {
        bool isMeasured = false;
        for (const Traffic &traffic : kTraffic)
            isMeasured = isMeasured || traffic.dataType == static_cast<quint8>(report.type);
        if (!isMeasured)
            return false;
    }
    return true;
}
static_assert(everyReportIsMeasured(), "each report needs a row of traffic");

/// \p stream in pieces of \p size bytes, the last one shorter if it must be.
inline std::vector<QByteArray> chunksOf(const QByteArray &stream, int size)
{
    std::vector<QByteArray> chunks;
    for (int at = 0; at < stream.size(); at += size)
        chunks.push_back(stream.mid(at, size));
    return chunks;
}

/// The process of a host that logs nothing and has no box: receipts go to a closed port.
class QuietHost
{
public:
    QuietHost()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        setDiagnostics(false);
    }

    static void setDiagnostics(bool on)
    {
        QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, on);
    }

    void listenTo(CanServiceBase &service)
    {
        using Base = CanServiceBase;
        for (const auto signal :
             {&Base::sigVersionData, &Base::acStatusChanged, &Base::sigRadarChanged,
              &Base::doorChanged, &Base::drivingDataChanged, &Base::tireDataChanged,
              &Base::tireAlert, &Base::batteryVoltageChange, &Base::sigAmbientChanged,
              &Base::unitDataChanged})
            hear(service, signal);
        hear(service, &Base::notifyCanbusStatus);
        hear(service, &Base::keyEvent);
    }

    template <typename Sender, typename Signal>
    void hear(Sender &sender, Signal signal)
    {
        QObject::connect(&sender, signal, [this] { ++mHeard; });
    }

    int heard() const { return mHeard; }

private:
    char mName[5] = "host";
    char *mArguments[2] = {mName, nullptr};
    int mCount = 1;
    QCoreApplication mApplication{mCount, mArguments};
    int mHeard = 0;
};

} // namespace receivepath
