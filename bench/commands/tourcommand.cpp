// A guided run: each step says what it does, and the events show what comes of it.
#include "bench/commands/performance.h"
#include "bench/language/parser.h"

#include <QFile>
#include <QLoggingCategory>

namespace bench {

namespace {

QByteArray resource(const char *name)
{
    QFile file(QStringLiteral(":/scenarios/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

int tourCommand(const QStringList &arguments)
{
    CommandLine line(
        "tour", "[--full]",
        "A run of 15 s on the embedded box that shows the link, the version, each kind of\n"
        "report, the host's commands, a damaged frame and a pulled cable, and ends with\n"
        "a summary. It fails if anything is not as it should be.",
        "canbench tour\n"
        "canbench tour --full");
    line.addOption({"full", "Also a silence of the box that loses the link: 36 s more."});
    if (const auto code = line.read(arguments))
        return *code;

    QLoggingCategory::setFilterRules("default=false"); // The tour tells what happens.
    const Scenario scenario =
        parseScenario(resource("tour.scenario") +
                      (line.isSet("full") ? resource("tour_silence.part") : QByteArray()));
    std::unique_ptr<LineInput> nobody; // Nothing is asked.
    return perform(scenario, QStringLiteral("The tour"), 1, {}, &nobody);
}

} // namespace bench
