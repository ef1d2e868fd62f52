// What the measurements of the receive path share: the bytes, the way in, and the host's ears.
#pragma once

#include "tests/serviceprobe.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <vector>

namespace receivepath {

/// The climate frame, 14 bytes, all of which may come at any speed.
inline QByteArray climateFrame()
{
    return canbox::buildFrame(canbox::Inbound::Climate,
                              {0x44, 0x23, 0x10, 0x12, 0x20, 0x00, 0x14, 0x00, 0x21, 0x00});
}

/// \p stream in pieces of \p size bytes, the last one shorter if it must be.
inline std::vector<QByteArray> chunksOf(const QByteArray &stream, int size)
{
    std::vector<QByteArray> chunks;
    for (int at = 0; at < stream.size(); at += size)
        chunks.push_back(stream.mid(at, size));
    return chunks;
}

/// The process of a host that logs nothing and has no box: receipts go to a closed port.
class QuietHost
{
public:
    QuietHost()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        setDiagnostics(false);
    }

    static void setDiagnostics(bool on)
    {
        QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, on);
    }

    /// Hears the two signals that each climate frame causes.
    template <typename Subject>
    void listenTo(Subject &subject)
    {
        QObject::connect(&subject, &Subject::notifyCanbusStatus, [this](int) { ++mHeard; });
        QObject::connect(&subject, &Subject::acStatusChanged, [this] { ++mHeard; });
    }

    int heard() const { return mHeard; }

private:
    char mName[5] = "host";
    char *mArguments[2] = {mName, nullptr};
    int mCount = 1;
    QCoreApplication mApplication{mCount, mArguments};
    int mHeard = 0;
};

} // namespace receivepath
