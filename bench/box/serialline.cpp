#include "bench/box/serialline.h"

#include "protocol/frame.h"

#include <cerrno>
#include <unistd.h>

namespace bench {

SerialLine::~SerialLine()
{
    blockSignals(true);
    SerialLine::unplug();
}

int SerialLine::otherSpeed() const { return canbox::kBaudRate; }

void SerialLine::attach(int descriptor)
{
    mDescriptor = descriptor;
    mNotifier = new QSocketNotifier(mDescriptor, QSocketNotifier::Read, this);
    mNotifier->setEnabled(mReading);
    connect(mNotifier, &QSocketNotifier::activated, this, [this] { onReadable(); });
    emit pluggedChanged(true);
}

void SerialLine::unplug()
{
    if (!isPlugged())
        return;
    // Later: unplug() may be called while this notifier reports bytes.
    mNotifier->setEnabled(false);
    mNotifier->deleteLater();
    mNotifier = nullptr;
    close(mDescriptor);
    mDescriptor = -1;
    emit pluggedChanged(false);
}

bool SerialLine::fail(const QString &what)
{
    mError = QStringLiteral("%1: %2").arg(what, qt_error_string(errno));
    return false;
}

// At another speed, the stop bits are not where they are looked for.
QByteArray SerialLine::asHeard(const QByteArray &bytes) const
{
    return otherSpeed() == canbox::kBaudRate ? bytes : QByteArray(bytes.size(), '\0');
}

void SerialLine::write(const QByteArray &bytes)
{
    if (!isPlugged())
        return;
    const QByteArray heard = asHeard(bytes);
    const ssize_t written =
        ::write(mDescriptor, heard.constData(), static_cast<size_t>(heard.size()));
    mLostBytes += bytes.size() - qMax<ssize_t>(written, 0);
}

void SerialLine::setReading(bool on)
{
    mReading = on;
    if (mNotifier)
        mNotifier->setEnabled(on);
}

void SerialLine::onReadable()
{
    char buffer[4096];
    const ssize_t size = read(mDescriptor, buffer, sizeof buffer);
    if (size > 0)
        emit received(asHeard(QByteArray(buffer, static_cast<int>(size))));
    else if (size == 0 || (errno != EAGAIN && errno != EINTR))
        onGone();
}

} // namespace bench
