// The runner's look at values and signals.
#include "bench/language/runner.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kSignalsShown = 8;
constexpr int kSettle = 1000; // ms for a step's effect to be through: a resent frame takes 0.1 s.

QString timeText(int milliseconds)
{
    return milliseconds % 1000 == 0 ? QStringLiteral("%1s").arg(milliseconds / 1000)
                                    : QStringLiteral("%1ms").arg(milliseconds);
}

} // namespace

// A value is judged when the effect of the steps before is through, not while it is on its way:
// what was true before would pass for true.
bool Runner::act(const steps::Expect &step)
{
    if (!std::exchange(mUnsettled, false) || mStage.isQuiet())
        return judge(step);
    return wait(
        kSettle, [this] { return mStage.isQuiet(); }, [this, step](bool) { return judge(step); });
}

bool Runner::judge(const steps::Expect &step)
{
    const Expectation expectation = step.expectation;
    const auto isMet = [this, expectation] {
        return expectation.isMetBy(expectation.observable.value(mStage));
    };
    const auto conclude = [this, step, expectation](bool met) {
        if (met) {
            ++mMet;
            return true;
        }
        const QString actual = expectation.observable.text(mStage);
        return fail(expectation.text(), step.within,
                    QStringLiteral("it is ") +
                        (actual.isEmpty() ? QStringLiteral("\"\"") : actual));
    };
    if (step.within == 0 || isMet())
        return conclude(isMet());
    return wait(step.within, isMet, conclude);
}

bool Runner::act(const steps::ExpectSignal &step)
{
    const auto conclude = [this, step](bool came) {
        if (came != step.absent) {
            ++mMet;
            return true;
        }
        if (came)
            return fail(QStringLiteral("no ") + step.expectation.text(), step.within,
                        QStringLiteral("it came"));
        QStringList others;
        for (const Signal &signal : qAsConst(mSignals))
            if (findSignal(signal.name) != linkSignal()) // It comes with every frame.
                others += signalText(signal.name, signal.arguments);
        const int hidden = others.size() - kSignalsShown;
        if (hidden > 0)
            others = QStringList(QStringLiteral("%1 others").arg(hidden)) + others.mid(hidden);
        return fail(step.expectation.text(), step.within,
                    others.isEmpty() ? QStringLiteral("there was no signal at all")
                                     : QStringLiteral("there was ") + others.join(", "));
    };
    if (takeSignal(step.expectation))
        return conclude(true);
    return wait(
        step.within, [this, step] { return takeSignal(step.expectation); }, conclude);
}

bool Runner::takeSignal(const SignalExpectation &expectation)
{
    const auto found = std::find_if(mSignals.begin(), mSignals.end(), [&](const Signal &signal) {
        return expectation.isMetBy(signal.name, signal.arguments);
    });
    if (found == mSignals.end())
        return false;
    mSignals.erase(found);
    return true;
}

bool Runner::fail(const QString &expected, int within, const QString &actual)
{
    mExpected = expected;
    mActual = actual;
    mFailure = QStringLiteral("expected %1").arg(expected);
    if (within > 0)
        mFailure += QStringLiteral(" within %1").arg(timeText(within));
    mFailure += QStringLiteral(", but ") + actual;
    return false;
}

} // namespace bench
