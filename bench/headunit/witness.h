// Whether the host was ever shown a value that the box did not send.
#pragma once

#include "linecutter.h"
#include "session.h"

#include <QSet>

namespace bench {

/// Collects what the getters and key events of a session showed, and what the box sent before any
/// fault touched it. What those frames mean is asked of the plug-in itself, afterwards: what it
/// shows for them and nothing else is what may have been shown.
class ValueWitness : public QObject
{
    Q_OBJECT

public:
    /// Watches from now on.
    explicit ValueWitness(Session *session, QObject *parent = nullptr);

    struct Verdict
    {
        int shown = 0;     ///< Different values of all getters.
        int neverSent = 0; ///< Those of them that no frame of the box means.
        /// Those of neverSent that came in damaged frames whose checksum is right: a sum cannot see
        /// two errors that cancel out, such as bytes that changed places.
        int unseenDamage = 0;
        QStringList unexplained; ///< The rest of neverSent, as `door.rear is true`.
    };

    /// To be called when the session is gone, because the plug-in has one service.
    /// \returns an empty text, or why the plug-in could not be asked.
    QString judge(const QString &plugin, int carModel, Verdict *verdict) const;

private:
    QSet<QString> mShown;
    QSet<QByteArray> mIsSent;
    QList<QByteArray> mSent;   ///< Each frame once, in the order of sending.
    QSet<QByteArray> mDamaged; ///< Frames with a right checksum that were never sent.
    LineCutter mReceived{false};
};

} // namespace bench
