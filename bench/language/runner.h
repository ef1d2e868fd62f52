// Does steps, one after the other.
#pragma once

#include "bench/language/stage.h"
#include "bench/language/steps.h"

namespace bench {

/// Runs on the event loop: several runners may act on one stage at a time.
class Runner : public QObject
{
    Q_OBJECT

public:
    /// Unmet: an expectation was not met. Broken: the bench could not do a step.
    enum Result { Passed, Unmet, Broken, Aborted };
    Q_ENUM(Result)

    /// \param speed divides the scenario's own times; more than 0.
    Runner(const Stage &stage, double speed, QObject *parent = nullptr);

    /// Begins with the steps; finished() comes from the event loop. The latest steps must have
    /// finished.
    void run(const QVector<Step> &steps);
    /// The same, and runs the event loop meanwhile.
    Result play(const QVector<Step> &steps);
    /// A person has done what was asked.
    void answer() { mAnswered = true; }
    /// Ends the steps soon.
    void abort();

    /// After Unmet, what was expected and what was there; after Broken, why.
    QString failure() const { return mFailure; }
    /// The same in parts: what was expected, and what was there.
    QString expected() const { return mExpected; }
    QString actual() const { return mActual; }
    int line() const { return mLine; }     ///< Of the latest step.
    QString file() const { return mFile; } ///< Where that is, if it was included.
    int expectationsMet() const { return mMet; }

signals:
    /// A `say` step.
    void said(const QString &text);
    /// An `ask` step, which waits for answer().
    void asked(const QString &text);
    void met(const bench::Step &step);
    void finished(bench::Runner::Result result);

private:
    struct Signal
    {
        QString name;
        QVector<Value> arguments;
    };
    /// What a step waits for. Without `until`, the time is all.
    struct Pending
    {
        qint64 deadline = 0; ///< ms.
        std::function<bool()> until;
        std::function<void()> tick; ///< Each time that it is looked at.
        std::function<void(bool met)> after;
    };

    // One for each kind of step.
    void act(const steps::Do &step);
    void act(const steps::Say &step);
    void act(const steps::Ask &step);
    void act(const steps::Stop &);
    void act(const steps::Wait &step);
    void act(const steps::Set &step);
    void act(const steps::Ramp &step);
    void act(const steps::Press &step);
    void act(const steps::Hold &step);
    void act(const steps::Release &);
    void act(steps::Box state);
    void act(const steps::Frame &step);
    void act(const steps::FaultRates &step);
    void act(const steps::Expect &step);
    void act(const steps::ExpectSignal &step);
    void act(const steps::ExpectFrame &step);

    void advance();
    void look();
    void finish(Result result);
    void wait(int milliseconds, std::function<bool()> until = {},
              std::function<void(bool)> after = {}, std::function<void()> tick = {});
    void judge(const steps::Expect &step);
    void await(const char *kind, const QString &expected, bool absent, int within,
               std::function<bool()> take, std::function<QStringList()> others);
    void meet();
    void fail(const QString &expected, int within, const QString &actual);
    int scaled(int milliseconds) const;
    qint64 now() const { return mClock.milliseconds(); }

    const Stage mStage;
    const double mSpeed;
    SteadyClock mClock;
    QTimer mPoll;

    QVector<Step> mSteps;
    int mNext = 0;
    std::optional<Pending> mPending;
    bool mUnsettled = false; ///< A step has acted, and its effect may be on its way.
    // Since the last step that acted, and not expected yet.
    QVector<Signal> mSignals;
    QVector<LineItem> mFrames; ///< From the host.
    bool mRunning = false;
    bool mAnswered = false;
    Result mResult = Passed;
    int mLine = 0;
    int mMet = 0;
    QString mFile, mFailure, mExpected, mActual;
};

} // namespace bench
