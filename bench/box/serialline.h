// One end of a serial line.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

namespace bench {

/// Carries bytes between the event loop and whoever has the other end, without flow control. What
/// the line is made of is for its kinds to say.
class SerialLine : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~SerialLine() override;

    /// What a program opens to have the other end, or the device that leads there.
    virtual QString path() const = 0;
    bool isPlugged() const { return mDescriptor >= 0; }
    /// Why the latest plug() failed; empty when it did not.
    QString errorString() const { return mError; }

    /// Connects the line. \returns false, with errorString(), when that is not possible.
    virtual bool plug() = 0;
    /// Interrupts the line. Bytes on their way are lost.
    virtual void unplug();

    /// The speed of the other end in baud, where that can be known; else ours.
    virtual int otherSpeed() const;

    /// Hands bytes to the other end. What it does not fetch, about 4 KiB, is kept; what is beyond
    /// that is lost.
    void write(const QByteArray &bytes);
    qint64 lostBytes() const { return mLostBytes; }

    /// Whether bytes are fetched; while they are not, the other end's writes pile up.
    void setReading(bool on);

signals:
    void received(const QByteArray &bytes);
    void pluggedChanged(bool isPlugged);

protected:
    /// Reads and writes \p descriptor from now on, which is not to block, and closes it at the end.
    void attach(int descriptor);
    int descriptor() const { return mDescriptor; }
    /// The other end has gone.
    virtual void onGone() { unplug(); }
    /// Keeps the system's latest error as errorString(). \returns false.
    bool fail(const QString &what);
    void clearError() { mError.clear(); }

private:
    QByteArray asHeard(const QByteArray &bytes) const;
    void onReadable();

    int mDescriptor = -1;
    bool mReading = true;
    QSocketNotifier *mNotifier = nullptr;
    QString mError;
    qint64 mLostBytes = 0;
};

} // namespace bench
