// The runner's look at values and signals.
#include "bench/language/runner.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kTimesShown = 8;
constexpr int kSettle = 1000; // ms for a step's effect to be through: a resent frame takes 0.1 s.

QString timeText(int milliseconds)
{
    return milliseconds % 1000 == 0 ? QStringLiteral("%1s").arg(milliseconds / 1000)
                                    : QStringLiteral("%1ms").arg(milliseconds);
}

QString frameText(quint8 dataType, const QByteArray &payload)
{
    return QStringLiteral("frame %1 %2 %3")
        .arg(hexByte(dataType), frameName(false, dataType),
             QString::fromLatin1(payload.toHex(' ').toUpper()))
        .trimmed();
}

// \returns whether there was one.
template <typename Item, typename Condition>
bool takeFirst(QVector<Item> *items, Condition isWanted)
{
    const auto found = std::find_if(items->begin(), items->end(), isWanted);
    const bool isThere = found != items->end();
    if (isThere)
        items->erase(found);
    return isThere;
}

} // namespace

// A value is judged when the effect of the steps before is through, not while it is on its way:
// what was true before would pass for true.
void Runner::act(const steps::Expect &step)
{
    if (!std::exchange(mUnsettled, false) || mStage.isQuiet())
        return judge(step);
    wait(
        kSettle, [this] { return mStage.isQuiet(); }, [this, step](bool) { judge(step); });
}

void Runner::judge(const steps::Expect &step)
{
    const Expectation expectation = step.expectation;
    const auto isMet = [this, expectation] {
        return expectation.isMetBy(expectation.observable.value(mStage));
    };
    const auto conclude = [this, step, expectation](bool met) {
        if (met)
            return meet();
        const QString actual = expectation.observable.text(mStage);
        fail(expectation.text(), step.within,
             QStringLiteral("it is ") + (actual.isEmpty() ? QStringLiteral("\"\"") : actual));
    };
    if (step.within == 0 || isMet())
        return conclude(isMet());
    wait(step.within, isMet, conclude);
}

// Waits for something that comes, and tells what came instead.
void Runner::await(const char *kind, const QString &expected, bool absent, int within,
                   std::function<bool()> take, std::function<QStringList()> others)
{
    const auto conclude = [this, kind, expected, absent, within, others](bool came) {
        if (came != absent)
            return meet();
        if (came)
            return fail(QStringLiteral("no ") + expected, within, QStringLiteral("it came"));
        QStringList seen = others();
        const int hidden = seen.size() - kTimesShown;
        if (hidden > 0)
            seen = QStringList(QStringLiteral("%1 others").arg(hidden)) + seen.mid(hidden);
        fail(expected, within,
             seen.isEmpty() ? QStringLiteral("there was no %1 at all").arg(QLatin1String(kind))
                            : QStringLiteral("there was ") + seen.join(", "));
    };
    if (take())
        conclude(true);
    else
        wait(within, take, conclude);
}

void Runner::act(const steps::ExpectSignal &step)
{
    await(
        "signal", step.expectation.text(), step.absent, step.within,
        [this, step] {
            return takeFirst(&mSignals, [&step](const Signal &signal) {
                return step.expectation.isMetBy(signal.name, signal.arguments);
            });
        },
        [this] {
            QStringList others;
            for (const Signal &signal : qAsConst(mSignals))
                if (findSignal(signal.name) != linkSignal()) // It comes with every frame.
                    others += signalText(signal.name, signal.arguments);
            return others;
        });
}

void Runner::act(const steps::ExpectFrame &step)
{
    await(
        "frame", frameText(step.dataType, step.payload.value_or(QByteArray())), step.absent,
        step.within,
        [this, step] {
            return takeFirst(&mFrames, [&step](const LineItem &frame) {
                return frame.dataType == step.dataType &&
                       step.payload.value_or(frame.bytes) == frame.bytes;
            });
        },
        [this] {
            QStringList others;
            for (const LineItem &frame : qAsConst(mFrames))
                others += frameText(frame.dataType, frame.bytes);
            return others;
        });
}

void Runner::meet()
{
    ++mMet;
    emit met(mSteps.at(mNext - 1));
}

void Runner::fail(const QString &expected, int within, const QString &actual)
{
    mExpected = expected;
    mActual = actual;
    mFailure = QStringLiteral("expected %1").arg(expected);
    if (within > 0)
        mFailure += QStringLiteral(" within %1").arg(timeText(within));
    mFailure += QStringLiteral(", but ") + actual;
    finish(Unmet);
}

} // namespace bench
