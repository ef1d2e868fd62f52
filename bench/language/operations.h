// The host's operations that a scenario may call, by name.
#pragma once

#include "bench/language/tokens.h"

#include <functional>

class CanServiceBase;

namespace bench {

using HostCall = std::function<void(CanServiceBase &)>;

/// Reads the name of an operation and its arguments. What is wrong is told to \p line.
HostCall readHostCall(LineReader &line);

QStringList operationNames();

/// The forms of the operations, a line each.
QString hostCallSyntax();

} // namespace bench
