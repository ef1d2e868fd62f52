#include "bench/commands/commandline.h"
#include "bench/recording/export.h"
#include "bench/recording/outputfile.h"
#include "bench/screen/output.h"

#include <unistd.h>

namespace bench {

namespace {

struct Format
{
    const char *name;
    QString (*write)(TraceReader &trace, QIODevice &out);
    bool isText;
};

constexpr Format kFormats[] = {
    {"candump", exportCandump, true},
    {"pcapng", exportPcapng, false},
};

const Format *findFormat(const QString &name)
{
    for (const Format &format : kFormats)
        if (name == QLatin1String(format.name))
            return &format;
    return nullptr;
}

} // namespace

int exportCommand(const QStringList &arguments)
{
    CommandLine line(
        "export", "--format candump|pcapng [-o OUT [--force]] FILE",
        "Writes the trace FILE for other tools; - is the standard input. candump: a log of\n"
        "CAN frames of up to 8 bytes each; the identifier tells the direction and where a\n"
        "chunk begins (100, 101 from the box, 200, 201 to it). pcapng: a packet for each\n"
        "chunk, with its direction, link type USER0.",
        "canbench export --format candump trip.trace | log2asc canbox\n"
        "canbench export --format pcapng -o trip.pcapng trip.trace");
    line.addOptions({
        {"format", "candump or pcapng.", "FORMAT"},
        {{"o", "output"}, "Write to OUT instead of the standard output.", "OUT"},
        {"force", "Replace OUT if it exists."},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString file = line.positionalArguments().value(0);
    const QString output = line.isSet("output") ? line.value("output") : "-";
    const Format *format = findFormat(line.value("format"));
    if (file.isEmpty())
        return line.complain("name the trace to export");
    if (!format)
        return line.complain("--format needs candump or pcapng");
    if (output == "-" && !format->isText && isatty(STDOUT_FILENO))
        return line.complain("pcapng is no text for a terminal; give -o OUT");

    TraceReader trace(file);
    if (!trace.problem().isEmpty())
        return fail(trace.problem());
    OutputFile out;
    QString problem =
        out.open({output, {file}, line.isSet("force"), &standardOutputDevice()}, OutputFile::Whole);
    if (!problem.isEmpty())
        return fail(problem);
    problem = format->write(trace, out.device());
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
