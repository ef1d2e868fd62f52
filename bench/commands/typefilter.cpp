#include "bench/commands/typefilter.h"

#include "bench/headunit/session.h"
#include "bench/language/closestname.h"
#include "bench/wire/reports.h"
#include "bench/wire/tables.h"

namespace bench {

TypeFilter readTypeFilter(CommandLine *line, bool withEvents)
{
    TypeFilter filter;
    const QStringList events = withEvents ? eventNames() : QStringList();
    const QStringList names = events + namesOf(kReports) + namesOf(kCommands);
    for (const QString &part : line->value("only").split(',')) {
        const QString name = part.trimmed();
        bool isNumber = false;
        const uint number = name.toUInt(&isNumber, 0);
        if (isNumber && number <= 0xFF) {
            filter.fromBox += static_cast<quint8>(number);
            filter.toBox += static_cast<quint8>(number);
        } else if (line->isSet("only") && !names.contains(name)) {
            line->complain(QStringLiteral("--only knows no frame '%1'").arg(name) +
                           possible(name, names, QStringLiteral("numbers such as 0x24, ")));
            return filter;
        }
        if (events.contains(name))
            filter.events += name;
        if (const Report *report = findNamed(kReports, name))
            filter.fromBox += static_cast<quint8>(report->type);
        if (const Command *command = findNamed(kCommands, name))
            filter.toBox += static_cast<quint8>(command->type);
    }
    return filter;
}

} // namespace bench
