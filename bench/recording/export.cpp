#include "bench/recording/export.h"

#include "bench/recording/decoder.h"
#include "bench/recording/plotpage.h"

#include <QLoggingCategory>

namespace bench {

namespace {

QByteArray canFrames(const TraceLine &line)
{
    constexpr int kFrameSize = 8;
    const QByteArray text = traceText(line);
    const QByteArray start = text.left(text.indexOf(' ')) + ' ' + line.port;
    const char *first = line.fromBox ? " 100#" : " 200#";
    const char *next = line.fromBox ? " 101#" : " 201#";
    QByteArray frames;
    for (int at = 0; at < line.bytes.size(); at += kFrameSize)
        frames += start + (at == 0 ? first : next) +
                  line.bytes.mid(at, kFrameSize).toHex().toUpper() + '\n';
    return frames;
}

} // namespace

QString exportCandump(TraceReader &trace, QIODevice &out, const ExportOptions &)
{
    TraceLine line;
    while (trace.next(&line)) {
        const QByteArray frames = canFrames(line);
        if (out.write(frames) != frames.size())
            return out.errorString();
    }
    return {};
}

QString exportHtml(TraceReader &trace, QIODevice &out, const ExportOptions &options)
{
    QLoggingCategory::setFilterRules(QStringLiteral("default=false")); // It speaks of the past.
    const int recorded = trace.car() ? trace.car()->model : 1;
    PlotPage::About about{options.title, options.carModel.value_or(recorded), 0};
    PlotPage page; // Told to the decoder's very end.
    TraceDecoder decoder;
    const QString problem = decoder.open(options.plugin, about.carModel);
    if (!problem.isEmpty())
        return problem;

    const auto microseconds = [](double seconds) { return qRound64(seconds * 1e6); };
    QObject::connect(&decoder, &TraceDecoder::item, [&](bool fromBox, const LineItem &item) {
        page.item(microseconds(decoder.seconds()), fromBox, item);
    });
    QObject::connect(&decoder, &TraceDecoder::happened,
                     [&page](const Event &event) { page.event(event); });
    page.state(decoder.state(), 0);

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
