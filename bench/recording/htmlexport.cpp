#include "bench/recording/htmlexport.h"

#include "bench/host/pluginfile.h"
#include "bench/recording/plotpage.h"
#include "bench/trace/decode.h"

#include <QLoggingCategory>

namespace bench {

namespace {

// Numbers of the getters that stand for words.
constexpr struct
{
    const char *begin; ///< Of the names that they are for.
    double number;
    const char *word;
} kWords[] = {
    {"climate.left", -100, "low"},   {"climate.left", -101, "high"},
    {"climate.left", -1, "none"},    {"climate.right", -100, "low"},
    {"climate.right", -101, "high"}, {"climate.right", -1, "none"},
    {"radar.", 255, "none"},         {"tyre.", -1, "none"},
    {"battery.voltage", -1, "none"},
};

PlotValue number(const QString &name, double number, const QString &unit)
{
    for (const auto &row : kWords)
        if (row.number == number && name.startsWith(QLatin1String(row.begin)))
            return {PlotValue::Number, std::nan(""), QLatin1String(row.word), unit};
    return {PlotValue::Number, number, {}, unit};
}

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

PlotValue plotValue(const QString &name, const Snapshot::Value &value)
{
    switch (value.value.userType()) {
    case QMetaType::Bool:
        return {PlotValue::Switch, value.value.toBool() ? 1.0 : 0.0, {}, {}};
    case QMetaType::QString: {
        const bool isDrivingData = name.startsWith(QLatin1String("drive.")) &&
                                   !name.startsWith(QLatin1String("drive.title"));
        const QString text = value.value.toString();
        return isDrivingData ? drivingData(text) : PlotValue{PlotValue::Text, 0, text, {}};
    }
    case QMetaType::Float: // 12.3, not 12.300000190734863.
        return number(name, valueText(value.value).toDouble(), value.unit);
    default:
        if (name.startsWith(QLatin1String("unit."))) // A setting: the unit is what it says.
            return {PlotValue::Text, 0, value.text(), {}};
        return number(name, value.value.toDouble(), value.unit);
    }
}

} // namespace

QString exportHtml(TraceReader &trace, QIODevice &out, const HtmlOptions &options)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default=false")); // It speaks of the past.
    TraceDecoder decoder;
    const QString problem = decoder.open(
        options.plugin.isEmpty() ? defaultPluginFile() : options.plugin, options.carModel);
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
        for (const Snapshot::Change &change : event.changes) {
            const QString name = QLatin1String(getter(change.getter).name);
            page.value(time, name, plotValue(name, change.after));
        }
    });
    for (int index = 0; index < getterCount(); ++index) {
        const QString name = QLatin1String(getter(index).name);
        page.value(0, name, plotValue(name, decoder.state().at(index)));
    }

    PlotPage::About about{options.title, options.carModel, 0};
    TraceLine line;
    for (bool isFirst = true; trace.next(&line); isFirst = false) {
        if (isFirst)
            about.start = line.time;
        decoder.feed(line);
        page.chunk(microseconds(decoder.seconds()), line.port, line.fromBox, line.bytes.size());
    }
    decoder.finish();
    page.setAbout(about);
    page.setProblem(trace.problem());
    return page.write(out);
}

} // namespace bench
