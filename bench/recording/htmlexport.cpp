#include "bench/recording/htmlexport.h"

#include "bench/headunit/pluginfile.h"
#include "bench/recording/decoder.h"
#include "bench/recording/plotstate.h"

#include <QLoggingCategory>

namespace bench {

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
    QObject::connect(&decoder, &TraceDecoder::happened,
                     [&page](const Event &event) { plotEvent(event, &page); });
    plotState(decoder.state(), 0, &page);

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
