// Constant tables, and their rows by name.
#pragma once

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace bench {

/// A table, or a part of one.
template <typename Row>
struct Span
{
    const Row *rows = nullptr;
    int count = 0;

    constexpr Span() = default;
    template <int Count>
    constexpr Span(const Row (&table)[Count])
        : rows(table)
        , count(Count)
    {
    }

    constexpr const Row *begin() const { return rows; }
    constexpr const Row *end() const { return rows + count; }
    constexpr const Row &operator[](int index) const { return rows[index]; }
};

/// A word that stands for a raw value.
struct Word
{
    int raw;
    const char *name;
};

/// What a switch is called everywhere, beside its own words.
inline constexpr Word kSwitchWords[] = {{1, "on"},  {1, "true"},  {1, "1"},
                                        {0, "off"}, {0, "false"}, {0, "0"}};

/// Null for a number without a word.
inline const Word *wordOf(Span<Word> words, double number)
{
    const auto *found = std::find_if(words.begin(), words.end(), [number](const Word &word) {
        return static_cast<double>(word.raw) == number;
    });
    return found == words.end() ? nullptr : found;
}

/// Whether each row stands at the place of its own key, which `keyOf` tells.
template <typename Row, std::size_t count, typename KeyOf>
constexpr bool isInEnumOrder(const Row (&table)[count], KeyOf keyOf)
{
    for (std::size_t place = 0; place < count; ++place)
        if (static_cast<std::size_t>(keyOf(table[place])) != place)
            return false;
    return true;
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
