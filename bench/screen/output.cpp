#include "bench/screen/output.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr int kBufferSize = 64 * 1024;

// What is lost here is told by the stream itself.
class StandardOutputDevice : public QIODevice
{
public:
    StandardOutputDevice() { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *bytes, qint64 size) override
    {
        standardOutput().bytes(std::string_view(bytes, static_cast<std::size_t>(size)));
        return size;
    }
};

} // namespace

Output::Output(int descriptor)
    : mDescriptor(descriptor)
{
    mBuffer.reserve(kBufferSize);
}

void Output::line(const QString &text) { bytes(printable(text).toUtf8() + '\n'); }

void Output::text(const QString &text)
{
    for (const QStringRef &part : text.splitRef(QLatin1Char('\n')))
        line(part.toString());
}

void Output::bytes(std::string_view bytes)
{
    if (isLost())
        return;
    mBuffer.append(bytes.data(), static_cast<int>(bytes.size()));
    if (mDescriptor == STDERR_FILENO) {
        standardOutput().flush();
        flush();
    } else if (mBuffer.size() >= kBufferSize) {
        flush();
    }
}

bool Output::flush()
{
    int done = 0;
    while (done < mBuffer.size() && !isLost()) {
        const ssize_t count = ::write(mDescriptor, mBuffer.constData() + done,
                                      static_cast<size_t>(mBuffer.size() - done));
        if (count >= 0) {
            done += static_cast<int>(count);
        } else if (errno == EAGAIN) { // Whoever shares the stream has made it so.
            pollfd room{mDescriptor, POLLOUT, 0};
            poll(&room, 1, -1);
        } else if (errno != EINTR) {
            lose(errno);
        }
    }
    mBuffer.resize(0);
    return !isLost();
}

void Output::lose(int error)
{
    mError = error;
    if (error == EPIPE) {
        static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
        static_cast<void>(std::raise(SIGPIPE));
    } else if (mDescriptor == STDOUT_FILENO) {
        standardError().line(QStringLiteral("canbench: standard output: %1; the rest is lost")
                                 .arg(qt_error_string(error)));
    }
}

int Output::finish(int code)
{
    flush();
    if (mError == EPIPE)
        return 128 + SIGPIPE;
    return isLost() && code == 0 ? 1 : code;
}

// Both are there until the process is gone, for messages at its very end.
Output &standardOutput()
{
    static auto *const output = new Output(STDOUT_FILENO);
    return *output;
}

QIODevice &standardOutputDevice()
{
    static StandardOutputDevice device;
    return device;
}

Output &standardError()
{
    static auto *const output = new Output(STDERR_FILENO);
    return *output;
}

void prepareStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            // The lowest number that is free, with the wrong direction: using it fails as before.
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    // A write tells it as well, and only the end of our own output is our end.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context,
                              const QString &message) {
        standardError().bytes(qFormatLogMessage(type, context, printable(message)).toUtf8() + '\n');
    });
}

int finishStandardStreams(int code)
{
    return standardError().finish(standardOutput().finish(code));
}

} // namespace bench
