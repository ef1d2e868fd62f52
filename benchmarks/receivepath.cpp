// Receives climate frames, to be counted under callgrind:
//
//   receivepath <service|floor|timer-floor> <frames>
//
// What runs below receiveFrames() is what the frames cost; all else is left out of the count.
#include "benchmarks/receivepath.h"
#include "benchmarks/floor.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" Q_NEVER_INLINE void receiveFrames(canservice::SerialPort &port, const QByteArray &frame,
                                             int count)
{
    for (int i = 0; i < count; ++i)
        emit port.read(frame);
}

namespace {

constexpr int kWarmUp = 100; // frames, after which every buffer has its size

template <typename Subject>
int run(receivepath::QuietHost &host, Subject &subject, canservice::SerialPort &port, int frames)
{
    const QByteArray frame = receivepath::climateFrame();
    host.listenTo(subject);
    for (int i = 0; i < kWarmUp; ++i)
        emit port.read(frame);
    receiveFrames(port, frame, frames);
    if (host.heard() == 2 * (kWarmUp + frames))
        return EXIT_SUCCESS;
    std::fprintf(stderr, "%d signals came from %d frames\n", host.heard(), kWarmUp + frames);
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    const char *name = argc == 3 ? argv[1] : "";
    const int frames = argc == 3 ? std::atoi(argv[2]) : 0;
    receivepath::QuietHost host;
    if (frames > 0 && std::strcmp(name, "service") == 0) {
        canservice::SimpleService service;
        return run(host, service, canservice::ServiceProbe(service).port, frames);
    }
    if (frames > 0 && std::strcmp(name, "floor") == 0) {
        Floor<canservice::LazyTimer> floor;
        return run(host, floor, floor.port(), frames);
    }
    if (frames > 0 && std::strcmp(name, "timer-floor") == 0) {
        Floor<QTimer> floor;
        return run(host, floor, floor.port(), frames);
    }
    std::fputs("usage: receivepath <service|floor|timer-floor> <frames>\n", stderr);
    return 2;
}
