#include "bench/commands/commandline.h"
#include "bench/commands/typefilter.h"
#include "bench/recording/decoder.h"
#include "bench/screen/output.h"
#include "bench/screen/printer.h"
#include "bench/screen/progress.h"

#include <QLoggingCategory>

#include <unistd.h>

namespace bench {

namespace {

constexpr double kEver = 1e12;       // s
constexpr qint64 kLinesAShow = 4096; // Some milliseconds.

} // namespace

int decodeCommand(const QStringList &arguments)
{
    CommandLine line(
        "decode", "[options] FILE",
        "Shows what the trace FILE holds: frames, receipts, bad checksums and noise, and\n"
        "for what came from the box the signals and the changed values that the plug-in\n"
        "itself gives for it. FILE may be what 'export' wrote, too; - is the standard\n"
        "input.",
        "canbench decode trip.trace\n"
        "canbench decode --csv trip.trace > trip.csv\n"
        "canbench decode --only doors,keyEvent --from 30 --to 90 trip.trace\n"
        "canbench decode --json trip.trace | grep doorChanged");
    line.addOptions({
        {"json", "One JSON object a line."},
        {"csv", "Rows of seconds, epoch, source, kind, name, value and unit."},
        {"only",
         "Show these frames and what came with them, or these signals: numbers and names, as "
         "0x24,doors,keyEvent.",
         "NAME,..."},
        {"from", "Show nothing before S seconds after the first line.", "S"},
        {"to", "Show nothing after S seconds after the first line.", "S"},
        {"raw", "FILE has the bytes of the box as they are, without times."},
        {"plugin", "Load FILE instead of the plug-in of this build.", "FILE"},
        {"model",
         "The car model that was selected in the head unit (default: the recording's, or 1).",
         "ID"},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString file = line.positionalArguments().value(0);
    int carModel = line.number("model", 1, 0, 65535);
    const double from = line.seconds("from", 0, 0, kEver);
    const double to = line.seconds("to", kEver, from, kEver);
    const TypeFilter only = readTypeFilter(&line, true);
    if (line.isWrong())
        return WrongUsage;
    if (file.isEmpty())
        return line.complain("name the trace to decode");
    if (line.isSet("json") && line.isSet("csv"))
        return line.complain("--json and --csv exclude each other");

    QLoggingCategory::setFilterRules("default=false"); // What the service says of the past.
    TraceReader trace(file, line.isSet("raw") ? TraceReader::RawBytes : TraceReader::Recording);
    if (!trace.problem().isEmpty())
        return fail(trace.problem());
    if (!line.isSet("model") && trace.car())
        carModel = trace.car()->model;
    else if (trace.car() && trace.car()->model != carModel)
        fail(QStringLiteral("read as of car model %1; the recording is of %2")
                 .arg(carModel)
                 .arg(trace.car()->model));
    TraceDecoder decoder;
    const QString problem = decoder.open(line.value("plugin"), carModel);
    if (!problem.isEmpty())
        return fail(problem);

    Printer printer(line.isSet("json")  ? Printer::Json
                    : line.isSet("csv") ? Printer::Csv
                                        : Printer::Text);
    printer.setTerse(printer.format() == Printer::Text);
    printer.setLive(false);
    // What happens belongs to the frame before it.
    bool isWantedFrame = only.isEmpty();
    const auto isInTime = [&] { return decoder.seconds() >= from && decoder.seconds() <= to; };
    QObject::connect(&decoder, &TraceDecoder::item, [&](bool fromBox, const LineItem &item) {
        if (!only.isEmpty()) {
            const bool isFrame = item.kind == LineItem::Frame || item.kind == LineItem::BadChecksum;
            const bool isWanted =
                isFrame && (fromBox ? only.fromBox : only.toBox).contains(item.dataType);
            isWantedFrame = fromBox ? isWanted : isWantedFrame;
            if (!isWanted)
                return;
        }
        if (isInTime())
            printer.print(fromBox, item, decoder.seconds());
    });
    QObject::connect(&decoder, &TraceDecoder::happened, [&](const Event &event) {
        if (isInTime() && (isWantedFrame || only.events.contains(event.name)))
            printer.print(event, decoder.state());
    });
    // The lines themselves may be on the terminal.
    Progress progress;
    const bool showsShare = progress.isVisible() && !isatty(STDOUT_FILENO) && trace.progress() >= 0;
    TraceLine chunk;
    for (qint64 lines = 0; trace.next(&chunk); ++lines) {
        if (lines == 0)
            printer.setOrigin(chunk.time);
        decoder.feed(chunk);
        if (showsShare && lines % kLinesAShow == 0)
            progress.showShare(trace.progress());
        if (trace.isWaiting())
            standardOutput().flush();
    }
    progress.clear();
    decoder.finish();
    printer.print(decoder.summary(), decoder.seconds());
    if (!trace.note().isEmpty())
        fail(trace.note());
    return trace.problem().isEmpty() ? int(Done) : int(fail(trace.problem()));
}

} // namespace bench
