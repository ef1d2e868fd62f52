// What the plug-in costs a host over a real serial path: a terminal device, the stand-in's port and
// the event loop.
//
//   serialpath [SECONDS]      of each measurement; 20
//
// Prints the delay from the last byte at the port to the host's slot, the wake-ups a second and the
// memory of the process's own.
#include "protocol/frame.h"

#include <canservicebase.h>
#include <serialport.h>

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QPluginLoader>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kFrameSize = 14; // Of a climate frame.
constexpr qint64 kSecond = 1'000'000'000;
constexpr qint64 kByteTime = kSecond * 10 / canbox::kBaudRate;
constexpr qint64 kFrameTime = kFrameSize * kByteTime;

qint64 now() // ns
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * kSecond + time.tv_nsec;
}

void sleepUntil(qint64 time)
{
    const timespec due{static_cast<time_t>(time / kSecond), static_cast<long>(time % kSecond)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) != 0) {
    }
}

/// The box, in a process of its own: what it costs is not the host's.
class Box
{
public:
    explicit Box(int frames)
        : mFrames(frames)
    {
        termios raw{};
        cfmakeraw(&raw);
        char name[64] = {};
        // What both processes see: when each frame's last byte went to the port.
        void *shared = mmap(nullptr, sizeof(qint64) * static_cast<size_t>(frames),
                            PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (shared == MAP_FAILED || openpty(&mMaster, &mSlave, name, &raw, nullptr) != 0) {
            std::perror("no terminal device for the measurement");
            std::exit(1);
        }
        mSent = static_cast<qint64 *>(shared);
        mDevice = QString::fromLocal8Bit(name);
    }

    QString device() const { return mDevice; }
    qint64 sentAt(int frame) const { return mSent[frame]; }

    /// Begins to send frames without a gap, \p chunk bytes at a time, each when the line would have
    /// brought it.
    void sendFrames(int chunk)
    {
        mProcess = fork();
        if (mProcess != 0)
            return;
        const QByteArray frames[] = {
            frame(QByteArray::fromHex("44231012200014002100")),
            frame(QByteArray::fromHex("bbdcefed9f00ebff42ff")),
        };
        const qint64 begin = now() + kSecond / 100;
        for (int i = 0; i < mFrames; ++i) {
            for (int at = 0; at < kFrameSize; at += chunk) {
                sleepUntil(begin + i * kFrameTime + (at + chunk) * kByteTime);
                mSent[i] = now();
                if (::write(mMaster, frames[i % 2].constData() + at, static_cast<size_t>(chunk)) <
                    0)
                    _exit(1);
            }
            dropReceipts();
        }
        _exit(0);
    }

    /// Answers nothing but with its version, which makes the service select the car each second.
    void sendVersion()
    {
        const QByteArray version = canbox::buildFrame(canbox::Inbound::Version, {0x56, 0x31});
        if (::write(mMaster, version.constData(), static_cast<size_t>(version.size())) < 0)
            std::perror("the version does not go out");
    }

    void wait()
    {
        int status = 0;
        waitpid(mProcess, &status, 0);
        if (status != 0) {
            std::fputs("The box could not send its frames.\n", stderr);
            std::exit(1);
        }
    }

private:
    static QByteArray frame(const QByteArray &payload)
    {
        return canbox::buildFrame(static_cast<quint8>(canbox::Inbound::Climate), payload);
    }

    // What nobody fetches would stop the line.
    void dropReceipts()
    {
        int waiting = 0;
        char bytes[256];
        while (ioctl(mMaster, FIONREAD, &waiting) == 0 && waiting > 0)
            if (::read(mMaster, bytes, sizeof bytes) <= 0)
                _exit(1);
    }

    const int mFrames;
    int mMaster = -1;
    int mSlave = -1; // Held open, or the device hangs up while the host has not opened it.
    QString mDevice;
    qint64 *mSent = nullptr;
    pid_t mProcess = -1;
};

/// Two processes that do nothing, as fast as they can.
class BusyLoops
{
public:
    BusyLoops()
    {
        for (pid_t &process : mProcesses) {
            process = fork();
            while (process == 0) {
                volatile int nothing = 0;
                ++nothing;
            }
        }
    }
    ~BusyLoops()
    {
        for (const pid_t process : mProcesses) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
    }

private:
    pid_t mProcesses[2];
};

void runFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// How often the process has given up the processor because it had nothing to do.
long wakeUps()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_nvcsw;
}

// What the process has written to in a file's mapping, in KiB: the rest is the file's, shared by
// all.
int privateMemory(const QString &file)
{
    QFile maps(QStringLiteral("/proc/self/smaps"));
    if (!maps.open(QIODevice::ReadOnly))
        return -1;
    int size = 0;
    bool isOurs = false;
    for (QByteArray line = maps.readLine(); !line.isEmpty(); line = maps.readLine()) {
        if (line.contains('-') && !line.startsWith("Vm"))
            isOurs = line.trimmed().endsWith(QFile::encodeName(file));
        else if (isOurs && line.startsWith("Anonymous:"))
            size += line.simplified().split(' ').at(1).toInt();
    }
    return size;
}

class Host
{
public:
    Host(Box &box, int seconds)
        : mBox(box)
        , mSeconds(seconds)
    {
        canservice::SerialPort::setDefaultDevice(box.device());
        const size_t before = mallinfo2().uordblks;
        QPluginLoader loader(QStringLiteral(SERVICE_FILE));
        mService = qobject_cast<CanServiceBase *>(loader.instance());
        if (!mService) {
            std::fprintf(stderr, "%s\n", qPrintable(loader.errorString()));
            std::exit(1);
        }
        const size_t after = mallinfo2().uordblks;
        std::printf("private memory: %d KiB of the plug-in's file, %zu KiB of heap with its port\n",
                    privateMemory(loader.fileName()), (after - before) / 1024);
        QObject::connect(mService, &CanServiceBase::acStatusChanged,
                         [this] { mHeard.push_back(now()); });
    }

    /// \returns wake-ups a second.
    double measureWakeUps()
    {
        runFor(500); // What was on its way is through.
        const long before = wakeUps();
        runFor(mSeconds * 1000);
        // One of them ends the measurement.
        return static_cast<double>(wakeUps() - before - 1) / mSeconds;
    }

    void measureStates()
    {
        const char *kLine = "%-52s %8.2f\n";
        std::printf("\n%-52s %8s\n", "wake-ups a second", "");
        std::printf(kLine, "loaded, not started", measureWakeUps());
        mService->start();
        std::printf(kLine, "knocking: one knock in two seconds", measureWakeUps());
        mBox.sendVersion();
        std::printf(kLine, "link up, no news: the car is selected each second", measureWakeUps());
        mBox.sendFrames(kFrameSize);
        const double full = measureWakeUps();
        finish();
        std::printf(kLine, "line full, a chunk a frame: 274.3 chunks a second", full);
    }

    /// The frames come byte by byte.
    void measureDelay(const char *name)
    {
        mHeard.clear();
        mBox.sendFrames(1);
        runFor(mSeconds * 1000);
        finish();
        std::vector<qint64> delays;
        for (size_t i = 0; i < mHeard.size(); ++i)
            delays.push_back(mHeard[i] - mBox.sentAt(static_cast<int>(i)));
        std::sort(delays.begin(), delays.end());
        const auto at = [&delays](double share) {
            const auto last = static_cast<double>(delays.size() - 1);
            return static_cast<double>(delays[static_cast<size_t>(share * last)]) / 1000;
        };
        std::printf("%-30s %8zu %8.0f %8.0f %8.0f %8.0f\n", name, delays.size(), at(0.5), at(0.99),
                    at(0.999), at(1));
    }

private:
    // The frames end after the measurement of what they cost.
    void finish()
    {
        runFor(2000);
        mBox.wait();
        runFor(500);
    }

    Box &mBox;
    const int mSeconds;
    CanServiceBase *mService = nullptr;
    std::vector<qint64> mHeard;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 20;
    if (argc > 2 || seconds < 1 || seconds > 600) {
        std::fputs("usage: serialpath [SECONDS], 1 to 600\n", stderr);
        return 2;
    }
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Box box(static_cast<int>((seconds + 1) * kSecond / kFrameTime));
    Host host(box, seconds);
    host.measureStates();
    std::printf("\n%-30s %8s %8s %8s %8s %8s\n", "delay to the slot, us", "frames", "p50", "p99",
                "p99.9", "max");
    host.measureDelay("at line rate");
    const BusyLoops loops;
    host.measureDelay("beside two busy loops");
    return 0;
}
