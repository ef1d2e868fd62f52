// Tables whose rows have a name.
#pragma once

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace bench {

/// The row of that name; null for none.
template <typename Rows>
auto findNamed(const Rows &rows, const QString &name) -> decltype(&*std::begin(rows))
{
    const auto found = std::find_if(std::begin(rows), std::end(rows), [&name](const auto &row) {
        return name == QLatin1String(row.name);
    });
    return found == std::end(rows) ? nullptr : &*found;
}

template <typename Rows>
QStringList namesOf(const Rows &rows)
{
    QStringList names;
    for (const auto &row : rows)
        names += QLatin1String(row.name);
    return names;
}

} // namespace bench
