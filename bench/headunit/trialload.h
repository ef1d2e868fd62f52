// Loading a plug-in where it can do no harm.
#pragma once

#include <QString>

namespace bench {

/// Loads \p file in a child process, which has no serial device, and makes its service there: a
/// damaged file ends the child, and what takes longer than ten seconds is ended.
/// \param className gets that of the service. \returns an empty text, or why it failed.
QString tryLoading(const QString &file, QString *className);

} // namespace bench
