// Whether a file is a plug-in that this host can load.
#pragma once

#include <QJsonObject>
#include <QString>

namespace bench {

/// The plug-in of this build, from where the program lies.
QString defaultPluginFile();

/// What was found out about a file.
struct PluginFile
{
    QString path;         ///< Absolute.
    QString problem;      ///< Why it cannot be loaded, for a person; empty if it can.
    QJsonObject metaData; ///< As the file has it; empty if there is none.
};

/// Looks at \p file from the outside to the inside: file, library, architecture, metadata, symbols.
/// It loads the library at the end, but makes no service.
PluginFile examinePlugin(const QString &file);

} // namespace bench
