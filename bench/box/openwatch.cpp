#include "bench/box/openwatch.h"

#include <QFile>
#include <QSocketNotifier>

#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace bench {

OpenWatch::OpenWatch(QObject *parent)
    : QObject(parent)
    , mDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (mDescriptor < 0)
        return;
    auto *notifier = new QSocketNotifier(mDescriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { look(); });
}

OpenWatch::~OpenWatch()
{
    if (mDescriptor >= 0)
        close(mDescriptor);
}

void OpenWatch::watch(const QString &device)
{
    if (mWatch >= 0)
        inotify_rm_watch(mDescriptor, mWatch);
    mWatch =
        inotify_add_watch(mDescriptor, QFile::encodeName(device).constData(), IN_OPEN | IN_CLOSE);
}

void OpenWatch::look()
{
    char buffer[4096];
    const ssize_t size = read(mDescriptor, buffer, sizeof buffer);
    inotify_event event;
    for (ssize_t at = 0; at + static_cast<ssize_t>(sizeof event) <= size;
         at += static_cast<ssize_t>(sizeof event + event.len)) {
        std::memcpy(&event, buffer + at, sizeof event);
        if (event.wd != mWatch)
            continue; // Of a device before.
        if (event.mask & IN_OPEN)
            emit opened();
        if (event.mask & IN_CLOSE)
            emit closed();
    }
}

} // namespace bench
