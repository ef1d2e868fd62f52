#include "commandline.h"
#include "decodeprinter.h"
#include "pluginfile.h"

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
        {"csv", "Rows of seconds, from, what, type, name and value."},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"model", "The car model that was selected in the head unit (default 1).", "ID"},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString file = line.positionalArguments().value(0);
    const int carModel = line.number("model", 1, -32768, 65535);
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
    TraceDecoder decoder;
    const QString plugin = line.value("plugin");
    const QString problem = decoder.open(plugin.isEmpty() ? defaultPluginFile() : plugin, carModel);
    if (!problem.isEmpty())
        return fail(problem);

    DecodePrinter printer(&decoder, line.isSet("json")  ? DecodePrinter::Json
                                    : line.isSet("csv") ? DecodePrinter::Csv
                                                        : DecodePrinter::Text);
    TraceLine chunk;
    while (trace.next(&chunk))
        decoder.feed(chunk);
    decoder.finish();
    printer.printSummary();
    if (!trace.note().isEmpty())
        fail(trace.note());
    return trace.problem().isEmpty() ? int(Done) : int(fail(trace.problem()));
}

} // namespace bench
