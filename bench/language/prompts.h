// Steps for a person, where the car is a real one.
#pragma once

#include "bench/language/steps.h"

namespace bench {

/// What a person is to do for a step of the virtual car or its cable, such as "Open the tailgate";
/// empty where nobody can do it.
QString promptFor(const Action &action);

/// Makes prompts of the steps that need the virtual box and that a person can do.
/// \returns the lines that became prompts.
QVector<Step> makePrompts(QVector<Step> *steps);

} // namespace bench
