// Counts the heap allocations of the receive path: none for a frame in steady state, except for a
// text that is another than before.
#include "benchmarks/receivepath.h"

#include <canbusmanager.h>

#include <cstdio>
#include <cstdlib>

namespace {

long allocationCount = 0;

} // namespace

// Stand before the C library's own for the whole process; operator new comes this way too.
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);

void *malloc(size_t size) noexcept
{
    ++allocationCount;
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size) noexcept
{
    ++allocationCount;
    return __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) noexcept
{
    ++allocationCount;
    return __libc_realloc(block, size);
}
}

namespace {

using canservice::SimpleService;

using receivepath::Traffic;

constexpr int kFrames = 256;
constexpr int kWholeStream = 0;
constexpr int kChunkSizes[] = {14, 1, 5, kWholeStream};

QByteArray streamOf(const Traffic &traffic, bool changing)
{
    return (traffic.frame(0) + traffic.frame(changing ? 1 : 0)).repeated(kFrames / 2);
}

/// \returns whether the frames allocated no more than they may, after one round that fills caches.
bool check(const Traffic &traffic, bool changing, int chunkSize, receivepath::QuietHost &host)
{
    CanBusManager::instance()->setCarModelId(traffic.model);
    SimpleService service;
    service.start();
    host.listenTo(service);
    const QByteArray stream = streamOf(traffic, changing);
    const auto chunks =
        receivepath::chunksOf(stream, chunkSize == kWholeStream ? stream.size() : chunkSize);

    canservice::SerialPort &port = canservice::ServiceProbe(service).port;
    for (const QByteArray &chunk : chunks)
        emit port.read(chunk);
    const int heardBefore = host.heard();
    const long before = allocationCount;
    for (const QByteArray &chunk : chunks)
        emit port.read(chunk);
    const long allocations = allocationCount - before;

    const bool allFramesCame = host.heard() - heardBefore >= kFrames;
    const bool good =
        allFramesCame && allocations <= long{kFrames} * traffic.allocations[changing ? 1 : 0];
    std::printf("%-28s %-9s %4d %6.2f%s\n", traffic.name, changing ? "changing" : "repeated",
                chunkSize, double(allocations) / kFrames, good ? "" : "  FAILED");
    return good;
}

} // namespace

int main()
{
    receivepath::QuietHost host;
    const long before = allocationCount;
    const QByteArray probe(1000, 'x');
    if (allocationCount == before) {
        std::fputs("the count misses Qt's allocations: is malloc() bound elsewhere?\n", stderr);
        return EXIT_FAILURE;
    }

    bool good = true;
    std::puts("heap allocations per frame, by traffic, values and bytes in a chunk (0: all)");
    for (const Traffic &traffic : receivepath::kTraffic)
        for (const bool changing : {false, true})
            for (const int chunkSize : kChunkSizes)
                good &= check(traffic, changing, chunkSize, host);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
