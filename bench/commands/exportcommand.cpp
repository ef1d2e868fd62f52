#include "bench/commands/commandline.h"
#include "bench/language/closestname.h"
#include "bench/recording/export.h"
#include "bench/recording/outputfile.h"
#include "bench/screen/output.h"
#include "bench/wire/tables.h"

#include <QFileInfo>

#include <unistd.h>

namespace bench {

namespace {

struct Format
{
    const char *name;
    QString (*write)(TraceReader &trace, QIODevice &out, const ExportOptions &options);
    bool isText;
};

constexpr Format kFormats[] = {
    {"candump", exportCandump, true},
    {"pcapng", exportPcapng, false},
    {"html", exportHtml, false},
};

} // namespace

int exportCommand(const QStringList &arguments)
{
    CommandLine line(
        "export", "--format candump|pcapng|html [-o OUT [--force]] FILE",
        "Writes the trace FILE for other tools; - is the standard input. candump: a log of\n"
        "CAN frames of up to 8 bytes each; the identifier tells the direction and where a\n"
        "chunk begins (100, 101 from the box, 200, 201 to it). pcapng: a packet for each\n"
        "chunk, with its direction, link type USER0. html: one page of plots for a browser,\n"
        "with what the plug-in makes of the recording.",
        "canbench export --format candump trip.trace | log2asc canbox\n"
        "canbench export --format pcapng -o trip.pcapng trip.trace\n"
        "canbench export --format html -o trip.html trip.trace");
    line.addOptions({
        {"format", "candump, pcapng or html.", "FORMAT"},
        {{"o", "output"}, "Write to OUT instead of the standard output.", "OUT"},
        {"plugin", "For html: load FILE instead of the plug-in of this build.", "FILE"},
        {"model",
         "For html: the car model that was selected in the head unit (default: the recording's, or "
         "1).",
         "ID"},
        {"force", "Replace OUT if it exists."},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString file = line.positionalArguments().value(0);
    const QString output = line.isSet("output") ? line.value("output") : "-";
    const Format *format = findNamed(kFormats, line.value("format"));
    ExportOptions options{QFileInfo(file).fileName(), line.value("plugin"), {}};
    if (line.isSet("model"))
        options.carModel = line.number("model", 1, -32768, 65535);
    if (line.isWrong())
        return WrongUsage;
    if (file.isEmpty())
        return line.complain("name the trace to export");
    if (!format)
        return line.complain(
            QStringLiteral("--format needs candump, pcapng or html%1")
                .arg(line.isSet("format")
                         ? QStringLiteral(", not '%1'%2")
                               .arg(line.value("format"),
                                    didYouMean(line.value("format"), namesOf(kFormats)))
                         : QString()));
    if (output == "-" && !format->isText && isatty(STDOUT_FILENO))
        return line.complain(
            QStringLiteral("%1 is not for a terminal to show; give -o OUT").arg(format->name));

    TraceReader trace(file);
    if (!trace.problem().isEmpty())
        return fail(trace.problem());
    OutputFile out;
    QString problem =
        out.open({output, {file}, line.isSet("force"), &standardOutputDevice()}, OutputFile::Whole);
    if (!problem.isEmpty())
        return fail(problem);
    problem = format->write(trace, out.device(), options);
    if (!problem.isEmpty())
        return fail(QStringLiteral("%1: %2").arg(output, problem));
    problem = out.commit();
    if (!problem.isEmpty())
        return fail(problem);
    if (!trace.note().isEmpty())
        fail(trace.note());
    return trace.problem().isEmpty() ? int(Done) : int(fail(trace.problem()));
}

} // namespace bench
