#include "bench/recording/plotstate.h"

namespace bench {

namespace {

// The driving data are texts as the host shows them: a number and its unit, or "--".
PlotValue drivingData(const QString &text)
{
    int end = 0;
    while (end < text.size() && (text[end].isDigit() || text[end] == QLatin1Char('.')))
        ++end;
    bool isNumber = false;
    const double number = text.left(end).toDouble(&isNumber);
    if (isNumber)
        return {PlotValue::Number, number, {}, text.mid(end).trimmed()};
    return {PlotValue::Number, std::nan(""), QStringLiteral("none"), {}};
}

// A whole number of which several have a word is a choice; else a word stands for what is no
// number.
PlotValue plotValue(const Getter &row, const Value &value, const QString &unit)
{
    const QString text = row.text(value, {});
    const QString name = QLatin1String(row.name);
    if (isText(value))
        return name.startsWith(QLatin1String("drive.")) &&
                       !name.startsWith(QLatin1String("drive.title"))
                   ? drivingData(text)
                   : PlotValue{PlotValue::Text, 0, text, {}};
    if (isSwitch(value))
        return {PlotValue::Switch, numberOf(value), text, {}};
    if (std::holds_alternative<int>(value) && row.words.count > 1)
        return {PlotValue::Text, 0, text, {}};
    const QString number = plainText(value); // 12.3, not 12.300000190734863.
    if (number != text)
        return {PlotValue::Number, std::nan(""), text, unit};
    return {PlotValue::Number, number.toDouble(), {}, unit};
}

void plot(int index, const Value &value, const QString &unit, qint64 time, PlotPage *page)
{
    const Getter &row = getter(index);
    if (!row.alias)
        page->value(time, QLatin1String(row.name), plotValue(row, value, unit));
}

} // namespace

void plotState(const StateWatch &state, qint64 time, PlotPage *page)
{
    for (int index = 0; index < getterCount(); ++index)
        plot(index, state.value(index), state.unit(index), time, page);
}

void plotEvent(const Event &event, PlotPage *page)
{
    const qint64 time = qRound64(event.seconds * 1e6);
    if (event.name != QLatin1String("state")) // No signal: changes that none told of.
        page->signal(time, event.name, event.arguments);
    for (const Change &change : event.changes)
        plot(change.getter, change.after, change.unitAfter, time, page);
}

} // namespace bench
