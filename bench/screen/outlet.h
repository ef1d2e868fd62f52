// Bytes for a reader that nobody waits for.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace bench {

/// The way to a socket or a standard stream, on which a write never waits: what the reader has no
/// room for is kept until it has. How much that may be is for the owner to say.
class Outlet : public QObject
{
    Q_OBJECT

public:
    /// \param descriptor stays its owner's, and others may share it: it is left as it is.
    explicit Outlet(int descriptor, QObject *parent = nullptr);
    ~Outlet() override;

    void write(const QByteArray &bytes);
    int unread() const { return mUnread.size(); }
    /// Hands over what is unread; it is not written here any more.
    QByteArray takeUnread();

signals:
    /// Everything is written.
    void drained();
    /// A write that did not go, for any reason but a lack of room. The bytes are still unread, and
    /// nothing more is written.
    void failed();

private:
    void push();
    qint64 writeSome() const;

    const int mDescriptor;
    const bool mIsSocket;
    const int mOwn; ///< Another way to the same pipe or terminal, or -1.
    QByteArray mUnread;
    QSocketNotifier mRoom; ///< While something is unread.
    bool mFailed = false;
};

} // namespace bench
