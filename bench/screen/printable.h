// Text from outside, such as what a box sends, as text that is safe to show.
#pragma once

#include <QByteArray>
#include <QString>

namespace bench {

/// Text from outside as one line that a terminal may show. Control characters (C0 with the line
/// feed, DEL, C1), marks that change the direction of writing, separators of lines and halves of
/// surrogate pairs become escapes: \x1b for C0, \u009b for the rest. All else stays, a backslash
/// too.
QString printable(const QString &text);
/// The same for bytes. If they are no UTF-8 text, each byte beyond ASCII becomes an escape: \xff.
QString printable(const QByteArray &bytes);

/// A field of a CSV row: printable, so that it has no line end, and in quotes if it needs them.
QByteArray csvField(const QString &text);

/// isPrintable() for what is no plain ASCII.
bool isPrintableBeyondAscii(const QString &text, int at);

/// Whether the unit at an index of a text is shown as it is.
inline bool isPrintable(const QString &text, int at)
{
    const ushort unit = text.at(at).unicode();
    return (unit >= ' ' && unit < 0x7F) || isPrintableBeyondAscii(text, at);
}

} // namespace bench
