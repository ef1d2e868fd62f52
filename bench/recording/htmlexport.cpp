#include "bench/recording/htmlexport.h"

#include "bench/headunit/pluginfile.h"
#include "bench/recording/decoder.h"
#include "bench/recording/plotpage.h"

#include <QLoggingCategory>

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
        return {PlotValue::Number, number, {}, text.mid(end)};
    return {PlotValue::Number, std::nan(""), QStringLiteral("none"), {}};
}

// One word stands for a number that is none; more are a choice, but for temperatures.
PlotValue plotValue(const Getter &row, const Value &value, const QString &unit)
{
    const QString text = row.text(value, {});
    if (isText(value))
        return qstrncmp(row.name, "drive.title", 11) != 0 && qstrncmp(row.name, "drive.", 6) == 0
                   ? drivingData(text)
                   : PlotValue{PlotValue::Text, 0, text, {}};
    if (isSwitch(value))
        return {PlotValue::Switch, numberOf(value), text, {}};
    if (std::holds_alternative<int>(value) && row.words.count > 1)
        return {PlotValue::Text, 0, text, {}};
    const QString number = plainText(value); // 12.3, not 12.300000190734863.
    const bool isWord = number != text;
    return {PlotValue::Number, isWord ? std::nan("") : number.toDouble(), isWord ? text : QString(),
            unit};
}

} // namespace

QString exportHtml(TraceReader &trace, QIODevice &out, const HtmlOptions &options)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default=false")); // It speaks of the past.
    const int recorded = trace.car() ? trace.car()->model : 1;
    PlotPage::About about{options.title, options.carModel.value_or(recorded), 0};
    TraceDecoder decoder;
    const QString problem = decoder.open(
        options.plugin.isEmpty() ? defaultPluginFile() : options.plugin, about.carModel);
    if (!problem.isEmpty())
        return problem;

    PlotPage page;
    const auto microseconds = [](double seconds) { return qRound64(seconds * 1e6); };
    QObject::connect(&decoder, &TraceDecoder::item, [&](bool fromBox, const LineItem &item) {
        page.item(microseconds(decoder.seconds()), fromBox, item);
    });
    QObject::connect(&decoder, &TraceDecoder::happened, [&](const Event &event) {
        const qint64 time = microseconds(event.seconds);
        if (event.name != QLatin1String("state")) // No signal: changes that none told of.
            page.signal(time, event.name, event.arguments);
        for (const Change &change : event.changes) {
            const Getter &row = getter(change.getter);
            if (!row.alias)
                page.value(time, QLatin1String(row.name),
                           plotValue(row, change.after, change.unitAfter));
        }
    });
    for (int index = 0; index < getterCount(); ++index) {
        const Getter &row = getter(index);
        if (!row.alias)
            page.value(0, QLatin1String(row.name),
                       plotValue(row, decoder.state().value(index), decoder.state().unit(index)));
    }

    TraceLine line;
    while (trace.next(&line)) {
        decoder.feed(line);
        page.chunk(microseconds(decoder.seconds()), line.port, line.fromBox, line.bytes.size());
    }
    decoder.finish();
    about.start = decoder.origin();
    page.setAbout(about);
    page.setProblem(trace.problem());
    return page.write(out);
}

} // namespace bench
