#include "bench/commands/typefilter.h"

#include "bench/headunit/session.h"
#include "bench/language/closestname.h"
#include "bench/wire/reports.h"

namespace bench {

QString readTypeFilter(const QString &text, bool withEvents, TypeFilter *filter)
{
    QStringList names = withEvents ? eventNames() : QStringList();
    for (const Report &report : kReports)
        names += QLatin1String(report.name);
    for (const Command &command : kCommands)
        names += QLatin1String(command.name);
    for (const QString &part : text.split(',')) {
        const QString name = part.trimmed();
        bool isNumber = false;
        const int number = name.toInt(&isNumber, 0);
        if (isNumber && number >= 0 && number <= 0xFF) {
            filter->fromBox += static_cast<quint8>(number);
            filter->toBox += static_cast<quint8>(number);
        } else if (!names.contains(name)) {
            return QStringLiteral(
                       "--only knows no frame '%1'; possible: numbers such as 0x24, %2%3")
                .arg(name, names.join(", "), didYouMean(name, names));
        } else if (withEvents && eventNames().contains(name)) {
            filter->events += name;
        }
        for (const Report &report : kReports)
            if (name == QLatin1String(report.name))
                filter->fromBox += static_cast<quint8>(report.type);
        for (const Command &command : kCommands)
            if (name == QLatin1String(command.name))
                filter->toBox += static_cast<quint8>(command.type);
    }
    return {};
}

} // namespace bench
