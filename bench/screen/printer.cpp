#include "bench/screen/printer.h"

#include "bench/screen/output.h"

#include <cmath>

namespace bench {

namespace {

qint64 microseconds(double seconds) { return static_cast<qint64>(std::llround(seconds * 1e6)); }

QString argumentText(const QVector<Value> &arguments)
{
    QStringList texts;
    for (const Value &argument : arguments)
        texts += plainText(argument);
    return texts.join(QStringLiteral(", "));
}

QString changeText(const QVector<Change> &changes)
{
    QStringList texts;
    for (const Change &change : changes)
        texts += QStringLiteral("%1: %2 -> %3")
                     .arg(QLatin1String(getter(change.getter).name), change.beforeText(),
                          change.afterText());
    return texts.join(QStringLiteral(", "));
}

QString linkText(int code)
{
    return code == 3   ? QStringLiteral("the box answers")
           : code == 0 ? QStringLiteral("the link is lost")
                       : QString();
}

QString eventText(const Event &event, const StateWatch &state)
{
    if (event.name == QLatin1String("device"))
        return plainText(event.arguments.value(1));
    if (event.name == QLatin1String("cluster"))
        return QStringLiteral("shows '%1' '%2' '%3' '%4'")
            .arg(plainText(event.arguments.value(0)), plainText(event.arguments.value(1)),
                 plainText(event.arguments.value(2)), plainText(event.arguments.value(3)));
    if (event.isLink())
        return linkText(std::get<int>(event.arguments.first()));
    if (event.name == QLatin1String("acStatusChanged"))
        return climateLine(state);
    if (event.name == QLatin1String("sigVersionData"))
        return state.text("version");
    return changeText(event.changes);
}

const char *kindName(LineItem::Kind kind)
{
    switch (kind) {
    case LineItem::Frame:
        return "frame";
    case LineItem::BadChecksum:
        return "bad checksum";
    case LineItem::Incomplete:
        return "incomplete frame";
    case LineItem::GoodReceipt:
        return "good receipt";
    case LineItem::BadReceipt:
        return "bad receipt";
    case LineItem::Noise:
        break;
    }
    return "noise";
}

bool isFrame(const LineItem &item)
{
    return item.kind == LineItem::Frame || item.kind == LineItem::BadChecksum;
}

QString frameName(bool fromBox, quint8 dataType)
{
    return fromBox ? inboundName(dataType) : outboundName(dataType);
}

// A column of its own for the number would be empty in most rows.
QString csvName(bool fromBox, quint8 dataType)
{
    const QString name = frameName(fromBox, dataType);
    return name == QLatin1String("unknown") ? hexByte(dataType) : name;
}

QString itemText(bool fromBox, const LineItem &item)
{
    const QString kind = QLatin1String(kindName(item.kind));
    const QString bytes = QString::fromLatin1(item.bytes.toHex(' ').toUpper());
    if (item.kind == LineItem::GoodReceipt || item.kind == LineItem::BadReceipt)
        return kind;
    if (!isFrame(item))
        return QStringLiteral("%1 %2").arg(kind, bytes);
    const QString frame = QStringLiteral("%1 %2 %3")
                              .arg(hexByte(item.dataType), frameName(fromBox, item.dataType),
                                   bytes.isEmpty() ? QStringLiteral("without payload") : bytes);
    if (item.kind == LineItem::Frame)
        return frame;
    return QStringLiteral("%1, bad checksum %2 instead of %3")
        .arg(frame, hexByte(item.received), hexByte(item.expected));
}

void add(JsonLine &json, const Value &value)
{
    std::visit([&json](const auto &content) { json.value(content); }, value);
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

void put(const QString &line)
{
    standardOutput().line(line);
    standardOutput().flush(); // Whoever reads the pipe follows live.
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
    const bool hasArguments = event.isLink() || event.name == QLatin1String("keyEvent");
    const QString arguments =
        hasArguments ? QStringLiteral("(%1)").arg(argumentText(event.arguments)) : QString();
    const QString text = eventText(event, state);
    const QString call = event.name + arguments;
    return QStringLiteral("%1  %2")
        .arg(event.seconds, 9, 'f', 3)
        .arg(text.isEmpty() ? call : call.leftJustified(24) + text);
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
        put(eventLine(event, state));
        break;
    case Json:
        printJson(event);
        break;
    case Csv:
        printCsv(event);
        break;
    }
}

void Printer::print(bool fromBox, const LineItem &item, double seconds)
{
    switch (mFormat) {
    case Text:
        printText(fromBox, item, seconds);
        break;
    case Json:
        printJson(fromBox, item, seconds);
        break;
    case Csv:
        row(seconds, fromBox ? "box" : "host", kindName(item.kind),
            isFrame(item) ? csvName(fromBox, item.dataType) : QString(),
            QString::fromLatin1(item.bytes.toHex().toUpper()));
        break;
    }
}

void Printer::printText(bool fromBox, const LineItem &item, double seconds)
{
    put(QStringLiteral("%1  %2 %3")
            .arg(seconds, 9, 'f', 3)
            .arg(QLatin1String(fromBox ? "box >" : "host >"), -6)
            .arg(itemText(fromBox, item)));
}

JsonLine &Printer::beginJson(double seconds)
{
    mJson.begin().key("time").seconds(microseconds(seconds));
    if (mOrigin > 0)
        mJson.key("epoch").seconds(mOrigin + microseconds(seconds));
    return mJson;
}

void Printer::printJson(bool fromBox, const LineItem &item, double seconds)
{
    beginJson(seconds)
        .member("item", kindName(item.kind))
        .member("from", fromBox ? "box" : "host")
        .member("bytes", item.bytes.toHex().toUpper().constData());
    if (isFrame(item))
        mJson.member("type", hexByte(item.dataType))
            .member("name", frameName(fromBox, item.dataType));
    if (item.kind == LineItem::BadChecksum)
        mJson.member("received", hexByte(item.received)).member("expected", hexByte(item.expected));
    standardOutput().bytes(mJson.end());
}

void Printer::printJson(const Event &event)
{
    beginJson(event.seconds).member("event", event.name).key("arguments").beginArray();
    for (const Value &argument : event.arguments)
        add(mJson, argument);
    mJson.endArray().key("changes").beginObject();
    for (const Change &change : event.changes) {
        const Getter &row = getter(change.getter);
        add(mJson.key(row.name).beginObject().key("value"), change.after);
        add(mJson.key("before"), change.before);
        if (row.words.count > 0)
            mJson.member("text", change.afterText());
        if (!change.unitAfter.isEmpty())
            mJson.member("unit", change.unitAfter);
        mJson.endObject();
    }
    standardOutput().bytes(mJson.endObject().end());
    standardOutput().flush();
}

// One row a value, so that a program filters by name.
void Printer::row(double seconds, const char *source, const char *kind, const QString &name,
                  const QString &value, const QString &unit)
{
    QByteArray bytes;
    if (!std::exchange(mHasHead, true))
        bytes += "seconds,epoch,source,kind,name,value,unit\n";
    bytes += QByteArray::number(seconds, 'f', 6) + ',';
    bytes += QByteArray::number(static_cast<double>(mOrigin + microseconds(seconds)) / 1e6, 'f', 6);
    for (const QString &field :
         {QString(QLatin1String(source)), QString(QLatin1String(kind)), name, value, unit}) {
        bytes += ',';
        appendCsvField(&bytes, field);
    }
    standardOutput().bytes(bytes + '\n');
}

void Printer::printCsv(const Event &event)
{
    const bool isSignal = findSignal(event.name) >= 0;
    row(event.seconds, "service", isSignal ? "signal" : "event", event.name,
        argumentText(event.arguments));
    for (const Change &change : event.changes) {
        const Value &value = change.after;
        row(event.seconds, "service", "value", QLatin1String(getter(change.getter).name),
            isSwitch(value) ? QString::number(numberOf(value)) : plainText(value),
            change.unitAfter);
    }
}

void Printer::heading(const QString &text, double seconds)
{
    if (mFormat == Text)
        return put({}), put(QStringLiteral("-- ") + text);
    if (mFormat == Json)
        standardOutput().bytes(beginJson(seconds).member("say", text).end());
}

void Printer::outcome(const QString &text, const QVector<QPair<const char *, Value>> &members)
{
    if (mFormat != Json)
        return put(text);
    mJson.begin();
    for (const auto &member : members)
        add(mJson.key(member.first), member.second);
    standardOutput().bytes(mJson.end());
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
        standardOutput().bytes(mJson.endObject().end());
    }
}

void Printer::printText(const Summary &summary, double seconds)
{
    put({});
    put(QStringLiteral("After %1 s").arg(seconds, 0, 'f', 1));
    printFrames("frames from the box", summary.fromBox, inboundName);
    printFrames("frames to the box", summary.toBox, outboundName);
    printCount(0, "good receipts to the box", summary.toBox.goodReceipts);
    printCount(0, "bad receipts to the box", summary.toBox.badReceipts);
    printCount(0, "bad checksums from the box", summary.fromBox.badChecksums);
    printCount(0, "noise bytes from the box", summary.fromBox.noiseBytes);
    printCount(0, "writes that the device did not take", summary.droppedWrites);
    put(QStringLiteral("  events"));
    for (auto row = summary.events.cbegin(); row != summary.events.cend(); ++row)
        printCount(2, row.key(), row.value());
}

void Printer::printFrames(const char *what, const LineCounts &counts, QString (*nameOf)(quint8))
{
    printCount(0, QLatin1String(what), counts.frameTotal());
    for (auto row = counts.frames.cbegin(); row != counts.frames.cend(); ++row)
        printCount(2, hexByte(row.key()) + QLatin1Char(' ') + nameOf(row.key()), row.value());
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
    standardOutput().bytes(mJson.endObject().endObject().end());
}

} // namespace bench
