// Loading a plug-in where it can do no harm.
#pragma once

#include <QString>

namespace bench {

/// What came of it.
struct TrialLoad
{
    QString problem;   ///< Why it failed, for a person; empty if it did not.
    QString className; ///< Of the service.
};

/// Loads \p file in a child process, which has no serial device, and makes its service there: a
/// damaged file ends the child, and what takes longer than ten seconds is ended.
TrialLoad tryLoading(const QString &file);

} // namespace bench
