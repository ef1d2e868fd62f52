// JSON for programs that read line by line.
#pragma once

#include <QString>

#include <optional>
#include <string>
#include <type_traits>
#include <variant>

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
    /// A switch, a number, a text, one of these as a variant, or null as nullptr or nothing. A
    /// float is the shortest number that is this float, as 21.6.
    template <typename Content>
    JsonLine &value(const Content &content)
    {
        separate();
        if constexpr (std::is_integral_v<Content> && !std::is_same_v<Content, bool>)
            append(qint64{content});
        else
            append(content);
        return *this;
    }
    /// A time as seconds with six digits behind the point.
    JsonLine &seconds(qint64 microseconds);

    template <typename Value>
    JsonLine &member(const char *name, const Value &content)
    {
        return key(name).value(content);
    }

    JsonLine &beginObject() { return begin('{'); }
    JsonLine &endObject() { return end('}'); }
    JsonLine &beginArray() { return begin('['); }
    JsonLine &endArray() { return end(']'); }

private:
    void separate();
    JsonLine &begin(char bracket);
    JsonLine &end(char bracket);
    void append(bool value);
    void append(qint64 value);
    void append(float value);
    void append(double value);
    void append(const QString &text);
    void append(const char *utf8);
    void append(std::nullptr_t) { mBytes += "null"; }
    template <typename... Contents>
    void append(const std::variant<Contents...> &value)
    {
        std::visit([this](const auto &content) { append(content); }, value);
    }
    void append(int value) { append(qint64{value}); }
    template <typename Content>
    void append(const std::optional<Content> &value)
    {
        if (value)
            append(*value);
        else
            mBytes += "null";
    }

    std::string mBytes;
};

} // namespace bench
