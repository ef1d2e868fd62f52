#include "bench/recording/htmlexport.h"
#include "commandline.h"
#include "export.h"

#include <QFileInfo>

#include <unistd.h>

namespace bench {

namespace {

struct Format
{
    const char *name;
    QString (*write)(TraceReader &trace, QIODevice &out, const HtmlOptions &options);
    bool isText;
};

constexpr Format kFormats[] = {
    {"candump", [](auto &trace, auto &out, auto &) { return exportCandump(trace, out); }, true},
    {"pcapng", [](auto &trace, auto &out, auto &) { return exportPcapng(trace, out); }, false},
    {"html", exportHtml, true},
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
        "export", "--format candump|pcapng|html [-o OUT] FILE",
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
        {"model", "For html: the car model that was selected in the head unit (default 1).", "ID"},
    });
    if (const auto code = line.read(arguments, 1))
        return *code;
    const QString file = line.positionalArguments().value(0);
    const QString output = line.value("output");
    const Format *format = findFormat(line.value("format"));
    const HtmlOptions options{QFileInfo(file).fileName(), line.value("plugin"),
                              line.number("model", 1, -32768, 65535)};
    if (line.isWrong())
        return WrongUsage;
    if (file.isEmpty())
        return line.complain("name the trace to export");
    if (!format)
        return line.complain("--format needs candump, pcapng or html");
    if (output.isEmpty() && !format->isText && isatty(STDOUT_FILENO))
        return line.complain("pcapng is no text for a terminal; give -o OUT");

    TraceReader trace(file);
    if (!trace.problem().isEmpty()) // Before OUT is overwritten.
        return fail(trace.problem());
    QFile out(output);
    if (!(output.isEmpty() ? out.open(stdout, QIODevice::WriteOnly)
                           : out.open(QIODevice::WriteOnly | QIODevice::Truncate)))
        return fail(QStringLiteral("%1: %2").arg(output, out.errorString()));
    QString problem = format->write(trace, out, options);
    if (problem.isEmpty() && !out.flush())
        problem = out.errorString();
    if (!problem.isEmpty())
        return fail(output.isEmpty() ? problem : QStringLiteral("%1: %2").arg(output, problem));
    if (!trace.note().isEmpty())
        fail(trace.note());
    return trace.problem().isEmpty() ? int(Done) : int(fail(trace.problem()));
}

} // namespace bench
