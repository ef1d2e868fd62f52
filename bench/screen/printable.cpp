#include "bench/screen/printable.h"

#include <algorithm>
#include <iterator>

namespace bench {

namespace {

struct Range
{
    ushort first, last;
};

// What a terminal obeys and what forges or turns a line. Ascending.
constexpr Range kEscaped[] = {
    {0x0000, 0x001F}, // C0
    {0x007F, 0x009F}, // DEL, C1
    {0x061C, 0x061C}, // Arabic letter mark
    {0x200E, 0x200F}, // left-to-right and right-to-left mark
    {0x2028, 0x202E}, // separators of lines and paragraphs; embeddings and overrides
    {0x2066, 0x2069}, // isolates
    {0xFEFF, 0xFEFF}, // byte order mark
    {0xFFF9, 0xFFFB}, // interlinear annotations
};

bool isEscaped(ushort unit)
{
    return std::any_of(std::begin(kEscaped), std::end(kEscaped), [unit](const Range &range) {
        return unit >= range.first && unit <= range.last;
    });
}

// Whether the unit at an index is half of a surrogate pair that has no other half.
bool isHalf(const QString &text, int at)
{
    const QChar unit = text.at(at);
    if (unit.isHighSurrogate())
        return at + 1 == text.size() || !text.at(at + 1).isLowSurrogate();
    return unit.isLowSurrogate() && (at == 0 || !text.at(at - 1).isHighSurrogate());
}

QString byteEscape(uchar byte)
{
    return QStringLiteral("\\x%1").arg(byte, 2, 16, QLatin1Char('0'));
}

QString escape(ushort unit)
{
    return unit < ' ' ? byteEscape(uchar(unit))
                      : QStringLiteral("\\u%1").arg(unit, 4, 16, QLatin1Char('0'));
}

} // namespace

bool isPrintableBeyondAscii(const QString &text, int at)
{
    return !isEscaped(text.at(at).unicode()) && !isHalf(text, at);
}

QString printable(const QString &text)
{
    QString result;
    int shown = 0; // What is before is in the result.
    for (int at = 0; at < text.size(); ++at) {
        if (isPrintable(text, at))
            continue;
        result += text.midRef(shown, at - shown) + escape(text.at(at).unicode());
        shown = at + 1;
    }
    return shown == 0 ? text : result + text.midRef(shown);
}

QString printable(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    if (text.toUtf8() == bytes)
        return printable(text);
    QString result;
    for (const char c : bytes) {
        const auto byte = static_cast<uchar>(c);
        if (byte < 0x80 && !isEscaped(byte))
            result += QLatin1Char(c);
        else
            result += byteEscape(byte);
    }
    return result;
}

QByteArray csvField(const QString &text)
{
    QString field = printable(text);
    if (field.contains(QLatin1Char('"')) || field.contains(QLatin1Char(',')))
        field = QLatin1Char('"') + field.replace(QLatin1Char('"'), QLatin1String("\"\"")) +
                QLatin1Char('"');
    return field.toUtf8();
}

} // namespace bench
