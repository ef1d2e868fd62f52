#include "bench/commands/scenariofile.h"

#include "bench/commands/commandline.h"
#include "bench/screen/output.h"

#include <QFile>

namespace bench {

QString readScenarioFile(const QString &name, QByteArray *text)
{
    constexpr qint64 kLargest = 1024 * 1024;
    QFile file(name);
    const bool isOpen =
        name == "-" ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    if (!isOpen)
        return QStringLiteral("cannot read '%1': %2").arg(name, file.errorString());
    *text = file.read(kLargest + 1);
    if (file.error() != QFileDevice::NoError)
        return QStringLiteral("cannot read '%1': %2").arg(name, file.errorString());
    if (text->size() > kLargest)
        return QStringLiteral("'%1' is larger than 1 MiB; that is no scenario").arg(name);
    return {};
}

int complainAbout(const QString &file, const QVector<Mistake> &mistakes)
{
    constexpr int kShown = 20;
    for (const Mistake &mistake : mistakes.mid(0, kShown))
        standardError().line(QStringLiteral("%1:%2:%3: %4")
                                 .arg(mistake.file.isEmpty() ? file : mistake.file)
                                 .arg(mistake.line)
                                 .arg(mistake.column)
                                 .arg(mistake.text));
    if (mistakes.size() > kShown)
        fail(QStringLiteral("%1 more mistakes in '%2'").arg(mistakes.size() - kShown).arg(file));
    return WrongUsage;
}

} // namespace bench
