#include "bench/headunit/value.h"

namespace bench {

QString plainText(const Value &value)
{
    if (const bool *on = std::get_if<bool>(&value))
        return *on ? QStringLiteral("true") : QStringLiteral("false");
    if (const int *number = std::get_if<int>(&value))
        return QString::number(*number);
    if (const float *number = std::get_if<float>(&value))
        return QString::number(static_cast<double>(*number), 'g', 6);
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

} // namespace bench
