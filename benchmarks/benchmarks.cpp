// Times of the receive path and of loading. What they are compared with runs beside them.
#include "benchmarks/receivepath.h"

#include <configmanager.h>

#include <QPluginLoader>

#include <benchmark/benchmark.h>

#include <chrono>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using receivepath::QuietHost;
using Clock = std::chrono::steady_clock;

constexpr int kFrameSize = 14;

QuietHost *theHost = nullptr;

void countBytes(benchmark::State &state, qint64 bytesPerRound)
{
    const auto bytes = static_cast<double>(bytesPerRound * state.iterations());
    state.counters["per_byte"] =
        benchmark::Counter(bytes, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The same bytes in chunks of each size.
void receiveInChunks(benchmark::State &state)
{
    const QByteArray stream = receivepath::climateFrame().repeated(65536);
    const auto chunks = receivepath::chunksOf(stream, static_cast<int>(state.range(0)));
    canservice::SimpleService service;
    theHost->listenTo(service);
    for (auto _ : state)
        for (const QByteArray &chunk : chunks)
            emit canservice::ServiceProbe(service).port.read(chunk);
    countBytes(state, stream.size());
}
BENCHMARK(receiveInChunks)->Arg(1)->Arg(14)->Arg(32)->Arg(4096)->Arg(65536);

// Any number of frames for a service that is new.
void receiveFrames(benchmark::State &state)
{
    const QByteArray frame = receivepath::climateFrame();
    for (auto _ : state) {
        state.PauseTiming();
        {
            canservice::SimpleService service;
            theHost->listenTo(service);
            state.ResumeTiming();
            for (qint64 i = 0; i < state.range(0); ++i)
                emit canservice::ServiceProbe(service).port.read(frame);
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    countBytes(state, frame.size() * state.range(0));
}
BENCHMARK(receiveFrames)->Arg(10)->Arg(1000)->Arg(1000000);

void receiveWithDiagnostics(benchmark::State &state)
{
    const QByteArray frame = receivepath::climateFrame();
    canservice::SimpleService service;
    theHost->listenTo(service);
    QuietHost::setDiagnostics(true);
    for (auto _ : state)
        emit canservice::ServiceProbe(service).port.read(frame);
    QuietHost::setDiagnostics(false);
    countBytes(state, kFrameSize);
}
BENCHMARK(receiveWithDiagnostics);

#define PLAIN_LINE(function, number)                                                               \
    QMessageLogger("simpleservice", number, function).debug()                                      \
        << "[DBG]" << syscall(SYS_gettid) << (function) << (number) << "--"

// The lines of the frame above as a plain stream writes them, without the work that they tell of.
void plainLines(benchmark::State &state)
{
    constexpr auto *kReceive = "void canservice::SimpleService::onDataReady(QByteArray)";
    constexpr auto *kDispatch = "void canservice::SimpleService::dispatchEvent(int, QByteArray&)";
    const QByteArray frame = receivepath::climateFrame();
    const QByteArray payload = frame.mid(3, 10);
    QuietHost::setDiagnostics(true);
    for (auto _ : state) {
        PLAIN_LINE(kReceive, 13) << canservice::ConfigManager::instance()->getPluginFullPath();
        PLAIN_LINE(kReceive, 14) << frame.toHex();
        for (int byte = 0; byte < kFrameSize; ++byte)
            PLAIN_LINE(kReceive, 21) << 4;
        PLAIN_LINE(kDispatch, 46) << 33 << payload.toHex();
    }
    QuietHost::setDiagnostics(false);
    countBytes(state, kFrameSize);
}
BENCHMARK(plainLines);

// From the file to the first start; what comes after is not timed.
void load(benchmark::State &state, const char *file, void (*start)(QObject *))
{
    for (auto _ : state) {
        QPluginLoader loader(QString::fromLocal8Bit(file));
        loader.setLoadHints({}); // By default a library stays in the process when it is unloaded.
        const auto begin = Clock::now();
        QObject *plugin = loader.instance();
        if (plugin)
            start(plugin);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
        if (!plugin || !loader.unload()) {
            state.SkipWithError(qPrintable(loader.errorString()));
            return;
        }
    }
}
BENCHMARK_CAPTURE(load, service, SERVICE_FILE, [](QObject *plugin) {
    qobject_cast<CanServiceBase *>(plugin)->start();
})->UseManualTime();
BENCHMARK_CAPTURE(load, sixTimers, SIX_TIMERS_FILE, [](QObject *plugin) {
    QMetaObject::invokeMethod(plugin, "start");
})->UseManualTime();

} // namespace

int main(int argc, char **argv)
{
    QuietHost host;
    theHost = &host;
    canservice::ConfigManager::instance()->setPluginFullPath(QStringLiteral(SERVICE_FILE));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
