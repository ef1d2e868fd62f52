// Every name of the language in one list: what `set` and `expect` take, and what it may be.
#pragma once

#include "bench/wire/reports.h"

#include <QStringList>
#include <QVector>

namespace bench {

/// One name.
struct NameRow
{
    enum Kind { CarValue, Getter, OfBench, OldName, Signal };

    Kind kind;
    QString name;
    QString values;       ///< Words, a range with its unit, or a kind such as "a number".
    QString shown = {};   ///< What a host shows for it, where that is something else.
    QString initial = {}; ///< In a new virtual car.
    QString unit = {};
    const Report *report = nullptr; ///< That carries it; null for none.
    QString signal = {};            ///< That announces a change; empty for none.
    bool isExpected = true;         ///< `expect` takes it.

    bool isSet() const { return kind == CarValue; } ///< `set`, `ramp` and the like take it.
};

/// Values of the car in the order of the wire, getters that no frame changes, what the bench itself
/// sees, older names, signals.
QVector<NameRow> nameRows();

/// The names and words that an option or a step takes: `set`, `expect`, `signal`, `call`, `faults`,
/// `press`, `only`, `model`; and the words of a value of the car. Empty for another one.
QStringList wordsFor(const QString &what);
/// Those for which there are words.
QStringList wordedOptions();

} // namespace bench
