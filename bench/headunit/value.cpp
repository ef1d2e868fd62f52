#include "bench/headunit/value.h"

#include <QStringList>

#include <charconv>

namespace bench {

QString plainText(const Value &value)
{
    if (const QString *text = std::get_if<QString>(&value))
        return *text;
    if (const bool *on = std::get_if<bool>(&value))
        return *on ? QStringLiteral("true") : QStringLiteral("false");
    if (const int *number = std::get_if<int>(&value))
        return QString::number(*number);
    char digits[32];
    const char *end = std::to_chars(digits, digits + sizeof digits, numberOf(value),
                                    std::chars_format::general, 6)
                          .ptr;
    return QString::fromLatin1(digits, static_cast<int>(end - digits));
}

QString plainText(const QVector<Value> &values)
{
    QStringList texts;
    for (const Value &value : values)
        texts += plainText(value);
    return texts.join(QStringLiteral(", "));
}

double numberOf(const Value &value)
{
    return std::visit(
        [](const auto &content) {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(content)>>)
                return static_cast<double>(content);
            else
                return 0.0;
        },
        value);
}

std::optional<Quantity> quantityIn(const QString &text)
{
    int size = 0;
    while (size < text.size() &&
           (text.at(size).isDigit() || text.at(size) == '.' || (size == 0 && text.at(size) == '-')))
        ++size;
    bool isNumber = false;
    const double number = text.left(size).toDouble(&isNumber);
    if (!isNumber)
        return std::nullopt;
    return Quantity{number, text.mid(size).trimmed()};
}

} // namespace bench
