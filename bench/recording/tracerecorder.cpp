#include "bench/recording/tracerecorder.h"

#include <serialport.h>

#include <QDateTime>

#include <algorithm>

namespace bench {

QString TraceRecorder::start(const OutputTarget &target, const QString &port, const TraceCar &car)
{
    mProblem = mFile.open(target, OutputFile::Live);
    if (!mProblem.isEmpty())
        return mProblem;
    mPort = port.isEmpty() ? QByteArray("-") : port.toLatin1().left(kMaxTracePort);
    std::replace_if(
        mPort.begin(), mPort.end(), [](char c) { return c <= ' ' || c > '~'; }, '_');
    mStart = QDateTime::currentMSecsSinceEpoch() * 1000;
    mClock.start();
    put(traceText(car) + "\n# (seconds since 1970) port, R from the box or T to it, bytes\n");
    return {};
}

void TraceRecorder::watchPorts()
{
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
            [this](bool, const QString &message) { comment(message); });
}

void TraceRecorder::comment(const QString &text) { put("# " + text.simplified().toUtf8() + '\n'); }

void TraceRecorder::record(bool fromBox, const QByteArray &bytes)
{
    const qint64 now = mStart + mClock.nsecsElapsed() / 1000;
    for (int at = 0; at < bytes.size(); at += kMaxTraceBytes)
        put(traceText(TraceLine{now, mPort, fromBox, bytes.mid(at, kMaxTraceBytes)}));
}

void TraceRecorder::put(const QByteArray &bytes)
{
    if (mPort.isEmpty() || !mProblem.isEmpty())
        return;
    mProblem = mFile.write(bytes);
    if (!mProblem.isEmpty())
        mProblem += QStringLiteral("; nothing more is recorded");
}

} // namespace bench
