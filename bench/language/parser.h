// Reads steps from text.
#pragma once

#include "bench/language/steps.h"

namespace bench {

/// Reads a file that a scenario includes. \returns an empty text, or why it cannot be read.
using IncludeReader = QString (*)(const QString &name, QByteArray *text);

/// Steps between `repeat` and `end`, while they are read.
struct Repetition
{
    int line, column;
    int times;
    int firstStep;
    bool started, plugged; ///< At its beginning.
};

/// What is known while lines are read one after the other.
struct ParseContext
{
    Scenario *scenario; ///< Gets the steps that are read.
    bool started = false;
    bool plugged = true;
    int needs = Nobody;                   ///< Of the statement that is being read.
    QVector<Repetition> repetitions = {}; ///< The innermost last.
    IncludeReader reader = nullptr;       ///< Null: nothing can be included.
    QStringList files = {};               ///< That are being read, the innermost last.
    int includes = 0;                     ///< So far.

    void add(const Action &action);
};

/// Reads UTF-8 text, a step a line. What it includes is found from where \p file is.
Scenario parseScenario(const QByteArray &text, const QString &file = {},
                       IncludeReader reader = nullptr);
/// The same for text within another.
void parseText(const QByteArray &text, ParseContext &context);
/// Reads one line of any origin; its steps or its mistake go to the context's scenario.
void parseLine(const QString &text, int number, ParseContext &context);
/// Reads one step from words that need no cutting, such as those of a command line.
/// \returns an empty text, or the mistake.
QString parseWords(const QStringList &words, ParseContext &context);

/// Reads the one step of a line, which may become several, or none if there is a mistake.
void readStep(LineReader &line, ParseContext &context);

// Each reads what follows the step's word.
void readFrame(LineReader &line, ParseContext &context);
void readBytes(LineReader &line, ParseContext &context);
void readSilence(LineReader &line, ParseContext &context);
void readSpeak(LineReader &line, ParseContext &context);
void readUnplug(LineReader &line, ParseContext &context);
void readPlug(LineReader &line, ParseContext &context);
void readFault(LineReader &line, ParseContext &context);
void readExpect(LineReader &line, ParseContext &context);
void readRepeat(LineReader &line, ParseContext &context);
void readEnd(LineReader &line, ParseContext &context);
void readInclude(LineReader &line, ParseContext &context);

/// A mistake for each line of the steps that needs somebody who is not \p present, of Party.
QVector<Mistake> findObstacles(const QVector<Step> &steps, int present);

/// Reads UTF-8 text. \returns whether it is such, without a NUL.
bool readUtf8(const QByteArray &bytes, QString *text);

/// What to say of a name that no getter has, or no value of the car.
QString unknownName(bool ofCar, const QString &name);

/// The forms of the steps, a line each.
QString scenarioSyntax();

} // namespace bench
