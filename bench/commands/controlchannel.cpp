#include "bench/commands/controlchannel.h"

#include "bench/commands/commandline.h"
#include "bench/screen/outlet.h"
#include "bench/screen/output.h"

#include <QFile>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace bench {

namespace {

constexpr int kMostClients = 64;
constexpr int kMostUnread = 1024 * 1024; // bytes
constexpr int kMuchUnread = 64 * 1024;   // bytes

bool makeAddress(const QByteArray &path, sockaddr_un *address)
{
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.isEmpty() || path.size() >= static_cast<int>(sizeof address->sun_path))
        return false;
    std::memcpy(address->sun_path, path.constData(), static_cast<size_t>(path.size()));
    return true;
}

bool bindTo(int descriptor, const sockaddr_un &address)
{
    const mode_t before = umask(S_IXUSR | S_IRWXG | S_IRWXO);
    const int result =
        bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    umask(before);
    return result == 0;
}

// A socket at which nobody listens any more.
bool isStale(const QByteArray &path, const sockaddr_un &address)
{
    struct stat found;
    if (lstat(path.constData(), &found) != 0 || !S_ISSOCK(found.st_mode))
        return false;
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const bool isRefused =
        connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 &&
        errno == ECONNREFUSED;
    ::close(probe);
    return isRefused;
}

// It has closed both directions, not only the one to us.
bool hasGone(int descriptor)
{
    pollfd state{descriptor, 0, 0};
    return poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR));
}

} // namespace

struct ControlChannel::Client
{
    Client(const Stage &stage, int theDescriptor, int input)
        : descriptor(theDescriptor)
        , control(stage)
        , lines(input, Control::kMaxLine)
        , outlet(descriptor >= 0 ? descriptor : STDOUT_FILENO)
    {
    }
    ~Client()
    {
        if (descriptor >= 0)
            ::close(descriptor);
    }

    // A batch from standard input may have more answers than anybody reads at once: it waits.
    bool isBehind() const { return descriptor < 0 && outlet.unread() > kMuchUnread && !isMute; }
    void proceed() { lines.setPaused(isDropped || control.isBusy() || isBehind()); }
    QByteArray mute()
    {
        isMute = true;
        QTimer::singleShot(0, &lines, [this] { proceed(); });
        return outlet.takeUnread();
    }

    int descriptor; ///< Of the socket; -1 for standard output.
    Control control;
    LineInput lines;
    Outlet outlet;
    bool hasEnded = false;
    bool isDropped = false;
    bool isMute = false; ///< Standard output is lost; its input still counts.
};

ControlChannel::ControlChannel(const Stage &stage, QObject *parent)
    : QObject(parent)
    , mStage(stage)
{
}

ControlChannel::~ControlChannel()
{
    close();
    for (const auto &client : mClients)
        if (client->descriptor < 0 && !client->isDropped)
            standardOutput().bytes(client->outlet.takeUnread());
}

void ControlChannel::close()
{
    struct stat found;
    if (!mPath.isEmpty() && lstat(mPath.constData(), &found) == 0 && found.st_dev == mDevice &&
        found.st_ino == mInode)
        unlink(mPath.constData());
    mPath.clear();
    mNotifier.reset();
    if (mDescriptor >= 0)
        ::close(mDescriptor);
    mDescriptor = -1;
}

QString ControlChannel::open(const QString &path)
{
    if (path != QLatin1String("-"))
        return listenAt(QFile::encodeName(path));
    Client &client = add(-1, STDIN_FILENO);
    connect(&client.lines, &LineInput::ended, this, &ControlChannel::ended);
    return {};
}

QString ControlChannel::listenAt(const QByteArray &path)
{
    const QString name = QFile::decodeName(path);
    sockaddr_un address;
    if (!makeAddress(path, &address))
        return QStringLiteral("the name of a socket has 1 to %1 bytes, not %2")
            .arg(sizeof address.sun_path - 1)
            .arg(path.size());
    mDescriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    bool isBound = mDescriptor >= 0 && bindTo(mDescriptor, address);
    if (!isBound && errno == EADDRINUSE && isStale(path, address)) {
        unlink(path.constData());
        isBound = bindTo(mDescriptor, address);
    }
    if (!isBound && errno == EADDRINUSE)
        return QStringLiteral("%1 exists; remove it or choose another name").arg(name);
    struct stat made;
    if (!isBound || lstat(path.constData(), &made) != 0 || listen(mDescriptor, SOMAXCONN) != 0)
        return QStringLiteral("cannot make the socket %1: %2").arg(name, qt_error_string(errno));
    mPath = path;
    mDevice = made.st_dev;
    mInode = made.st_ino;
    mNotifier = std::make_unique<QSocketNotifier>(mDescriptor, QSocketNotifier::Read);
    connect(mNotifier.get(), &QSocketNotifier::activated, this, &ControlChannel::onConnection);
    return {};
}

void ControlChannel::onConnection()
{
    const int descriptor = accept4(mDescriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor >= 0)
        add(descriptor, descriptor);
    // Who comes then waits until somebody goes.
    if (mClients.size() >= kMostClients || (descriptor < 0 && errno == EMFILE))
        mNotifier->setEnabled(false);
}

ControlChannel::Client &ControlChannel::add(int descriptor, int input)
{
    mClients.push_back(std::make_unique<Client>(mStage, descriptor, input));
    Client &client = *mClients.back();
    connect(&client.control, &Control::said, this, &ControlChannel::said);
    connect(&client.control, &Control::answered, this, [this, &client](const QString &answer) {
        if (client.isDropped)
            return drop(client);
        send(client, printable(answer).toUtf8() + '\n');
        // From the event loop, because the next line may be the last of the client.
        QTimer::singleShot(0, &client.lines, [&client] { client.proceed(); });
    });
    connect(&client.lines, &LineInput::line, this, [&client](const QByteArray &line) {
        client.lines.setPaused(true);
        client.control.take(line);
    });
    connect(&client.lines, &LineInput::tooLong, this, [&client] {
        client.lines.setPaused(true);
        client.control.takeTooLong();
    });
    connect(&client.lines, &LineInput::closed, this, [this, &client] {
        if (client.descriptor >= 0 && hasGone(client.descriptor))
            drop(client);
    });
    connect(&client.lines, &LineInput::ended, this, [this, &client] {
        client.hasEnded = true;
        if (client.outlet.unread() == 0 && !client.control.wantsEvents())
            drop(client);
    });
    connect(&client.outlet, &Outlet::drained, this, [this, &client] {
        if (client.hasEnded && !client.control.wantsEvents())
            drop(client);
        else if (client.descriptor < 0)
            QTimer::singleShot(0, &client.lines, [&client] { client.proceed(); });
    });
    connect(&client.outlet, &Outlet::failed, this, [this, &client] {
        if (client.descriptor >= 0)
            return drop(client);
        client.isMute = true;
        standardOutput().bytes(
            client.outlet.takeUnread()); // It meets the same error, and tells it.
        standardOutput().flush();
    });
    return client;
}

bool ControlChannel::hasListeners() const
{
    return std::any_of(mClients.begin(), mClients.end(), [](const auto &client) {
        return client->control.wantsEvents() && !client->isDropped;
    });
}

void ControlChannel::publish(const QByteArray &json)
{
    for (const auto &client : mClients)
        if (client->control.wantsEvents())
            send(*client, json);
}

void ControlChannel::send(Client &client, const QByteArray &bytes)
{
    if (client.isDropped || client.isMute)
        return;
    client.outlet.write(bytes);
    if (client.outlet.unread() <= kMostUnread)
        return;
    if (client.descriptor >= 0)
        return drop(client);
    client.mute();
    fail(QStringLiteral("nobody reads the answers on standard output; no more are given"));
}

// From the event loop, because whoever finds out is the client's own; and not before its step is
// done, so that no key stays pressed.
void ControlChannel::drop(Client &client)
{
    client.isDropped = true;
    client.lines.setPaused(true);
    QTimer::singleShot(0, this, &ControlChannel::sweep);
}

void ControlChannel::sweep()
{
    mClients.erase(std::remove_if(mClients.begin(), mClients.end(),
                                  [](const auto &client) {
                                      return client->isDropped && !client->control.isBusy();
                                  }),
                   mClients.end());
    if (mNotifier)
        mNotifier->setEnabled(true);
}

Printer printerFor(const QString &path, Printer::Format format, Printer::Sink sink)
{
    return path == QLatin1String("-") ? Printer(format, [](const QByteArray &) {})
                                      : Printer(format, std::move(sink));
}

} // namespace bench
