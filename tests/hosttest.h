// What the tests on the host's side share: files, and programs that run and end.
#pragma once

#include "rows.h"

#include <QProcess>

/// \returns the path, or nothing when the file could not be written.
inline QString writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    return written ? path : QString();
}

/// What a program left behind. The code is -1 when it did not end, or not by itself.
struct Outcome
{
    int code;
    QByteArray output, errors;
};

inline Outcome run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    const bool ended = process.waitForFinished() && process.exitStatus() == QProcess::NormalExit;
    return {ended ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}
