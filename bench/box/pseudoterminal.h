// A serial device without a cable: the box's end of a pseudo terminal.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace bench {

/// The master side of a pseudo terminal in raw mode, plugged in from construction on. The path that
/// a host opens stays the same when the device is unplugged and plugged in again. It is the entry
/// of an open file in /proc, which is gone with the process, whatever ends it: nothing has to be
/// cleaned up.
class PseudoTerminal : public QObject
{
    Q_OBJECT

public:
    explicit PseudoTerminal(QObject *parent = nullptr);
    ~PseudoTerminal() override;

    /// The path for the host, in this process or another one of the same user: a link to the device
    /// while it is plugged in, and to none while it is not.
    QString path() const;
    bool isPlugged() const { return mMaster >= 0; }
    /// Why the latest plug() failed; empty when it did not.
    QString errorString() const { return mError; }

    /// Makes a new device. \returns false, with errorString(), when the system has none left.
    bool plug();
    /// Takes the device away, as when the cable of an adapter is pulled: a host that has it open
    /// gets a hang-up. Bytes on their way are lost.
    void unplug();

    /// Hands bytes to the host. What the host does not fetch, about 4 KiB, is kept; what is beyond
    /// that is lost, as on a line without flow control.
    void write(const QByteArray &bytes);
    qint64 lostBytes() const { return mLostBytes; }

    /// Whether bytes from the host are fetched; while they are not, the host's writes pile up.
    void setReading(bool on);

signals:
    void received(const QByteArray &bytes);

private:
    bool open();
    bool fail(const char *what);
    void onReadable();

    // What the path names: the device, or a socket, which nobody can open by a path.
    int mDoor = -1;
    int mClosedDoor = -1;
    int mMaster = -1;
    // Held open, because the master reports an endless error while nobody has the slave side open;
    // and beyond unplug(), because the system gives the number of a closed device to the next one,
    // of any program, which would be busy while the host has not given back its lock.
    int mSlave = -1;
    bool mReading = true;
    QSocketNotifier *mNotifier = nullptr;
    QString mError;
    qint64 mLostBytes = 0;
};

} // namespace bench
