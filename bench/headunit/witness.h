// Whether the host's view is the car's.
#pragma once

#include "bench/headunit/session.h"

#include <QPair>
#include <QSet>

namespace bench {

/// Watches a session on the embedded box and compares, over all values, what the host shows with
/// what the wire means.
class Witness : public QObject
{
    Q_OBJECT

public:
    /// Past: of all that was shown, too, in memory that grows with it.
    enum Scope { Present, Past };

    /// Watches from now on.
    explicit Witness(Session *session, Scope scope = Past, QObject *parent = nullptr);

    /// How the host's getters differ from the car now, as `door.rear is closed instead of open`. A
    /// report that the host has not had yet, or that a frame of no car has overwritten, is left
    /// out.
    QStringList differences() const;
    /// Lets the event loop run until the two can be compared: the link is up and nothing is on its
    /// way.
    /// \return whether they can be compared now; false after \p milliseconds in which they could
    /// not
    bool settle(int milliseconds) const;

    /// Of what the host has shown, as many values as were never sent by the box.
    struct History
    {
        int shown = 0;   ///< Different values.
        int reports = 0; ///< Good frames of a known type and length that reached the host.
        int unsent = 0;  ///< Those of them that the box never sent.
        int damaged = 0; ///< Values shown that only such a frame means: a sum cannot see two errors
                         ///< that cancel out, such as bytes that changed places.
        QStringList unexplained; ///< Values shown that no frame means, as `door.rear is open`.
    };
    const History &history() const { return mHistory; }

    /// The history and the differences as rows for a summary.
    QVector<QPair<QString, qint64>> summary(const QStringList &differences) const;

private:
    using Statement = QPair<int, QString>; ///< A getter, or -1 for the key, and its text.

    bool isComparable() const;
    void onSent(Inbound type, const QByteArray &payload);
    void onReceived(const LineItem &item);
    void onEvent(const Event &event);
    void note(const Statement &statement);
    QVector<Statement> meaningOf(Inbound type, const QByteArray &payload) const;

    Session *const mSession;
    const Scope mScope;
    QSet<QByteArray> mSent; ///< Data type and payload.
    QSet<Statement> mMeant;
    QSet<Statement> mMeantByDamage;
    QSet<Statement> mShown;
    QSet<int> mReceived; ///< Data types that the host has had.
    History mHistory;
};

} // namespace bench
