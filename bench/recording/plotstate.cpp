// What the host sees, for the page of plots.
#include "bench/headunit/session.h"
#include "bench/recording/plotpage.h"

namespace bench {

namespace {

// A whole number of which several have a word is a choice; else a word stands for what is no
// number.
PlotValue plotValue(const Getter &row, const Value &value, const QString &unit)
{
    const double none = std::nan("");
    const QString text = row.text(value, {});
    const QString plain = plainText(value); // 12.3, not 12.300000190734863.
    if (row.isQuantity()) {
        const std::optional<Quantity> quantity = quantityIn(plain);
        return quantity ? PlotValue{PlotValue::Number, quantity->number, {}, quantity->unit}
                        : PlotValue{PlotValue::Number, none, text, {}};
    }
    if (isSwitch(value))
        return {PlotValue::Switch, numberOf(value), text, {}};
    if (isText(value) || (std::holds_alternative<int>(value) && row.words.count > 1))
        return {PlotValue::Text, 0, text, {}};
    return plain == text ? PlotValue{PlotValue::Number, plain.toDouble(), {}, unit}
                         : PlotValue{PlotValue::Number, none, text, unit};
}

} // namespace

void PlotPage::state(const StateWatch &state, qint64 time)
{
    for (int index = 0; index < getterCount(); ++index)
        if (!getter(index).alias)
            value(time, getter(index).name,
                  plotValue(getter(index), state.value(index), state.unit(index)));
}

void PlotPage::event(const Event &event)
{
    const qint64 time = qRound64(event.seconds * 1e6);
    if (event.name != QLatin1String("state")) // No signal: changes that none told of.
        signal(time, event.name, event.arguments);
    for (const Change &change : event.changes) {
        const Getter &row = getter(change.getter);
        value(time, row.name, plotValue(row, change.after, change.unitAfter));
    }
}

} // namespace bench
