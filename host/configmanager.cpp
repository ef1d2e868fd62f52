#include "configmanager.h"

namespace canservice {

ConfigManager *ConfigManager::instance()
{
    static ConfigManager manager;
    return &manager;
}

QString ConfigManager::getPluginFullPath() { return mPluginFullPath; }

void ConfigManager::setPluginFullPath(const QString &path) { mPluginFullPath = path; }

} // namespace canservice
