#include "bench/recording/tracerecorder.h"

#include <serialport.h>

#include <QDateTime>

#include <algorithm>

namespace bench {

QString TraceWriter::open(const OutputTarget &target)
{
    mProblem = mFile.open(target, OutputFile::Live);
    return mProblem;
}

void TraceWriter::write(const TraceLine &line)
{
    for (int at = 0; at < line.bytes.size(); at += kMaxTraceBytes)
        put(traceText({line.time, line.port, line.fromBox, line.bytes.mid(at, kMaxTraceBytes)}));
}

void TraceWriter::comment(const QString &text) { put("# " + text.simplified().toUtf8() + '\n'); }

void TraceWriter::put(const QByteArray &bytes)
{
    if (!mProblem.isEmpty())
        return;
    mProblem = mFile.write(bytes);
    if (!mProblem.isEmpty())
        mProblem += QStringLiteral("; nothing more is recorded");
}

QString TraceRecorder::start(const OutputTarget &target, const QString &port, const TraceCar &car)
{
    QString problem = mWriter.open(target);
    if (!problem.isEmpty())
        return problem;
    mPort = port.isEmpty() ? QByteArray("-") : port.toLatin1().left(kMaxTracePort);
    std::replace_if(
        mPort.begin(), mPort.end(), [](char c) { return c <= ' ' || c > '~'; }, '_');
    mStart = QDateTime::currentMSecsSinceEpoch() * 1000;
    mClock.start();
    mWriter.comment(QString::fromLatin1(traceText(car).mid(2)));
    mWriter.comment(QStringLiteral("(seconds since 1970) port, R from the box or T to it, bytes"));

    using canservice::SerialMonitor;
    const SerialMonitor *monitor = SerialMonitor::instance();
    connect(monitor, &SerialMonitor::received, this,
            [this](const QByteArray &bytes) { record(true, bytes); });
    connect(monitor, &SerialMonitor::written, this,
            [this](const QByteArray &bytes, bool, bool delivered) {
                if (delivered)
                    record(false, bytes);
            });
    connect(monitor, &SerialMonitor::connectionChanged, this,
            [this](bool, const QString &message) { mWriter.comment(message); });
    return {};
}

void TraceRecorder::record(bool fromBox, const QByteArray &bytes)
{
    const qint64 now = mStart + mClock.nsecsElapsed() / 1000;
    mWriter.write({now, mPort, fromBox, bytes});
}

} // namespace bench
