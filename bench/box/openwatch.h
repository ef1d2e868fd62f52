// Who opens a device.
#pragma once

#include <QObject>

namespace bench {

/// Tells when anybody opens and closes a device.
class OpenWatch : public QObject
{
    Q_OBJECT

public:
    explicit OpenWatch(QObject *parent = nullptr);
    ~OpenWatch() override;

    /// Watches \p device from now on instead of the one before. Where the system has no watch left,
    /// nothing is told.
    void watch(const QString &device);
    /// Tells what has happened by now, which otherwise waits for its turn in the event loop.
    void look();

signals:
    void opened();
    void closed();

private:
    int mDescriptor = -1;
    int mWatch = -1;
};

} // namespace bench
