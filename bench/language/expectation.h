// What a scenario expects of the service's state and signals.
#pragma once

#include "getters.h"

#include <QStringList>
#include <QVariantList>

namespace bench {

class Session;

enum class Comparison { Equal, NotEqual, Less, AtMost, Greater, AtLeast };

/// `climate.left == 22.5`: the name of a getter or of something the bench itself sees (the link
/// code, what the cluster shows), and a value as a person writes it.
struct Expectation
{
    QString name;
    Comparison comparison;
    QString expected;

    /// As in the file.
    QString text() const;
    /// Numbers are equal when they differ by less than the precision of a float, 1 in 100000.
    bool isMetBy(const QVariant &actual) const;
    /// Why no value of the type of \p sample can be compared so; empty if one can.
    QString problemWith(const QVariant &sample) const;
};

/// `keyEvent(5, 0, true)`, or a signal's name alone, whatever its arguments.
struct SignalExpectation
{
    QString name;
    QStringList arguments; ///< Empty: any.

    QString text() const;
    bool isMetBy(const QString &signal, const QVariantList &actual) const;
};

/// A signal with its arguments, as in `keyEvent(5, 0, true)`.
QString signalText(const QString &name, const QVariantList &arguments);

/// The names that an expectation may have.
QStringList observableNames();
/// The value of an observable now; its state is the getters' when the name is one of a getter.
Snapshot::Value observe(Session &session, const QString &name);
/// The same for names of which the type is known without a session; invalid for a getter.
QVariant benchSample(const QString &name);

/// The signals of the service, and the bench's own `device` and `cluster`.
QStringList signalNames();
/// How many arguments the signal has; -1 if any number will do.
int signalArgumentCount(const QString &name);

/// Reads `==`, `!=`, `<`, `<=`, `>` or `>=`. \returns whether it is one.
bool parseComparison(const QString &text, Comparison *comparison);

} // namespace bench
