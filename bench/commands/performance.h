// A scenario on a session of its own, as `play` and `tour` show it.
#pragma once

#include "bench/commands/junit.h"
#include "bench/commands/lineinput.h"
#include "bench/commands/sessionrun.h"
#include "bench/language/steps.h"

#include <memory>

namespace bench {

/// Plays \p scenario and tells how it ended, under the \p name that a person knows it by.
/// \param speed divides the scenario's own times. \param person is who answers prompts on
/// standard input, made with the first of them and the same for all performances. \param report
/// gets its parts, if there is one. \returns the exit code.
int perform(const Scenario &scenario, const QString &name, double speed, RunOptions options,
            std::unique_ptr<LineInput> *person, ReportSuite *report = nullptr);

} // namespace bench
