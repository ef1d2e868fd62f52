#include "bench/screen/boxprinter.h"

namespace bench {

void print(const BoxEvent &event, Printer &printer)
{
    const auto note = [&](const char *source, const QString &text,
                          const QVector<QPair<const char *, Value>> &members) {
        printer.note(event.seconds, source, text, members);
    };
    switch (event.kind) {
    case BoxEvent::Heard:
        return printer.print(false, event.item, event.seconds, event.text);
    case BoxEvent::Changed:
        return note("car", QStringLiteral("%1: %2 -> %3").arg(event.name, event.before, event.text),
                    {{"name", event.name}, {"before", event.before}, {"text", event.text}});
    case BoxEvent::Cluster:
        return note("cluster", QStringLiteral("shows ") + event.text, {{"text", event.text}});
    case BoxEvent::Puzzled:
        return note("box", event.text, {{"text", event.text}});
    case BoxEvent::Host:
        return note("host", event.text, {{"text", event.text}});
    case BoxEvent::Line:
        return note("line", event.text, {{"text", event.text}});
    }
}

} // namespace bench
