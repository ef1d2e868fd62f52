// The service's state by name: one row a getter, with its type, its words, what announces a change,
// and what the wire means by it.
#pragma once

#include "bench/headunit/meanings.h"
#include "bench/headunit/value.h"
#include "bench/wire/tables.h"

#include <canservicebase.h>

#include <QStringList>

#include <optional>

namespace bench {

/// A signal without arguments that announces a change of state.
using Announcement = void (CanServiceBase::*)();

/// How a value is asked for. Its type is the operation's: of what kind it is is known before any
/// service is there.
struct Reader
{
    Value (*ask)(CanServiceBase &service);
    int type; ///< Value::index().

    Value operator()(CanServiceBase &service) const { return ask(service); }
    bool isSwitch() const { return type == 0; }
    bool isText() const { return type == 3; }
};

/// A value for a program: a number without its unit, a switch or a text.
struct Reading
{
    std::optional<Value> value; ///< Nothing where there is no reading.
    QString unit;
};

/// One state getter of the interface, or one member of a record that it hands out.
struct Getter
{
    const char *name; ///< For example `climate.left`, as the car's value that it shows.
    Reader read;
    Span<Word> words = {}; ///< What stands for a number; of a switch, for off and on.
    QString (*unit)(CanServiceBase &service) = nullptr; ///< Null for a value without a unit text.
    Announcement announcement = nullptr;                ///< Null: it never changes.
    Inbound report = {};                                ///< That it comes from; 0 for none.
    Meaning meaning = {};
    bool quiet = false; ///< May change without its signal, or before: see StateWatch::lookAround().
    bool alias = false; ///< An older name, or a part of another value: read by name, not listed.

    /// A text with a number and its unit, as "12km/h", where the car has a number.
    bool isQuantity() const { return read.isText() && meaning; }
    QString text(const Value &value, const QString &unit) const;
    Reading reading(const Value &value, const QString &unit) const;
    /// Reads it, with its unit behind.
    QString textOf(CanServiceBase &service) const;
    QString unitOf(CanServiceBase &service) const { return unit ? unit(service) : QString(); }
};

int getterCount();
const Getter &getter(int index);
/// The index of the getter with the given name; -1 for an unknown name.
int findGetter(const QString &name);

} // namespace bench
