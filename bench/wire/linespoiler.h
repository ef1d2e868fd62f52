// Faults in what passes along a line that is not ours.
#pragma once

#include "bench/wire/linecutter.h"
#include "bench/wire/linefaults.h"

#include <QPair>
#include <QTimer>
#include <QVector>

namespace bench {

/// One direction of a line, with faults in the bytes of its frames and with frames that nobody
/// sent. A frame is held back until it is complete, or for 500 ms; all else passes as it is.
class LineSpoiler : public QObject
{
    Q_OBJECT

public:
    /// \param seed the same seed gives the same faults for the same bytes.
    explicit LineSpoiler(quint32 seed, QObject *parent = nullptr);

    /// \returns an empty text, or which fault of the plan is none of bytes or frames.
    QString setPlan(const FaultPlan &plan);
    /// \param time in microseconds.
    void feed(const QByteArray &bytes, qint64 time);

    /// The kinds of fault that happened, and how often.
    QVector<QPair<QString, qint64>> summary() const { return summaryOf(mCounts); }

signals:
    void passed(const QByteArray &bytes);

private:
    void onItem(const LineItem &item);
    QByteArray spoiled(const QByteArray &frame);

    LineCutter mCutter{LineCutter::Box};
    QTimer mHeldTmr; ///< Until a frame that does not go on is let go.
    FaultRandom mRandom;
    FaultPlan mPlan;
    FaultCounts mCounts{};
};

} // namespace bench
