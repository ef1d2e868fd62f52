// What a getter or a signal of the service carries.
#pragma once

#include <QString>
#include <QVector>

#include <optional>
#include <variant>

namespace bench {

/// The type is the getter's own.
using Value = std::variant<bool, int, float, QString>;

/// As a person reads it: `true`, `22.5`, or a text as it is.
QString plainText(const Value &value);
/// With commas between.
QString plainText(const QVector<Value> &values);

inline bool isSwitch(const Value &value) { return std::holds_alternative<bool>(value); }
inline bool isText(const Value &value) { return std::holds_alternative<QString>(value); }
/// A switch is 0 or 1; a text is 0.
double numberOf(const Value &value);

/// A number with its unit behind, as the interface has it in texts.
struct Quantity
{
    double number;
    QString unit; ///< May be empty.
};

/// Reads `12km/h` or `12 km/h`. \returns nothing for a text that does not begin with a number.
std::optional<Quantity> quantityIn(const QString &text);

} // namespace bench
