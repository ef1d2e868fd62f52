#include "eventprinter.h"

#include "bench/screen/output.h"
#include "datatypes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace bench {

namespace {

const QLatin1String kLinkSignal("notifyCanbusStatus");

QJsonValue jsonValue(const QVariant &value)
{
    // The shortest number that is the float, not its exact value as a double.
    if (value.userType() == QMetaType::Float)
        return valueText(value).toDouble();
    return QJsonValue::fromVariant(value);
}

QString argumentText(const QVariantList &arguments)
{
    QStringList texts;
    for (const QVariant &argument : arguments)
        texts += valueText(argument);
    return texts.join(QStringLiteral(", "));
}

QString changeText(const QVector<Snapshot::Change> &changes)
{
    QStringList texts;
    for (const Snapshot::Change &change : changes)
        texts += QStringLiteral("%1: %2 -> %3")
                     .arg(QLatin1String(getter(change.getter).name), change.before.text(),
                          change.after.text());
    return texts.join(QStringLiteral(", "));
}

QString linkText(int code)
{
    return code == 3   ? QStringLiteral("the box answers")
           : code == 0 ? QStringLiteral("the link is lost")
                       : QString();
}

QString eventText(const Event &event, const Snapshot &state)
{
    if (event.name == QLatin1String("device"))
        return event.arguments.value(1).toString();
    if (event.name == QLatin1String("cluster"))
        return QStringLiteral("shows '%1' '%2' '%3' '%4'")
            .arg(event.arguments.value(0).toString(), event.arguments.value(1).toString(),
                 event.arguments.value(2).toString(), event.arguments.value(3).toString());
    if (event.name == kLinkSignal)
        return linkText(event.arguments.value(0).toInt());
    if (event.name == QLatin1String("acStatusChanged"))
        return climateLine(state);
    if (event.name == QLatin1String("sigVersionData"))
        return state.value("version").text();
    return changeText(event.changes);
}

QJsonObject countJson(const LineCounts &counts)
{
    QJsonObject frames;
    for (auto row = counts.frames.cbegin(); row != counts.frames.cend(); ++row)
        frames.insert(hexByte(row.key()), row.value());
    return {{QStringLiteral("frames"), frames},
            {QStringLiteral("goodReceipts"), counts.goodReceipts},
            {QStringLiteral("badReceipts"), counts.badReceipts},
            {QStringLiteral("badChecksums"), counts.badChecksums},
            {QStringLiteral("noiseBytes"), counts.noiseBytes}};
}

QString jsonLine(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QString jsonLine(const Event &event)
{
    QJsonArray arguments;
    for (const QVariant &argument : event.arguments)
        arguments.append(jsonValue(argument));
    QJsonObject changes;
    for (const Snapshot::Change &change : event.changes) {
        QJsonObject value{{QStringLiteral("value"), jsonValue(change.after.value)}};
        if (!change.after.unit.isEmpty())
            value.insert(QStringLiteral("unit"), change.after.unit);
        changes.insert(QLatin1String(getter(change.getter).name), value);
    }
    return jsonLine(QJsonObject{{QStringLiteral("time"), std::round(event.seconds * 1e6) / 1e6},
                                {QStringLiteral("event"), event.name},
                                {QStringLiteral("arguments"), arguments},
                                {QStringLiteral("changes"), changes}});
}

} // namespace

QString eventLine(const Event &event, const Snapshot &state)
{
    const bool hasArguments = event.name == kLinkSignal || event.name == QLatin1String("keyEvent");
    const QString arguments =
        hasArguments ? QStringLiteral("(%1)").arg(argumentText(event.arguments)) : QString();
    const QString text = eventText(event, state);
    const QString call = event.name + arguments;
    return QStringLiteral("%1  %2")
        .arg(event.seconds, 9, 'f', 3)
        .arg(text.isEmpty() ? call : call.leftJustified(24) + text);
}

void EventPrinter::write(const QString &line)
{
    standardOutput().line(line);
    standardOutput().flush(); // Whoever reads the pipe follows live.
}

void EventPrinter::print(const Event &event, const Snapshot &state)
{
    if (event.name == kLinkSignal) {
        const int code = event.arguments.value(0).toInt();
        if (mTerse && code == mLinkCode)
            return;
        mLinkCode = code;
    }
    write(mFormat == Text ? eventLine(event, state) : jsonLine(event));
}

void EventPrinter::heading(const QString &text)
{
    if (mFormat != Text)
        return;
    write({});
    write(QStringLiteral("-- ") + text);
}

void EventPrinter::print(const Summary &summary, double seconds)
{
    if (mFormat == Text)
        printText(summary, seconds);
    else
        printJson(summary, seconds);
}

void EventPrinter::print(const QString &name, const QVector<QPair<QString, qint64>> &counts)
{
    QJsonObject object;
    if (mFormat == Text)
        write(QStringLiteral("  ") + name);
    for (const auto &row : counts) {
        if (mFormat == Text)
            writeCount(2, row.first, row.second);
        object.insert(row.first, row.second);
    }
    if (mFormat == Json)
        write(jsonLine({{name, object}}));
}

void EventPrinter::printText(const Summary &summary, double seconds)
{
    write({});
    write(QStringLiteral("After %1 s").arg(seconds, 0, 'f', 1));
    writeFrames("frames from the box", summary.fromBox, inboundName);
    writeFrames("frames to the box", summary.toBox, outboundName);
    writeCount(0, "good receipts to the box", summary.toBox.goodReceipts);
    writeCount(0, "bad receipts to the box", summary.toBox.badReceipts);
    writeCount(0, "bad checksums from the box", summary.fromBox.badChecksums);
    writeCount(0, "noise bytes from the box", summary.fromBox.noiseBytes);
    writeCount(0, "writes that the device did not take", summary.droppedWrites);
    write(QStringLiteral("  events"));
    for (auto row = summary.events.cbegin(); row != summary.events.cend(); ++row)
        writeCount(2, row.key(), row.value());
}

void EventPrinter::writeFrames(const char *what, const LineCounts &counts,
                               QString (*nameOf)(quint8))
{
    writeCount(0, QLatin1String(what), counts.frameTotal());
    for (auto row = counts.frames.cbegin(); row != counts.frames.cend(); ++row)
        writeCount(2, hexByte(row.key()) + QLatin1Char(' ') + nameOf(row.key()), row.value());
}

void EventPrinter::writeCount(int indent, const QString &what, qint64 count)
{
    write(QString(indent + 2, QLatin1Char(' ')) + what.leftJustified(36 - indent) +
          QString::number(count).rightJustified(7));
}

void EventPrinter::printJson(const Summary &summary, double seconds)
{
    QJsonObject events;
    for (auto row = summary.events.cbegin(); row != summary.events.cend(); ++row)
        events.insert(row.key(), row.value());
    write(jsonLine({{QStringLiteral("summary"),
                     QJsonObject{{QStringLiteral("seconds"), std::round(seconds * 1e6) / 1e6},
                                 {QStringLiteral("fromBox"), countJson(summary.fromBox)},
                                 {QStringLiteral("toBox"), countJson(summary.toBox)},
                                 {QStringLiteral("droppedWrites"), summary.droppedWrites},
                                 {QStringLiteral("events"), events}}}}));
}

} // namespace bench
