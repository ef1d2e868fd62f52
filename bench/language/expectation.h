// What a step expects of the service's state and signals, and of car and box.
#pragma once

#include "bench/headunit/value.h"
#include "bench/wire/reports.h"

#include <QPair>
#include <QStringList>
#include <QVector>

#include <functional>

namespace bench {

struct Stage;

enum class Comparison { Equal, NotEqual, Less, AtMost, Greater, AtLeast };

/// Something that can be looked at by name: a getter of the service, or what the bench itself sees
/// (the link code, what the cluster shows, what the box has counted, a value of the car).
struct Observable
{
    /// What may be compared with it; a quantity is a text that begins with a number, as "12km/h".
    enum Kind { Switch, Number, Text, Quantity };

    QString name;
    int needs = 0; ///< Of Party.
    Kind kind = Text;
    std::function<Value(const Stage &stage)> value; ///< None for an unknown name.
    /// The value as a person reads it, with its unit.
    std::function<QString(const Stage &stage)> text;
    QVector<QPair<QString, double>> words = {}; ///< What stands for a number.
    bool isOrdered = true; ///< Numbers with a word are more or less than others.

    /// A getter's name, or `link`, `cluster.source`, ...
    static Observable find(const QString &name);
    /// A value of the car.
    static Observable ofCar(const QString &name);
    static QStringList names();

    bool isKnown() const { return value != nullptr; }
    /// The number that a word stands for. \returns whether there is such a word.
    bool numberOfWord(const QString &word, double *number) const;
    /// What may be compared with it, for a person.
    QString possible() const;
};

/// `climate.left == 22.5`: a name, and a value as a person writes it.
struct Expectation
{
    Observable observable;
    Comparison comparison;
    QString expected;

    /// As in the file.
    QString text() const;
    /// Numbers are equal when they differ by less than the precision of a float, 1 in 100000.
    bool isMetBy(const Value &actual) const;
    /// Why nothing can be compared so; empty if it can.
    QString problem() const;
};

/// `keyEvent(5, 0, true)`, or a signal's name alone, whatever its arguments.
struct SignalExpectation
{
    QString name;
    QStringList arguments; ///< Empty: any.

    QString text() const;
    bool isMetBy(const QString &signal, const QVector<Value> &actual) const;
};

/// A signal with its arguments, as in `keyEvent(5, 0, true)`.
QString signalText(const QString &name, const QVector<Value> &arguments);

/// Reads `==`, `!=`, `<`, `<=`, `>` or `>=`. \returns whether it is one.
bool parseComparison(const QString &text, Comparison *comparison);

} // namespace bench
