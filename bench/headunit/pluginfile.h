// Whether a file is a plug-in that this host can load.
#pragma once

#include "bench/headunit/elffile.h"

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
    ElfFile tables;       ///< What could be read of it, also for another machine.
    QJsonObject metaData; ///< As the file has it; empty if there is none.
    QString className;    ///< Of its service, if it can be loaded.
};

/// Looks at \p file from the outside to the inside: file, library, architecture, metadata, symbols.
/// At the end it is loaded, and its service made, in a child process.
PluginFile examinePlugin(const QString &file);

/// Loads \p file in a child process, which has no serial device, and makes its service there: a
/// damaged file ends the child, and what takes longer than ten seconds is ended.
/// \param className gets that of the service. \returns an empty text, or why it failed.
QString tryLoading(const QString &file, QString *className);

/// The name of the machine that a library is built for, as "64-bit ARM".
QString machineName(int machine);

/// How the symbols that a library asks of the host and offers to it differ from those of the frozen
/// contract between the two, a line each; empty for no difference. An optimized build has none.
QStringList contractDifferences(const ElfFile &library);

} // namespace bench
