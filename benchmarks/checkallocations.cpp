// Counts the heap allocations of the receive path: none for a frame in steady state, except for the
// texts that some frames build.
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

constexpr int kFrames = 256;
constexpr int kWholeStream = 0;
constexpr int kChunkSizes[] = {14, 1, 5, kWholeStream};

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
    const char *payload;
    const char *otherPayload;
    /// What the texts of a frame take: of each the number, the unit and both together; a number
    /// with decimals takes one more.
    int allocations;
};

constexpr Traffic kTraffic[] = {
    {"climate", kOrdinary, 0x21, "44231012200014002100", "bbdcefed9f00ebff42ff", 0},
    {"rear radar", kOrdinary, 0x22, "0107131900000000", "1f0d070100000000", 0},
    {"rear radar, high end", kHighEnd, 0x22, "0107131901071319", "1f0d07011f0d0701", 0},
    {"front radar", kOrdinary, 0x23, "0107131900000000", "1f0d070100000000", 0},
    {"front radar, high end", kHighEnd, 0x23, "0107131901071319", "1f0d07011f0d0701", 0},
    {"doors", kOrdinary, 0x24, "80000000000000", "78000000000000", 0},
    {"ambient light", kOrdinary, 0x61, "0132", "020a", 0},
    {"ambient light, own palette", kOwnPalette, 0x61, "0132", "020a", 0},
    {"keys", kOrdinary, 0x20, "0501", "0500", 0},
    {"unknown types", kOrdinary, 0x25, "0102", "ff00ff", 0},
    {"unit settings", kOrdinary, 0x28, "7200", "7201", 1},
    {"version", kOrdinary, 0x30, "56312e32", "56312e33", 1},
    {"vehicle information 1", kOrdinary, 0x63, "01e24001f43c0050515253000000001200ff",
     "01e24101f53d00515253540000000021ff00", 10},
    {"vehicle information 2", kOrdinary, 0x69, "32000000a0", "33000000b0", 3},
};

QByteArray streamOf(const Traffic &traffic, bool changing)
{
    const char *payloads[] = {traffic.payload, changing ? traffic.otherPayload : traffic.payload};
    QByteArray stream;
    for (int i = 0; i < kFrames; ++i)
        stream += canbox::buildFrame(traffic.dataType, QByteArray::fromHex(payloads[i % 2]));
    return stream;
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
    const bool good = allFramesCame && allocations <= long{kFrames} * traffic.allocations;
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
    for (const Traffic &traffic : kTraffic)
        for (const bool changing : {false, true})
            for (const int chunkSize : kChunkSizes)
                good &= check(traffic, changing, chunkSize, host);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
