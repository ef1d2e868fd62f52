// A part of a constant table.
#pragma once

namespace bench {

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

} // namespace bench
