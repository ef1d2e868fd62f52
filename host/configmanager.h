// What the host knows of its own installation.
#pragma once

#include "hostexport.h"

#include <QString>

namespace canservice {

class CANSERVICE_EXPORT ConfigManager
{
public:
    static ConfigManager *instance();

    /// The file that the running service was loaded from.
    QString getPluginFullPath();
    void setPluginFullPath(const QString &path);

private:
    ConfigManager() = default;

    QString mPluginFullPath;
};

} // namespace canservice
