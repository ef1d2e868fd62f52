// What the host knows of its own installation.
#pragma once

#include "hostexport.h"

#include <QString>

namespace canservice {

/// What the host knows of its own installation.
class CANSERVICE_EXPORT ConfigManager
{
public:
    static ConfigManager *instance(); ///< The one of the process.

    /// The file that the running service was loaded from, empty by default. A service only logs it.
    QString getPluginFullPath();
    /// Tells the file that the running service was loaded from.
    void setPluginFullPath(const QString &path);

private:
    ConfigManager() = default;

    QString mPluginFullPath;
};

} // namespace canservice
