#include "bench/commands/commandline.h"
#include "bench/headunit/pluginfile.h"
#include "bench/recording/decoder.h"
#include "bench/screen/printer.h"

#include <QLoggingCategory>

namespace bench {

int decodeCommand(const QStringList &arguments)
{
    CommandLine line(
        "decode", "[options] FILE",
        "Shows what the trace FILE holds: frames, receipts, bad checksums and noise, and\n"
        "for what came from the box the signals and the changed values that the plug-in\n"
        "itself gives for it. - is the standard input.",
        "canbench decode trip.trace\n"
        "canbench decode --csv trip.trace > trip.csv\n"
        "canbench decode --json trip.trace | grep doorChanged");
    line.addOptions({
        {"json", "One JSON object a line."},
        {"csv", "Rows of seconds, epoch, source, kind, name, value and unit."},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"model",
         "The car model that was selected in the head unit (default: the recording's, or 1).",
         "ID"},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString file = line.positionalArguments().value(0);
    int carModel = line.number("model", 1, -32768, 65535);
    if (line.isWrong())
        return WrongUsage;
    if (file.isEmpty())
        return line.complain("name the trace to decode");
    if (line.isSet("json") && line.isSet("csv"))
        return line.complain("--json and --csv exclude each other");

    QLoggingCategory::setFilterRules("default=false"); // What the service says of the past.
    TraceReader trace(file);
    if (!trace.problem().isEmpty())
        return fail(trace.problem());
    if (!line.isSet("model") && trace.car())
        carModel = trace.car()->model;
    else if (trace.car() && trace.car()->model != carModel)
        fail(QStringLiteral("read as of car model %1; the recording is of %2")
                 .arg(carModel)
                 .arg(trace.car()->model));
    TraceDecoder decoder;
    const QString plugin = line.value("plugin");
    const QString problem = decoder.open(plugin.isEmpty() ? defaultPluginFile() : plugin, carModel);
    if (!problem.isEmpty())
        return fail(problem);

    Printer printer(line.isSet("json")  ? Printer::Json
                    : line.isSet("csv") ? Printer::Csv
                                        : Printer::Text);
    printer.setTerse(printer.format() == Printer::Text);
    QObject::connect(&decoder, &TraceDecoder::item, [&](bool fromBox, const LineItem &item) {
        printer.print(fromBox, item, decoder.seconds());
    });
    QObject::connect(&decoder, &TraceDecoder::happened,
                     [&](const Event &event) { printer.print(event, decoder.state()); });
    TraceLine chunk;
    for (bool isFirst = true; trace.next(&chunk); isFirst = false) {
        if (isFirst)
            printer.setOrigin(chunk.time);
        decoder.feed(chunk);
    }
    decoder.finish();
    printer.print(decoder.summary(), decoder.seconds());
    if (!trace.note().isEmpty())
        fail(trace.note());
    return trace.problem().isEmpty() ? int(Done) : int(fail(trace.problem()));
}

} // namespace bench
