// A scenario on a session of its own, as `play` and `tour` show it.
#pragma once

#include "bench/commands/junit.h"
#include "bench/commands/sessionrun.h"
#include "bench/language/steps.h"

namespace bench {

/// Plays \p scenario and tells how it ended, under the \p name that a person knows it by.
/// \param speed divides the scenario's own times. \param report gets its parts, if there is one.
/// \returns the exit code.
int perform(const Scenario &scenario, const QString &name, double speed, RunOptions options,
            ReportSuite *report = nullptr);

} // namespace bench
