// Tests as tables: a data row for each row of a table, by the name that it begins with.
#pragma once

#include <QTest>

/// A byte string from its hexadecimal form; blanks do not matter.
inline QByteArray hex(const char *digits) { return QByteArray::fromHex(digits); }

/// A row of a table: what is fed in and what comes of it, both as the test reads them.
struct Case
{
    const char *name, *given, *expected;
};

/// The data of a test from a table.
template <typename Row, std::size_t count>
void addRows(const Row (&table)[count])
{
    QTest::addColumn<int>("row");
    for (std::size_t row = 0; row < count; ++row)
        QTest::newRow(table[row].name) << int(row);
}

/// The table's row that belongs to the present data row.
template <typename Row, std::size_t count>
const Row &currentRow(const Row (&table)[count])
{
    QFETCH(int, row);
    return table[row];
}
