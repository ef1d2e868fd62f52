#include "bench/headunit/value.h"

#include <charconv>

namespace bench {

QString plainText(const Value &value)
{
    if (const bool *on = std::get_if<bool>(&value))
        return *on ? QStringLiteral("true") : QStringLiteral("false");
    if (const int *number = std::get_if<int>(&value))
        return QString::number(*number);
    if (const float *number = std::get_if<float>(&value)) {
        char digits[32];
        const char *end = std::to_chars(digits, digits + sizeof digits,
                                        static_cast<double>(*number), std::chars_format::general, 6)
                              .ptr;
        return QString::fromLatin1(digits, static_cast<int>(end - digits));
    }
    return std::get<QString>(value);
}

double numberOf(const Value &value)
{
    if (const bool *on = std::get_if<bool>(&value))
        return *on ? 1 : 0;
    if (const int *number = std::get_if<int>(&value))
        return *number;
    if (const float *number = std::get_if<float>(&value))
        return static_cast<double>(*number);
    return 0;
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
