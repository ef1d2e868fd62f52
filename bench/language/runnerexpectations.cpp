// The player's look at values and signals.
#include "scenarioplayer.h"

#include <QStringList>

#include <algorithm>

namespace bench {

namespace {

constexpr int kSignalsShown = 8;
const QLatin1String kSignOfLife("notifyCanbusStatus"); // With every frame.

QString timeText(int milliseconds)
{
    return milliseconds % 1000 == 0 ? QStringLiteral("%1s").arg(milliseconds / 1000)
                                    : QStringLiteral("%1ms").arg(milliseconds);
}

} // namespace

bool ScenarioPlayer::act(const steps::Expect &step)
{
    const auto look = [&] { return observe(*mSession, step.expectation.name); };
    if (waitUntil([&] { return step.expectation.isMetBy(look().value); }, step.within)) {
        ++mMet;
        return true;
    }
    const QString actual = look().text();
    return fail(step.expectation.text(), step.within,
                QStringLiteral("it is ") + (actual.isEmpty() ? QStringLiteral("\"\"") : actual));
}

bool ScenarioPlayer::act(const steps::ExpectSignal &step)
{
    const bool came = waitUntil([&] { return takeSignal(step.expectation); }, step.within);
    if (came != step.absent) {
        ++mMet;
        return true;
    }
    if (came)
        return fail(QStringLiteral("no ") + step.expectation.text(), step.within,
                    QStringLiteral("it came"));
    QStringList others;
    for (const Signal &signal : qAsConst(mSignals))
        if (signal.name != kSignOfLife)
            others += signalText(signal.name, signal.arguments);
    const int hidden = others.size() - kSignalsShown;
    if (hidden > 0)
        others = QStringList(QStringLiteral("%1 others").arg(hidden)) + others.mid(hidden);
    return fail(step.expectation.text(), step.within,
                others.isEmpty() ? QStringLiteral("there was no signal at all")
                                 : QStringLiteral("there was ") + others.join(", "));
}

bool ScenarioPlayer::takeSignal(const SignalExpectation &expectation)
{
    const auto found = std::find_if(mSignals.begin(), mSignals.end(), [&](const Signal &signal) {
        return expectation.isMetBy(signal.name, signal.arguments);
    });
    if (found == mSignals.end())
        return false;
    mSignals.erase(found);
    return true;
}

bool ScenarioPlayer::fail(const QString &expected, int within, const QString &actual)
{
    mFailure = QStringLiteral("expected %1").arg(expected);
    if (within > 0)
        mFailure += QStringLiteral(" within %1").arg(timeText(within));
    mFailure += QStringLiteral(", but ") + actual;
    return false;
}

} // namespace bench
