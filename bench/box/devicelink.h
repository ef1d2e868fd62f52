// A name of a person's choice for a device.
#pragma once

#include <QString>

namespace bench {

/// A symbolic link to the terminal of an embedded box, which is gone with this object.
class DeviceLink
{
public:
    DeviceLink() = default;
    DeviceLink(const DeviceLink &) = delete;
    DeviceLink &operator=(const DeviceLink &) = delete;
    ~DeviceLink();

    /// Makes \p path lead to \p target, the path of a PseudoTerminal. It takes the place of such a
    /// link that leads nowhere any more, and of nothing else.
    /// \returns an empty text, or what is wrong and what to do about it.
    QString create(const QString &path, const QString &target);

private:
    QByteArray mPath;
    QByteArray mTarget;
};

} // namespace bench
