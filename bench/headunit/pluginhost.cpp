#include "pluginhost.h"

#include "pluginfile.h"

#include <configmanager.h>

#include <QMetaMethod>

namespace bench {

PluginHost::~PluginHost() { unload(); }

QString PluginHost::load(const QString &file)
{
    unload();
    const PluginFile plugin = examinePlugin(file);
    QString problem = plugin.problem;
    if (problem.isEmpty()) {
        canservice::ConfigManager::instance()->setPluginFullPath(plugin.path);
        mLoader.setFileName(plugin.path);
        QObject *root = mLoader.instance();
        mService = qobject_cast<CanServiceBase *>(root);
        if (!root)
            problem = mLoader.errorString();
        else if (!mService)
            problem = QStringLiteral("its object does not offer the interface '%1'")
                          .arg(QLatin1String(qobject_interface_iid<CanServiceBase *>()));
    }
    if (mService)
        listen();
    else
        mLoader.unload();
    return problem.isEmpty() ? QString()
                             : QStringLiteral("%1 cannot be loaded: %2").arg(plugin.path, problem);
}

void PluginHost::unload()
{
    if (!mService)
        return;
    mService = nullptr;
    mLoader.unload();
}

void PluginHost::listen()
{
    forward(&CanServiceBase::notifyCanbusStatus);
    forward(&CanServiceBase::sigVersionData);
    forward(&CanServiceBase::acStatusChanged);
    forward(&CanServiceBase::sigRadarChanged);
    forward(&CanServiceBase::doorChanged);
    forward(&CanServiceBase::drivingDataChanged);
    forward(&CanServiceBase::tireDataChanged);
    forward(&CanServiceBase::tireAlert);
    forward(&CanServiceBase::batteryVoltageChange);
    forward(&CanServiceBase::sigAmbientChanged);
    forward(&CanServiceBase::unitDataChanged);
    forward(&CanServiceBase::keyEvent);
}

template <typename... Arguments>
void PluginHost::forward(void (CanServiceBase::*signal)(Arguments...))
{
    const QString name = QString::fromLatin1(QMetaMethod::fromSignal(signal).name());
    connect(mService, signal, this,
            [this, name](Arguments... arguments) { emit event(name, {QVariant(arguments)...}); });
}

} // namespace bench
