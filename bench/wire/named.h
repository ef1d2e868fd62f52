// Tables whose rows have a name.
#pragma once

#include "bench/wire/span.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace bench {

/// A word that stands for a raw value.
struct Word
{
    int raw;
    const char *name;
};

/// Null for a number without a word.
inline const Word *wordOf(Span<Word> words, double number)
{
    const auto *found = std::find_if(words.begin(), words.end(), [number](const Word &word) {
        return static_cast<double>(word.raw) == number;
    });
    return found == words.end() ? nullptr : found;
}

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
