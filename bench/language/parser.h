// The steps of a scenario: one table of their words and how each is read.
#pragma once

#include "scenario.h"

namespace bench {

/// What is known while the lines are read one after the other.
struct ScenarioContext
{
    Scenario *scenario; ///< Gets the steps that are read.
    bool started = false;
    bool plugged = true;

    /// \returns true.
    bool add(const Action &action);
};

/// Reads the one step of a line, which may become several. \returns whether it could; if not,
/// \p line has the mistake.
bool readStep(LineReader &line, ScenarioContext &context);

// Each reads what follows the step's word.
bool readFrame(LineReader &line, ScenarioContext &context);
bool readSilence(LineReader &line, ScenarioContext &context);
bool readSpeak(LineReader &line, ScenarioContext &context);
bool readUnplug(LineReader &line, ScenarioContext &context);
bool readPlug(LineReader &line, ScenarioContext &context);
bool readFault(LineReader &line, ScenarioContext &context);
bool readExpect(LineReader &line, ScenarioContext &context);

} // namespace bench
