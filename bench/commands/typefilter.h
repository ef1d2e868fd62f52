// The value of --only: what of a recording is wanted.
#pragma once

#include <QSet>
#include <QStringList>

namespace bench {

struct TypeFilter
{
    QSet<quint8> fromBox, toBox; ///< Data types.
    QSet<QString> events;

    bool isEmpty() const { return fromBox.isEmpty() && toBox.isEmpty() && events.isEmpty(); }
};

/// Reads `0x24,doors,keyEvent`: numbers of both directions, names of reports and commands, and
/// events where \p withEvents allows them. \returns an empty text, or what is wrong.
QString readTypeFilter(const QString &text, bool withEvents, TypeFilter *filter);

} // namespace bench
