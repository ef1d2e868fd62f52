// Plays the steps of a scenario on a session with the embedded box.
#pragma once

#include "faultinjector.h"
#include "scenario.h"
#include "session.h"

#include <memory>

namespace bench {

class ScenarioPlayer : public QObject
{
    Q_OBJECT

public:
    /// Unmet: an expectation was not met. Broken: the bench could not do a step.
    enum Result { Passed, Unmet, Broken, Aborted };

    /// \param session is open and outlives the player.
    /// \param speed divides the scenario's own times; more than 0.
    /// \param seed the same seed gives the same faults.
    ScenarioPlayer(Session *session, double speed, quint32 seed, QObject *parent = nullptr);

    /// Plays all steps up to the first expectation that is not met. The event loop runs meanwhile.
    Result play(const Scenario &scenario);
    /// Ends play() soon, from a slot.
    void abort();

    /// After Unmet, what was expected and what was there; after Broken, why. And in which line.
    QString failure() const { return mFailure; }
    int line() const { return mLine; }
    int expectationsMet() const { return mMet; }
    /// What the faults were; null for a scenario without.
    const FaultInjector *faults() const { return mFaults.get(); }

signals:
    /// A `say` step.
    void said(const QString &text);

private:
    // One for each kind of step. Each returns whether the scenario can go on.
    bool act(const steps::Say &step);
    bool act(const steps::Start &);
    bool act(const steps::Stop &);
    bool act(const steps::Wait &step);
    bool act(const steps::Set &step);
    bool act(const steps::Ramp &step);
    bool act(const steps::Press &step);
    bool act(const steps::Hold &step);
    bool act(const steps::Release &);
    bool act(const steps::Call &step);
    bool act(steps::Box state);
    bool act(const steps::Frame &step);
    bool act(const steps::InjectFault &step);
    bool act(const steps::FaultRates &step);
    bool act(const steps::NoFaults &);
    bool act(const steps::Expect &step);
    bool act(const steps::ExpectSignal &step);

    struct Signal
    {
        QString name;
        QVariantList arguments;
    };

    FaultInjector &injector();
    bool pause(double milliseconds);
    bool waitUntil(const std::function<bool()> &condition, int milliseconds);
    bool takeSignal(const SignalExpectation &expectation);
    bool fail(const QString &expected, int within, const QString &actual);
    int scaled(int milliseconds) const;

    Session *const mSession;
    const double mSpeed;
    const quint32 mSeed;
    std::unique_ptr<FaultInjector> mFaults; ///< From the first fault step on.
    QVector<Signal> mSignals; ///< Since the last step that did something, and not expected yet.
    bool mAborted = false;
    int mLine = 0;
    int mMet = 0;
    QString mFailure;
};

} // namespace bench
