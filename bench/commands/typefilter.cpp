#include "bench/commands/typefilter.h"

#include "bench/headunit/session.h"
#include "bench/language/closestname.h"
#include "bench/wire/named.h"
#include "bench/wire/reports.h"

namespace bench {

QString readTypeFilter(const QString &text, bool withEvents, TypeFilter *filter)
{
    const QStringList names =
        (withEvents ? eventNames() : QStringList()) + namesOf(kReports) + namesOf(kCommands);
    for (const QString &part : text.split(',')) {
        const QString name = part.trimmed();
        bool isNumber = false;
        const int number = name.toInt(&isNumber, 0);
        if (isNumber && number >= 0 && number <= 0xFF) {
            filter->fromBox += static_cast<quint8>(number);
            filter->toBox += static_cast<quint8>(number);
        } else if (!names.contains(name)) {
            return QStringLiteral("--only knows no frame '%1'").arg(name) +
                   possible(name, names, QStringLiteral("numbers such as 0x24, "));
        } else if (withEvents && eventNames().contains(name)) {
            filter->events += name;
        }
        if (const Report *report = findNamed(kReports, name))
            filter->fromBox += static_cast<quint8>(report->type);
        if (const Command *command = findNamed(kCommands, name))
            filter->toBox += static_cast<quint8>(command->type);
    }
    return {};
}

} // namespace bench
