// Receives frames of each type, to be counted under callgrind:
//
//   receivepath <service|floor|timer-floor> <frames>
//
// Prints a line for each call of receiveFrames(); what runs below that is what the frames cost, and
// all else is left out of the count.
#include "benchmarks/receivepath.h"
#include "benchmarks/floor.h"

#include <canbusmanager.h>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace {

using Frames = std::array<QByteArray, 2>; // which come in turn

} // namespace

extern "C" Q_NEVER_INLINE void receiveFrames(canservice::SerialPort &port, const Frames &frames,
                                             int count)
{
    for (int i = 0; i < count; ++i)
        emit port.read(frames[static_cast<std::size_t>(i % 2)]);
}

namespace {

constexpr int kWarmUp = 100; // frames, after which every buffer has its size

/// \returns the signals that a frame causes, once the buffers have their size.
int warmUp(receivepath::QuietHost &host, canservice::SerialPort &port, const Frames &frames)
{
    int before = 0;
    for (int i = 0; i < 2 * kWarmUp; ++i) {
        before = i == kWarmUp ? host.heard() : before;
        emit port.read(frames[static_cast<std::size_t>(i % 2)]);
    }
    return (host.heard() - before) / kWarmUp;
}

template <typename RestartedTimer>
void runFloor(receivepath::QuietHost &host, const Frames &frames, int count, int signalCount)
{
    Floor<RestartedTimer> floor(signalCount);
    host.hear(floor, &FloorSignals::notifyCanbusStatus);
    host.hear(floor, &FloorSignals::dataChanged);
    if (warmUp(host, floor.port(), frames) != signalCount)
        std::abort();
    receiveFrames(floor.port(), frames, count);
}

} // namespace

int main(int argc, char **argv)
{
    const QByteArray subject = argc == 3 ? argv[1] : "";
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (count <= 0 || (subject != "service" && subject != "floor" && subject != "timer-floor")) {
        std::fputs("usage: receivepath <service|floor|timer-floor> <frames>\n", stderr);
        return 2;
    }
    receivepath::QuietHost host;
    for (const receivepath::Traffic &traffic : receivepath::kTraffic) {
        for (const int other : {0, 1}) {
            const Frames frames{traffic.frame(0), traffic.frame(other)};
            CanBusManager::instance()->setCarModelId(traffic.model);
            canservice::SimpleService service;
            service.start();
            host.listenTo(service);
            canservice::SerialPort &port = canservice::ServiceProbe(service).port;
            const int signalCount = warmUp(host, port, frames);
            std::printf("%s, %s\n", traffic.name, other ? "changing" : "repeated");
            if (subject == "service")
                receiveFrames(port, frames, count);
            else if (subject == "floor")
                runFloor<canservice::LazyTimer>(host, frames, count, signalCount);
            else
                runFloor<QTimer>(host, frames, count, signalCount);
        }
    }
    return 0;
}
