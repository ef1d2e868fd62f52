#include "decodeprinter.h"

#include "commandline.h"
#include "datatypes.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace bench {

namespace {

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

QJsonObject itemJson(bool fromBox, const LineItem &item)
{
    QJsonObject object{
        {QStringLiteral("item"), QLatin1String(kindName(item.kind))},
        {QStringLiteral("from"), QLatin1String(fromBox ? "box" : "host")},
        {QStringLiteral("bytes"), QString::fromLatin1(item.bytes.toHex().toUpper())}};
    if (isFrame(item)) {
        object.insert(QStringLiteral("type"), hexByte(item.dataType));
        object.insert(QStringLiteral("name"), frameName(fromBox, item.dataType));
    }
    if (item.kind == LineItem::BadChecksum) {
        object.insert(QStringLiteral("received"), hexByte(item.received));
        object.insert(QStringLiteral("expected"), hexByte(item.expected));
    }
    return object;
}

QString csvRow(QStringList fields)
{
    for (QString &field : fields)
        if (field.contains(QLatin1Char(',')) || field.contains(QLatin1Char('"')) ||
            field.contains(QLatin1Char('\n')))
            field = QLatin1Char('"') + field.replace(QLatin1Char('"'), QStringLiteral("\"\"")) +
                    QLatin1Char('"');
    return fields.join(QLatin1Char(','));
}

QString timeText(double seconds) { return QString::number(seconds, 'f', 6); }

} // namespace

DecodePrinter::DecodePrinter(TraceDecoder *decoder, Format format)
    : mDecoder(decoder)
    , mFormat(format)
    , mEvents(format == Json ? EventPrinter::Json : EventPrinter::Text)
{
    mEvents.setTerse(format == Text);
    QObject::connect(decoder, &TraceDecoder::item,
                     [this](bool fromBox, const LineItem &item) { print(fromBox, item); });
    QObject::connect(decoder, &TraceDecoder::happened, [this](const Event &event) {
        if (mFormat == Csv)
            printCsv(event);
        else
            mEvents.print(event, mDecoder->state());
    });
    if (mFormat == Csv)
        say(QStringLiteral("seconds,from,what,type,name,value"));
}

void DecodePrinter::print(bool fromBox, const LineItem &item)
{
    const double seconds = mDecoder->seconds();
    const QString name = isFrame(item) ? frameName(fromBox, item.dataType) : QString();
    if (mFormat == Text) {
        say(QStringLiteral("%1  %2 %3")
                .arg(seconds, 9, 'f', 3)
                .arg(QLatin1String(fromBox ? "box >" : "host >"), -6)
                .arg(itemText(fromBox, item)));
    } else if (mFormat == Json) {
        QJsonObject object = itemJson(fromBox, item);
        object.insert(QStringLiteral("time"), timeText(seconds).toDouble());
        say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
    } else {
        say(csvRow({timeText(seconds), QLatin1String(fromBox ? "box" : "host"),
                    QLatin1String(kindName(item.kind)),
                    isFrame(item) ? hexByte(item.dataType) : QString(), name,
                    QString::fromLatin1(item.bytes.toHex().toUpper())}));
    }
}

void DecodePrinter::printCsv(const Event &event)
{
    const QString time = timeText(event.seconds);
    QStringList arguments;
    for (const QVariant &argument : event.arguments)
        arguments += valueText(argument);
    say(csvRow({time,
                QStringLiteral("service"),
                QStringLiteral("signal"),
                {},
                event.name,
                arguments.join(QLatin1Char(' '))}));
    for (const Snapshot::Change &change : event.changes)
        say(csvRow({time,
                    QStringLiteral("service"),
                    QStringLiteral("value"),
                    {},
                    QLatin1String(getter(change.getter).name),
                    change.after.text()}));
}

void DecodePrinter::printSummary()
{
    if (mFormat != Csv)
        mEvents.print(mDecoder->summary(), mDecoder->seconds());
}

} // namespace bench
