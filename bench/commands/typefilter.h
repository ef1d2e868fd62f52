// The value of --only: what of a recording is wanted.
#pragma once

#include "bench/commands/commandline.h"

#include <QSet>
#include <QStringList>

namespace bench {

struct TypeFilter
{
    QSet<quint8> fromBox, toBox; ///< Data types.
    QSet<QString> events;

    bool isEmpty() const { return fromBox.isEmpty() && toBox.isEmpty() && events.isEmpty(); }
};

/// Reads `0x24,doors,keyEvent` from --only, if it is set: numbers of both directions, names of
/// reports and commands, and events where \p withEvents allows them. A mistake is told: ask
/// CommandLine::isWrong().
TypeFilter readTypeFilter(CommandLine *line, bool withEvents);

} // namespace bench
