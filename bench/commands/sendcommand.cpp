// The client of a control channel.
#include "bench/commands/commandline.h"
#include "bench/language/control.h"
#include "bench/screen/output.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace bench {

namespace {

/// A connection that waits.
class Connection
{
public:
    Connection() = default;
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection()
    {
        if (mDescriptor >= 0)
            close(mDescriptor);
    }

    bool open(const QByteArray &path)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        if (path.size() >= static_cast<int>(sizeof address.sun_path)) {
            errno = ENAMETOOLONG;
            return false;
        }
        std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
        mDescriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        return mDescriptor >= 0 &&
               connect(mDescriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    }

    bool write(const QByteArray &bytes)
    {
        for (int done = 0; done < bytes.size();) {
            const ssize_t count = ::send(mDescriptor, bytes.constData() + done,
                                         static_cast<size_t>(bytes.size() - done), MSG_NOSIGNAL);
            if (count < 0 && errno != EINTR)
                return false;
            done += static_cast<int>(qMax<ssize_t>(count, 0));
        }
        return true;
    }

    /// The next line with its line end; nothing at the end.
    QByteArray readLine()
    {
        int end = 0;
        while ((end = mBytes.indexOf('\n')) < 0) {
            char buffer[4096];
            const ssize_t count = read(mDescriptor, buffer, sizeof buffer);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return {};
            mBytes.append(buffer, static_cast<int>(count));
        }
        const QByteArray line = mBytes.left(end + 1);
        mBytes.remove(0, end + 1);
        return line;
    }

private:
    int mDescriptor = -1;
    QByteArray mBytes;
};

void show(const QByteArray &line)
{
    standardOutput().line(QString::fromUtf8(line.chopped(1)));
    standardOutput().flush();
}

// One line and its answer; the events before it belong to an earlier one.
int send(Connection &connection, const QByteArray &step)
{
    const bool isSent = connection.write(step + '\n');
    for (;;) {
        const QByteArray line = isSent ? connection.readLine() : QByteArray();
        if (line.isEmpty())
            return fail(QStringLiteral("the bench has ended before it answered"));
        show(line);
        if (line.startsWith("ok"))
            return Done;
        if (line.startsWith("error:"))
            return WrongUsage;
        if (line.startsWith("failed:"))
            return ExpectationFailed;
    }
}

} // namespace

int sendCommand(const QStringList &arguments)
{
    CommandLine line(
        "send", "PATH [STEP]...",
        "Sends steps, of the forms that 'canbench play --syntax' lists, to a bench that was\n"
        "started with --control PATH, and shows its answers; without any, those of the\n"
        "standard input, a line each. 'get NAME' asks for a value, 'events' shows what\n"
        "happens from then on. The first step that goes wrong is the last. Exit code 2: it\n"
        "is not possible there; 3: an expectation was not met.",
        "canbench send /tmp/control 'set door.rear open' 'expect door.rear == open'\n"
        "canbench send /tmp/control 'get climate.left'\n"
        "canbench send /tmp/control events");
    line.addPositionalArgument("PATH", "The socket.");
    line.addPositionalArgument("STEP", "A step, quoted as one argument.");
    if (const auto code = line.read(arguments, 1000))
        return *code;
    const QStringList words = line.positionalArguments();
    if (words.value(0).isEmpty())
        return line.complain("name the socket that --control has made");
    for (const QString &step : words.mid(1))
        if (step.contains('\n') || step.toUtf8().size() > Control::kMaxLine)
            return line.complain("a step is one line of at most 64 KiB");

    Connection connection;
    if (!connection.open(QFile::encodeName(words.first())))
        return fail(QStringLiteral("cannot reach a bench at '%1': %2")
                        .arg(words.first(), qt_error_string(errno)));
    bool wantsEvents = false;
    for (const QString &step : words.mid(1)) {
        wantsEvents = wantsEvents || step.trimmed() == QLatin1String("events");
        if (const int code = send(connection, step.toUtf8()))
            return code;
    }
    QFile input;
    if (words.size() == 1 && !input.open(stdin, QIODevice::ReadOnly))
        return fail(QStringLiteral("cannot read the standard input: %1").arg(input.errorString()));
    while (words.size() == 1) {
        QByteArray step = input.readLine(Control::kMaxLine + 2);
        if (step.isEmpty())
            break;
        if (step.endsWith('\n'))
            step.chop(1);
        else if (step.size() > Control::kMaxLine)
            return fail(QStringLiteral("a step is one line of at most 64 KiB"));
        wantsEvents = wantsEvents || step.trimmed() == "events";
        if (const int code = send(connection, step))
            return code;
    }
    while (wantsEvents) {
        const QByteArray event = connection.readLine();
        if (event.isEmpty())
            break;
        show(event);
    }
    return Done;
}

} // namespace bench
