// Reads steps from text.
#pragma once

#include "bench/language/steps.h"

namespace bench {

/// What is known while lines are read one after the other.
struct ParseContext
{
    Scenario *scenario; ///< Gets the steps that are read.
    bool started = false;
    bool plugged = true;
    int needs = Nobody; ///< Of the statement that is being read.

    /// \returns true.
    bool add(const Action &action);
};

/// Reads UTF-8 text, a step a line.
Scenario parseScenario(const QByteArray &text);
/// Reads one line of any origin; its steps or its mistake go to the context's scenario.
void parseLine(const QString &text, int number, ParseContext &context);
/// Reads one step from words that need no cutting, such as those of a command line.
/// \returns an empty text, or the mistake.
QString parseWords(const QStringList &words, ParseContext &context);

/// Reads the one step of a line, which may become several. \returns whether it could; if not,
/// \p line has the mistake.
bool readStep(LineReader &line, ParseContext &context);

// Each reads what follows the step's word.
bool readFrame(LineReader &line, ParseContext &context);
bool readBytes(LineReader &line, ParseContext &context);
bool readSilence(LineReader &line, ParseContext &context);
bool readSpeak(LineReader &line, ParseContext &context);
bool readUnplug(LineReader &line, ParseContext &context);
bool readPlug(LineReader &line, ParseContext &context);
bool readFault(LineReader &line, ParseContext &context);
bool readExpect(LineReader &line, ParseContext &context);

/// What to say of a name that no value of the car has.
QString unknownValue(const QString &name);

/// The forms of the steps, a line each.
QString scenarioSyntax();

} // namespace bench
