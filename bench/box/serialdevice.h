// A real serial device.
#pragma once

#include "bench/box/serialline.h"

#include <QTimer>

namespace bench {

/// A serial device at 38400 baud, 8 data bits, no parity, 1 stop bit, no flow control, and ours
/// alone. When it goes, it is looked for four times a second until it is back.
class SerialDevice : public SerialLine
{
    Q_OBJECT

public:
    /// Does not open it yet.
    explicit SerialDevice(const QString &path, QObject *parent = nullptr);
    ~SerialDevice() override;

    QString path() const override { return mPath; }
    /// Opens the device and drops what it had received before.
    bool plug() override;
    void unplug() override;

protected:
    void onGone() override;

private:
    const QString mPath;
    QTimer mRetryTmr;
};

} // namespace bench
