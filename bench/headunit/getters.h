// The service's state by name: one table for everything that prints, compares or expects state.
#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

class CanServiceBase;

namespace bench {

/// One state getter of the interface, or one member of a record that it hands out.
struct Getter
{
    const char *name; ///< For example `climate.left`.
    QVariant (*read)(CanServiceBase &service);
    QString (*unit)(CanServiceBase &service); ///< Null for a value without a unit text.
};

int getterCount();
const Getter &getter(int index);
/// The index of the getter with the given name; -1 for an unknown name.
int findGetter(const QString &name);

/// A value as a person reads it, without its unit: `true`, `22.5`, or a text as it is.
QString valueText(const QVariant &value);

/// The whole state of a service at one moment.
class Snapshot
{
public:
    struct Value
    {
        QVariant value;
        QString unit;

        bool operator==(const Value &other) const
        {
            return value == other.value && unit == other.unit;
        }
        QString text() const;
    };

    struct Change
    {
        int getter;
        Value before, after;
    };

    /// Empty: every name gives an invalid value.
    Snapshot() = default;
    explicit Snapshot(CanServiceBase &service);

    const Value &at(int getter) const { return mValues.at(getter); }
    Value value(const char *name) const;
    bool isOn(const char *name) const { return value(name).value.toBool(); }

    /// What differs from \p earlier, in the order of the table; nothing if either is empty.
    QVector<Change> changesSince(const Snapshot &earlier) const;

private:
    QVector<Value> mValues;
};

/// The climate in one line: `on, 21.5 °C | 22 °C, fan 3, mode 1, auto`.
QString climateLine(const Snapshot &state);

} // namespace bench
