// JSON for programs that read line by line.
#pragma once

#include <QString>
#include <QVariant>

#include <string>
#include <string_view>
#include <type_traits>

namespace bench {

/// A number of tenths, hundredths, ... with as many places behind the point.
void appendDecimal(std::string *text, qint64 number, int places);

/// One object on one line of JSON, built in memory that is used again for the next.
///
///     line.begin().member("seconds", 1.5).member("door", true);
///     output.bytes(line.end());
///
/// Valid for any content: control characters and the like are escaped, halves of surrogate pairs
/// become U+FFFD, a number that is none (NaN, infinite) and a value that is none become null.
class JsonLine
{
public:
    JsonLine &begin();
    /// \returns the whole line with its line end, until the next begin().
    const std::string &end();

    JsonLine &key(const char *name);
    JsonLine &value(bool value);
    JsonLine &value(qint64 value);
    JsonLine &value(float value); ///< The shortest number that is this float, as 21.6.
    JsonLine &value(double value);
    JsonLine &value(const QString &text);
    JsonLine &value(const char *utf8);
    JsonLine &value(const QVariant &value); ///< A switch, a number or a text.
    template <typename Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
    JsonLine &value(Number number)
    {
        return value(qint64{number});
    }
    /// A time as seconds with six digits behind the point.
    JsonLine &seconds(qint64 microseconds);

    template <typename Value>
    JsonLine &member(const char *name, const Value &content)
    {
        return key(name).value(content);
    }

    JsonLine &beginObject();
    JsonLine &endObject();
    JsonLine &beginArray();
    JsonLine &endArray();

private:
    void separate();

    std::string mBytes;
};

} // namespace bench
