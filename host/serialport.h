// The serial line as a head unit's host offers it.
#pragma once

#include "hostexport.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class QSerialPort;

namespace canservice {

/// Sees what every port of the process reads and writes: for traces and tests.
class CANSERVICE_EXPORT SerialMonitor : public QObject
{
    Q_OBJECT

public:
    static SerialMonitor *instance(); ///< The one of the process.

signals:
    /// Bytes from the device, before the port's owner sees them.
    void received(const QByteArray &bytes);
    /// One call of SerialPort::writeData().
    /// \param bytes what is written.
    /// \param flag as the caller gave it.
    /// \param delivered false when the port dropped the bytes.
    void written(const QByteArray &bytes, bool flag, bool delivered);
    /// The device was opened, could not be opened, or was lost; \p message says so in plain words.
    void connectionChanged(bool open, const QString &message);
};

/// A serial device: 8 data bits, no parity, 1 stop bit, no flow control.
///
/// A device that cannot be opened or that fails is closed at once and tried again every second, for
/// ever: one log line when it is lost, one when it is back.
class CANSERVICE_EXPORT SerialPort : public QObject
{
    Q_OBJECT

public:
    explicit SerialPort(QObject *parent = nullptr); ///< A closed port.
    ~SerialPort() override; ///< Closes the device, but in a child of the process that opened it.

    /// The device that open() takes for an empty name. Empty by default: no device.
    static void setDefaultDevice(const QString &device);
    static QString defaultDevice(); ///< The device that open() takes for an empty name.

    /// Opens \p device, a path or a name below /dev, and drops what it had received before. A link
    /// is followed at every try.
    /// \returns whether the device is open now; if not, and it has a name, the port keeps trying.
    bool open(QString device, int baudRate);

    /// Hands \p bytes to the device before it returns. \p flag has no meaning here.
    /// \returns false when the port is closed or the device has stopped taking bytes: all of them
    ///          are dropped.
    bool writeData(const QByteArray &bytes, bool flag);

signals:
    void read(QByteArray bytes); ///< Bytes from the device, in chunks of any size.

private:
    bool tryOpen();
    void retry();
    void onReadyRead();
    void onError();
    void reportFailure(const QString &reason);

    QString mPath;
    std::unique_ptr<QSerialPort> mDevice;
    QTimer mRetryTmr;
    bool mStalled = false;
    const qintptr mProcess; // Its number.
    // A service holds its port by value, and the library that it meets may be another than the one
    // that it is built with: room for a port with more members.
    [[maybe_unused]] void *mRoom[22];
};

} // namespace canservice
