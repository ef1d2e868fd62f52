#include "bench/screen/jsonline.h"

#include "bench/screen/printable.h"

#include <charconv>
#include <cmath>
#include <string_view>

namespace bench {

namespace {

constexpr char kHex[] = "0123456789abcdef";
constexpr ushort kReplacement = 0xFFFD;

template <typename Number>
void appendNumber(std::string *bytes, Number number)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    bytes->append(digits, end);
}

template <typename Number>
void appendFinite(std::string *bytes, Number number)
{
    if (std::isfinite(number))
        appendNumber(bytes, number);
    else
        bytes->append("null");
}

void appendJsonUnit(std::string *bytes, ushort unit)
{
    constexpr std::string_view kUnits = "\"\\\n\r\t", kEscapes = "\"\\nrt";
    const std::size_t at = unit < 0x80 ? kUnits.find(char(unit)) : std::string_view::npos;
    if (at != std::string_view::npos) {
        *bytes += {'\\', kEscapes[at]};
        return;
    }
    *bytes += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        *bytes += kHex[unit >> shift & 0xF];
}

bool isPlain(ushort unit) { return unit >= ' ' && unit < 0x7F && unit != '"' && unit != '\\'; }

void appendJsonText(std::string *bytes, const QString &text)
{
    const auto isRaw = [&text](int at) {
        const ushort unit = text.at(at).unicode();
        return unit != '"' && unit != '\\' && isPrintable(text, at);
    };
    *bytes += '"';
    for (int at = 0; at < text.size();) {
        for (; at < text.size() && isPlain(text.at(at).unicode()); ++at)
            *bytes += char(text.at(at).unicode());
        const int first = at;
        while (at < text.size() && isRaw(at))
            ++at;
        if (at > first)
            *bytes += text.midRef(first, at - first).toUtf8().toStdString();
        if (at < text.size()) {
            appendJsonUnit(bytes, text.at(at).isSurrogate() ? kReplacement : text.at(at).unicode());
            ++at;
        }
    }
    *bytes += '"';
}

} // namespace

void appendDecimal(std::string *text, qint64 number, int places)
{
    char digits[32];
    char *const end = digits + sizeof digits;
    char *first = end;
    quint64 rest = number < 0 ? 0 - quint64(number) : quint64(number);
    for (; first > end - places - 2 || rest > 0; rest /= 10) {
        if (first == end - places)
            *--first = '.';
        *--first = char('0' + rest % 10);
    }
    if (number < 0)
        *--first = '-';
    text->append(first, end);
}

JsonLine &JsonLine::begin()
{
    mBytes = '{'; // Keeps the memory.
    return *this;
}

const std::string &JsonLine::end() { return mBytes += "}\n"; }

// A comma, unless this is the first in its object or array, or the value of a key. Texts end with
// a quote, so that nothing of theirs is taken for a bracket.
void JsonLine::separate()
{
    const char last = mBytes.back();
    if (last != '{' && last != '[' && last != ':')
        mBytes += ',';
}

JsonLine &JsonLine::key(const char *name)
{
    value(name);
    mBytes += ':';
    return *this;
}

void JsonLine::append(bool value) { mBytes += value ? "true" : "false"; }

void JsonLine::append(qint64 value) { appendNumber(&mBytes, value); }

void JsonLine::append(float value) { appendFinite(&mBytes, value); }

void JsonLine::append(double value) { appendFinite(&mBytes, value); }

void JsonLine::append(const QString &text) { appendJsonText(&mBytes, text); }

void JsonLine::append(const char *utf8)
{
    // Names are plain letters nearly always.
    const char *end = utf8;
    while (isPlain(quint8(*end)))
        ++end;
    if (*end == '\0')
        (mBytes += '"').append(utf8, end) += '"';
    else
        appendJsonText(&mBytes, QString::fromUtf8(utf8));
}

JsonLine &JsonLine::seconds(qint64 microseconds)
{
    separate();
    appendDecimal(&mBytes, microseconds, 6);
    return *this;
}

JsonLine &JsonLine::begin(char bracket)
{
    separate();
    mBytes += bracket;
    return *this;
}

JsonLine &JsonLine::end(char bracket)
{
    mBytes += bracket;
    return *this;
}

} // namespace bench
