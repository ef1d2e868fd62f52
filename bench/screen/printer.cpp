#include "bench/screen/printer.h"

#include "bench/screen/output.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

qint64 microseconds(double seconds) { return static_cast<qint64>(std::llround(seconds * 1e6)); }

// What follows appends to a line, printable and as UTF-8.

void append(std::string *line, const QString &text)
{
    int at = 0;
    for (; at < text.size() && text.at(at) >= QLatin1Char(' ') && text.at(at) < QChar(0x7F); ++at)
        *line += text.at(at).toLatin1();
    if (at < text.size())
        *line += printable(text.mid(at)).toStdString();
}

// To the millisecond, at the right of nine places.
void appendTime(std::string *line, double seconds)
{
    const std::size_t start = line->size();
    appendDecimal(line, (microseconds(seconds) + 500) / 1000, 3);
    const std::size_t size = line->size() - start;
    line->insert(start, 9 - std::min<std::size_t>(size, 9), ' ');
    *line += "  ";
}

void appendHex(std::string *line, quint8 byte)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    *line += kDigits[byte >> 4];
    *line += kDigits[byte & 0xF];
}

void appendHex(std::string *line, const QByteArray &bytes, const char *separator = "")
{
    for (int i = 0; i < bytes.size(); ++i) {
        if (i > 0)
            *line += separator;
        appendHex(line, canbox::byteAt(bytes, i));
    }
}

// hexByte().
std::string typeText(quint8 byte)
{
    std::string text = "0x";
    appendHex(&text, byte);
    return text;
}

// A field of a row of CSV.
void appendField(std::string *line, const QString &text)
{
    const bool isPlain = std::all_of(text.begin(), text.end(), [](QChar c) {
        return c >= QLatin1Char(' ') && c < QChar(0x7F) && c != QLatin1Char('"') &&
               c != QLatin1Char(',');
    });
    if (isPlain)
        append(line, text);
    else
        *line += csvField(text).toStdString();
}

void appendChanges(std::string *line, const QVector<Change> &changes)
{
    for (const Change &change : changes) {
        *line += &change != changes.begin() ? ", " : "";
        *line += getter(change.getter).name;
        *line += ": ";
        append(line, change.beforeText());
        *line += " -> ";
        append(line, change.afterText());
    }
}

const char *linkText(int code)
{
    return code == 3 ? "the box answers" : code == 0 ? "the link is lost" : "";
}

void appendMeaning(std::string *line, const Event &event, const StateWatch &state)
{
    if (event.name == QLatin1String("device"))
        append(line, plainText(event.arguments.value(1)));
    else if (event.name == QLatin1String("cluster"))
        append(line,
               QStringLiteral("shows '%1' '%2' '%3' '%4'")
                   .arg(plainText(event.arguments.value(0)), plainText(event.arguments.value(1)),
                        plainText(event.arguments.value(2)), plainText(event.arguments.value(3))));
    else if (event.isLink())
        *line += linkText(std::get<int>(event.arguments.first()));
    else if (event.name == QLatin1String("acStatusChanged"))
        append(line, climateLine(state));
    else if (event.name == QLatin1String("sigVersionData"))
        append(line, state.text("version"));
    else
        appendChanges(line, event.changes);
}

void appendEvent(std::string *line, const Event &event, const StateWatch &state)
{
    constexpr std::size_t kCallSize = 24;
    appendTime(line, event.seconds);
    const std::size_t call = line->size();
    append(line, event.name);
    if (event.isLink() || event.name == QLatin1String("keyEvent")) {
        *line += '(';
        append(line, plainText(event.arguments));
        *line += ')';
    }
    const std::size_t end = line->size();
    line->resize(std::max(end, call + kCallSize), ' ');
    const std::size_t meaning = line->size();
    appendMeaning(line, event, state);
    if (line->size() == meaning)
        line->resize(end); // No blanks before nothing.
}

const char *kindName(LineItem::Kind kind)
{
    constexpr const char *kNames[] = {"frame",        "bad checksum", "incomplete frame",
                                      "good receipt", "bad receipt",  "noise"};
    return kNames[kind];
}

bool isFrame(const LineItem &item)
{
    return item.kind == LineItem::Frame || item.kind == LineItem::BadChecksum;
}

// A column of its own for the number would be empty in most rows.
QString csvName(bool fromBox, quint8 dataType)
{
    const QString name = frameName(fromBox, dataType);
    return name == QLatin1String("unknown") ? hexByte(dataType) : name;
}

void appendItem(std::string *line, bool fromBox, const LineItem &item)
{
    if (!isFrame(item)) {
        *line += kindName(item.kind);
        if (item.kind == LineItem::GoodReceipt || item.kind == LineItem::BadReceipt)
            return;
        *line += ' ';
        return appendHex(line, item.bytes, " ");
    }
    *line += typeText(item.dataType) + ' ';
    append(line, frameName(fromBox, item.dataType));
    *line += ' ';
    if (item.bytes.isEmpty())
        *line += "without payload";
    appendHex(line, item.bytes, " ");
    if (item.kind == LineItem::BadChecksum)
        *line +=
            ", bad checksum " + typeText(item.received) + " instead of " + typeText(item.expected);
}

void add(JsonLine &json, const Members &members)
{
    for (const auto &member : members)
        json.member(member.first, member.second);
}

// A switch is 0 or 1, and no reading is an empty field.
QString fieldText(const Reading &reading)
{
    if (!reading.value)
        return {};
    return isSwitch(*reading.value) ? QString::number(numberOf(*reading.value))
                                    : plainText(*reading.value);
}

void addCounts(JsonLine &json, const char *name, const LineCounts &counts)
{
    json.key(name).beginObject().key("frames").beginObject();
    for (auto row = counts.frames.cbegin(); row != counts.frames.cend(); ++row)
        json.member(hexByte(row.key()).toLatin1().constData(), row.value());
    json.endObject()
        .member("goodReceipts", counts.goodReceipts)
        .member("badReceipts", counts.badReceipts)
        .member("badChecksums", counts.badChecksums)
        .member("noiseBytes", counts.noiseBytes)
        .endObject();
}

} // namespace

QString climateLine(const StateWatch &state)
{
    constexpr struct
    {
        const char *getter, *text;
    } kSwitches[] = {
        {"climate.ac", "A/C"},
        {"climate.max", "max A/C"},
        {"climate.auto", "auto"},
        {"climate.dual", "dual"},
        {"climate.inside_air", "inside air"},
        {"climate.front_defrost", "front defrost"},
        {"climate.rear_defrost", "rear defrost"},
        {"climate.rear", "rear climate"},
        {"climate.wheel_heat", "wheel heat"},
    };
    constexpr struct
    {
        const char *getter, *text;
    } kSeats[] = {{"climate.left_seat", "left seat"}, {"climate.right_seat", "right seat"}};

    QStringList parts;
    parts += state.text("climate.power");
    parts += state.text("climate.left") + QStringLiteral(" | ") + state.text("climate.right");
    parts += QStringLiteral("fan ") + state.text("climate.fan");
    parts += QStringLiteral("mode ") + state.text("climate.mode");
    for (const auto &row : kSwitches)
        if (state.isOn(row.getter))
            parts += QLatin1String(row.text);
    for (const auto &row : kSeats)
        if (state.isOn(row.getter))
            parts += QLatin1String(row.text) + QLatin1Char(' ') + state.text(row.getter);
    return parts.join(QStringLiteral(", "));
}

QString eventLine(const Event &event, const StateWatch &state)
{
    std::string line;
    appendEvent(&line, event, state);
    return QString::fromStdString(line);
}

void Printer::put(std::string_view lines)
{
    putBytes(lines);
    if (mLive && !mSink)
        standardOutput().flush(); // Whoever reads the pipe follows.
}

void Printer::put(const QString &line)
{
    mLine.clear();
    append(&mLine, line);
    put(mLine += '\n');
}

void Printer::putBytes(std::string_view lines)
{
    if (mSink)
        mSink(QByteArray(lines.data(), static_cast<int>(lines.size())));
    else
        standardOutput().bytes(lines);
}

// Code 3 comes with every frame.
bool Printer::isRepetition(const Event &event)
{
    if (!event.isLink())
        return false;
    const int code = std::get<int>(event.arguments.first());
    const bool isSame = code == mLinkCode;
    mLinkCode = code;
    return mTerse && isSame;
}

void Printer::print(const Event &event, const StateWatch &state)
{
    if (isRepetition(event))
        return;
    switch (mFormat) {
    case Text:
        mLine.clear();
        appendEvent(&mLine, event, state);
        put(mLine += '\n');
        break;
    case Json:
        printJson(event);
        break;
    case Csv:
        printCsv(event);
        break;
    }
}

void Printer::print(bool fromBox, const LineItem &item, double seconds, const QString &meaning)
{
    switch (mFormat) {
    case Text:
        printText(fromBox, item, seconds, meaning);
        break;
    case Json:
        printJson(fromBox, item, seconds, meaning);
        break;
    case Csv:
        beginRow(seconds, fromBox ? "box" : "host", kindName(item.kind));
        if (isFrame(item))
            append(&mLine, csvName(fromBox, item.dataType));
        mLine += ',';
        appendHex(&mLine, item.bytes);
        mLine += ",hex";
        endRow();
        break;
    }
}

void Printer::printText(bool fromBox, const LineItem &item, double seconds, const QString &meaning)
{
    mLine.clear();
    appendTime(&mLine, seconds);
    mLine += fromBox ? "box >  " : "host > ";
    appendItem(&mLine, fromBox, item);
    if (!meaning.isEmpty()) {
        mLine += ": ";
        append(&mLine, meaning);
    }
    put(mLine += '\n');
}

JsonLine &Printer::beginJson(double seconds)
{
    mJson.begin().key("time").seconds(microseconds(seconds));
    if (mOrigin > 0)
        mJson.key("epoch").seconds(mOrigin + microseconds(seconds));
    return mJson;
}

void Printer::printJson(bool fromBox, const LineItem &item, double seconds, const QString &meaning)
{
    mLine.clear();
    appendHex(&mLine, item.bytes);
    beginJson(seconds)
        .member("item", kindName(item.kind))
        .member("from", fromBox ? "box" : "host")
        .member("bytes", mLine.c_str());
    if (isFrame(item))
        mJson.member("type", typeText(item.dataType).c_str())
            .member("name", frameName(fromBox, item.dataType));
    if (item.kind == LineItem::BadChecksum)
        mJson.member("received", typeText(item.received).c_str())
            .member("expected", typeText(item.expected).c_str());
    if (!meaning.isEmpty())
        mJson.member("meaning", meaning);
    putBytes(mJson.end());
}

void Printer::printJson(const Event &event)
{
    beginJson(event.seconds).member("event", event.name).key("arguments").beginArray();
    for (const Value &argument : event.arguments)
        mJson.value(argument);
    mJson.endArray().key("changes").beginObject();
    for (const Change &change : event.changes) {
        const Getter &row = getter(change.getter);
        const Reading after = row.reading(change.after, change.unitAfter);
        mJson.key(row.name).beginObject().member("value", after.value);
        mJson.member("before", row.reading(change.before, change.unitBefore).value);
        if (row.words.count > 0 || row.isQuantity())
            mJson.member("text", change.afterText());
        if (!after.unit.isEmpty())
            mJson.member("unit", after.unit);
        mJson.endObject();
    }
    put(mJson.endObject().end());
}

// One row a value, so that a program filters by name.
void Printer::beginRow(double seconds, const char *source, const char *kind)
{
    mLine.clear();
    if (!std::exchange(mHasHead, true))
        mLine += "seconds,epoch,source,kind,name,value,unit\n";
    appendDecimal(&mLine, microseconds(seconds), 6);
    mLine += ',';
    appendDecimal(&mLine, mOrigin + microseconds(seconds), 6);
    for (const char *field : {source, kind}) {
        mLine += ',';
        mLine += field;
    }
    mLine += ',';
}

void Printer::endRow() { putBytes(mLine += '\n'); }

void Printer::printCsv(const Event &event)
{
    const bool isSignal = findSignal(event.name) >= 0;
    beginRow(event.seconds, "service", isSignal ? "signal" : "event");
    appendField(&mLine, event.name);
    mLine += ',';
    appendField(&mLine, plainText(event.arguments));
    mLine += ',';
    endRow();
    for (const Change &change : event.changes) {
        const Getter &row = getter(change.getter);
        const Reading after = row.reading(change.after, change.unitAfter);
        beginRow(event.seconds, "service", "value");
        mLine += row.name;
        mLine += ',';
        appendField(&mLine, fieldText(after));
        mLine += ',';
        appendField(&mLine, after.unit);
        endRow();
    }
}

void Printer::note(double seconds, const char *source, const QString &text, const Members &members)
{
    if (mFormat == Text) {
        mLine.clear();
        appendTime(&mLine, seconds);
        append(&mLine, QStringLiteral("%1 %2").arg(QLatin1String(source), -6).arg(text));
        put(mLine += '\n');
    } else if (mFormat == Json) {
        beginJson(seconds).member("event", source);
        add(mJson, members);
        putBytes(mJson.end());
    }
}

void Printer::heading(const QString &text, double seconds)
{
    if (mFormat == Text)
        return put(std::string_view("\n")), put(QStringLiteral("-- ") + text);
    if (mFormat == Json)
        putBytes(beginJson(seconds).member("say", text).end());
}

void Printer::outcome(const QString &text, const Members &members)
{
    if (mFormat != Json)
        return put(text);
    mJson.begin();
    add(mJson, members);
    putBytes(mJson.end());
}

void Printer::print(const Summary &summary, double seconds)
{
    if (mFormat == Text)
        printText(summary, seconds);
    else if (mFormat == Json)
        printJson(summary, seconds);
}

void Printer::print(const char *name, const QVector<QPair<QString, qint64>> &counts)
{
    if (mFormat == Text) {
        put(QStringLiteral("  ") + QLatin1String(name));
        for (const auto &row : counts)
            printCount(2, row.first, row.second);
    } else if (mFormat == Json) {
        mJson.begin().key(name).beginObject();
        for (const auto &row : counts)
            mJson.member(row.first.toUtf8().constData(), row.second);
        putBytes(mJson.endObject().end());
    }
}

void Printer::printText(const Summary &summary, double seconds)
{
    put(std::string_view("\n"));
    put(QStringLiteral("After %1 s").arg(seconds, 0, 'f', 1));
    printFrames("frames from the box", summary.fromBox, true);
    printFrames("frames to the box", summary.toBox, false);
    printCount(0, "good receipts to the box", summary.toBox.goodReceipts);
    printCount(0, "bad receipts to the box", summary.toBox.badReceipts);
    printCount(0, "bad checksums from the box", summary.fromBox.badChecksums);
    printCount(0, "noise bytes from the box", summary.fromBox.noiseBytes);
    // The bench's own host makes none.
    if (summary.toBox.badChecksums + summary.toBox.noiseBytes > 0) {
        printCount(0, "bad checksums to the box", summary.toBox.badChecksums);
        printCount(0, "noise bytes to the box", summary.toBox.noiseBytes);
    }
    printCount(0, "writes that the device did not take", summary.droppedWrites);
    if (!summary.events.isEmpty())
        put(QStringLiteral("  events"));
    for (auto row = summary.events.cbegin(); row != summary.events.cend(); ++row)
        printCount(2, row.key(), row.value());
}

void Printer::printFrames(const char *what, const LineCounts &counts, bool fromBox)
{
    printCount(0, QLatin1String(what), counts.frameTotal());
    for (auto row = counts.frames.cbegin(); row != counts.frames.cend(); ++row)
        printCount(2, hexByte(row.key()) + QLatin1Char(' ') + frameName(fromBox, row.key()),
                   row.value());
}

void Printer::printCount(int indent, const QString &what, qint64 count)
{
    put(QString(indent + 2, QLatin1Char(' ')) + what.leftJustified(36 - indent) +
        QString::number(count).rightJustified(7));
}

void Printer::printJson(const Summary &summary, double seconds)
{
    mJson.begin().key("summary").beginObject().key("seconds").seconds(microseconds(seconds));
    addCounts(mJson, "fromBox", summary.fromBox);
    addCounts(mJson, "toBox", summary.toBox);
    mJson.member("droppedWrites", summary.droppedWrites).key("events").beginObject();
    for (auto row = summary.events.cbegin(); row != summary.events.cend(); ++row)
        mJson.member(row.key().toLatin1().constData(), row.value());
    putBytes(mJson.endObject().endObject().end());
}

} // namespace bench
