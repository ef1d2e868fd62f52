// What a getter or a signal of the service carries.
#pragma once

#include <QString>

#include <variant>

namespace bench {

/// The type is the getter's own.
using Value = std::variant<bool, int, float, QString>;

/// As a person reads it: `true`, `22.5`, or a text as it is.
QString plainText(const Value &value);

inline bool isSwitch(const Value &value) { return std::holds_alternative<bool>(value); }
inline bool isText(const Value &value) { return std::holds_alternative<QString>(value); }
/// A switch is 0 or 1; a text is 0.
double numberOf(const Value &value);

} // namespace bench
