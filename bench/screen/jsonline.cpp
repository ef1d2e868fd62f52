#include "bench/screen/jsonline.h"

#include "bench/screen/printable.h"

#include <QMetaType>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace bench {

namespace {

constexpr char kHex[] = "0123456789abcdef";
constexpr ushort kReplacement = 0xFFFD;

template <typename Number>
void appendNumber(QByteArray *bytes, Number number)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    bytes->append(digits, static_cast<int>(end - digits));
}

template <typename Number>
void appendFinite(QByteArray *bytes, Number number)
{
    if (std::isfinite(number))
        appendNumber(bytes, number);
    else
        bytes->append("null");
}

void appendAscii(QByteArray *bytes, const QChar *text, int size)
{
    const int before = bytes->size();
    bytes->resize(before + size);
    std::transform(text, text + size, bytes->data() + before,
                   [](QChar c) { return char(c.unicode()); });
}

void appendJsonUnit(QByteArray *bytes, ushort unit)
{
    switch (unit) {
    case '"':
    case '\\':
        bytes->append('\\').append(char(unit));
        return;
    case '\n':
        bytes->append("\\n");
        return;
    case '\r':
        bytes->append("\\r");
        return;
    case '\t':
        bytes->append("\\t");
        return;
    default:
        bytes->append("\\u");
        for (int shift = 12; shift >= 0; shift -= 4)
            bytes->append(kHex[unit >> shift & 0xF]);
    }
}

void appendJsonText(QByteArray *bytes, const QString &text)
{
    const auto isRaw = [&text](int at) {
        const ushort unit = text.at(at).unicode();
        return unit != '"' && unit != '\\' && isPrintable(text, at);
    };
    bytes->append('"');
    for (int at = 0; at < text.size();) {
        const int first = at;
        bool isAscii = true;
        for (; at < text.size() && isRaw(at); ++at)
            isAscii = isAscii && text.at(at).unicode() < 0x80;
        if (isAscii)
            appendAscii(bytes, text.constData() + first, at - first);
        else
            bytes->append(text.midRef(first, at - first).toUtf8());
        if (at < text.size()) {
            appendJsonUnit(bytes, text.at(at).isSurrogate() ? kReplacement : text.at(at).unicode());
            ++at;
        }
    }
    bytes->append('"');
}

} // namespace

JsonLine &JsonLine::begin()
{
    mBytes.resize(0); // Keeps the memory.
    mBytes.append('{');
    return *this;
}

const QByteArray &JsonLine::end() { return mBytes.append("}\n"); }

// A comma, unless this is the first in its object or array, or the value of a key. Texts end with
// a quote, so that nothing of theirs is taken for a bracket.
void JsonLine::separate()
{
    const char last = mBytes.back();
    if (last != '{' && last != '[' && last != ':')
        mBytes.append(',');
}

JsonLine &JsonLine::key(const char *name)
{
    value(name);
    mBytes.append(':');
    return *this;
}

JsonLine &JsonLine::value(bool value)
{
    separate();
    mBytes.append(value ? "true" : "false");
    return *this;
}

JsonLine &JsonLine::value(qint64 value)
{
    separate();
    appendNumber(&mBytes, value);
    return *this;
}

JsonLine &JsonLine::value(float value)
{
    separate();
    appendFinite(&mBytes, value);
    return *this;
}

JsonLine &JsonLine::value(double value)
{
    separate();
    appendFinite(&mBytes, value);
    return *this;
}

JsonLine &JsonLine::value(const QString &text)
{
    separate();
    appendJsonText(&mBytes, text);
    return *this;
}

JsonLine &JsonLine::value(const char *utf8)
{
    separate();
    // Names are plain letters nearly always.
    const bool isSimple = std::all_of(utf8, utf8 + std::strlen(utf8), [](char c) {
        return c >= ' ' && c < 0x7F && c != '"' && c != '\\';
    });
    if (isSimple)
        mBytes.append('"').append(utf8).append('"');
    else
        appendJsonText(&mBytes, QString::fromUtf8(utf8));
    return *this;
}

JsonLine &JsonLine::value(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::Bool:
        return this->value(value.toBool());
    case QMetaType::Float:
        return this->value(value.toFloat());
    case QMetaType::Double:
        return this->value(value.toDouble());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::Short:
        return this->value(value.toLongLong());
    case QMetaType::UnknownType:
        separate();
        mBytes.append("null");
        return *this;
    default:
        return this->value(value.toString());
    }
}

JsonLine &JsonLine::seconds(qint64 microseconds)
{
    separate();
    if (microseconds < 0)
        mBytes.append('-');
    const quint64 distance = microseconds < 0 ? 0 - quint64(microseconds) : quint64(microseconds);
    appendNumber(&mBytes, distance / 1'000'000);
    char fraction[] = ".000000";
    quint64 rest = distance % 1'000'000;
    for (int digit = 6; digit > 0; --digit, rest /= 10)
        fraction[digit] = char('0' + rest % 10);
    mBytes.append(fraction, 7);
    return *this;
}

JsonLine &JsonLine::beginObject()
{
    separate();
    mBytes.append('{');
    return *this;
}

JsonLine &JsonLine::endObject()
{
    mBytes.append('}');
    return *this;
}

JsonLine &JsonLine::beginArray()
{
    separate();
    mBytes.append('[');
    return *this;
}

JsonLine &JsonLine::endArray()
{
    mBytes.append(']');
    return *this;
}

} // namespace bench
