// The head unit's side of the plug-in.
#pragma once

#include <canservicebase.h>

#include <QObject>
#include <QPluginLoader>
#include <QVariant>

namespace bench {

/// Loads the plug-in from its file as a head unit does and listens to all of its signals. One at a
/// time in a process: the plug-in has one service.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~PluginHost() override;

    /// Loads \p file and makes the service, which opens its serial port now.
    /// \returns an empty text, or why it cannot be done.
    QString load(const QString &file);
    /// Destroys the service. Every start needs its stop before.
    void unload();

    /// Null while nothing is loaded.
    CanServiceBase *service() const { return mService; }

signals:
    /// One signal of the service.
    void event(const QString &name, const QVariantList &arguments);

private:
    void listen();
    template <typename... Arguments>
    void forward(void (CanServiceBase::*signal)(Arguments...));

    QPluginLoader mLoader;
    CanServiceBase *mService = nullptr;
};

} // namespace bench
