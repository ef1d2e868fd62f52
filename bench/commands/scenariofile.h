// Scenario files: what commands read, and what they say of mistakes there.
#pragma once

#include "bench/language/steps.h"

namespace bench {

/// Reads \p name; - is the standard input. \returns an empty text, or why it cannot be read.
QString readScenarioFile(const QString &name, QByteArray *text);

/// Tells the mistakes by file, line and column. \returns the exit code for it.
int complainAbout(const QString &file, const QVector<Mistake> &mistakes);

} // namespace bench
