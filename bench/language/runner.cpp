#include "scenarioplayer.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace bench {

namespace {

constexpr int kRampTick = 20; // ms
constexpr int kPollTick = 5;  // ms; a getter may change without a signal.

// Whether the signals before the step may still be expected after it.
bool onlyLooks(const Action &action)
{
    return std::holds_alternative<steps::Say>(action) ||
           std::holds_alternative<steps::Wait>(action) ||
           std::holds_alternative<steps::Expect>(action) ||
           std::holds_alternative<steps::ExpectSignal>(action);
}

} // namespace

ScenarioPlayer::ScenarioPlayer(Session *session, double speed, quint32 seed, QObject *parent)
    : QObject(parent)
    , mSession(session)
    , mSpeed(speed)
    , mSeed(seed)
{
    connect(session, &Session::happened, this, [this](const Event &event) {
        mSignals.append({event.name, event.arguments});
    });
}

ScenarioPlayer::Result ScenarioPlayer::play(const Scenario &scenario)
{
    for (const Step &step : scenario.steps) {
        // Several settings of one line are one step.
        if (!onlyLooks(step.action) && step.line != mLine)
            mSignals.clear();
        mLine = step.line;
        const bool goOn = std::visit([this](const auto &kind) { return act(kind); }, step.action);
        if (mAborted)
            return Aborted;
        if (!goOn)
            return std::holds_alternative<steps::Box>(step.action) ? Broken : Unmet;
    }
    return Passed;
}

void ScenarioPlayer::abort() { mAborted = true; }

bool ScenarioPlayer::act(const steps::Say &step)
{
    emit said(step.text);
    return true;
}

bool ScenarioPlayer::act(const steps::Start &)
{
    mSession->start();
    return true;
}

bool ScenarioPlayer::act(const steps::Stop &)
{
    mSession->stop();
    return true;
}

bool ScenarioPlayer::act(const steps::Wait &step)
{
    return pause(step.real ? step.milliseconds : scaled(step.milliseconds));
}

bool ScenarioPlayer::act(const steps::Set &step)
{
    mSession->car().setRaw(step.value, step.raw);
    return true;
}

bool ScenarioPlayer::act(const steps::Ramp &step)
{
    const double duration = std::max(1, scaled(step.milliseconds));
    QVector<int> from;
    for (const steps::Ramp::Lane &lane : step.lanes)
        from += lane.from.value_or(mSession->car().raw(lane.value));
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        const double share = std::min(1.0, static_cast<double>(clock.elapsed()) / duration);
        for (int i = 0; i < step.lanes.size(); ++i) {
            const int way = step.lanes.at(i).to - from.at(i);
            mSession->car().setRaw(step.lanes.at(i).value,
                                   from.at(i) + static_cast<int>(std::lround(share * way)));
        }
        if (share >= 1)
            return true;
        if (!pause(kRampTick))
            return false;
    }
}

bool ScenarioPlayer::act(const steps::Press &step)
{
    mSession->car().pressKey(step.key);
    const bool goOn = pause(step.milliseconds);
    mSession->car().releaseKey();
    return goOn;
}

bool ScenarioPlayer::act(const steps::Hold &step)
{
    mSession->car().pressKey(step.key);
    return true;
}

bool ScenarioPlayer::act(const steps::Release &)
{
    mSession->car().releaseKey();
    return true;
}

bool ScenarioPlayer::act(const steps::Call &step)
{
    step.operation(mSession->service());
    return true;
}

bool ScenarioPlayer::act(steps::Box state)
{
    switch (state) {
    case steps::Box::Silent:
    case steps::Box::Speaking:
        mSession->box().setSilent(state == steps::Box::Silent);
        break;
    case steps::Box::Unplugged:
        mSession->unplug();
        break;
    case steps::Box::Plugged:
        if (!mSession->plug()) {
            mFailure = QStringLiteral("the box cannot be plugged in: %1")
                           .arg(mSession->terminal().errorString());
            return false;
        }
        break;
    }
    return true;
}

bool ScenarioPlayer::act(const steps::Frame &step)
{
    mSession->box().sendFrame(step.dataType, step.payload);
    return true;
}

bool ScenarioPlayer::act(const steps::InjectFault &step)
{
    injector().inject(step.fault);
    return true;
}

bool ScenarioPlayer::act(const steps::FaultRates &step)
{
    FaultPlan plan = injector().plan();
    for (const auto &row : step.rates)
        plan.rate(row.first) = row.second;
    injector().setPlan(plan);
    return true;
}

bool ScenarioPlayer::act(const steps::NoFaults &)
{
    injector().setPlan({});
    return true;
}

FaultInjector &ScenarioPlayer::injector()
{
    if (!mFaults)
        mFaults = std::make_unique<FaultInjector>(mSession, mSeed);
    return *mFaults;
}

int ScenarioPlayer::scaled(int milliseconds) const
{
    return static_cast<int>(
        std::min<double>(milliseconds / mSpeed, std::numeric_limits<int>::max()));
}

bool ScenarioPlayer::pause(double milliseconds)
{
    return !waitUntil([] { return false; }, static_cast<int>(milliseconds)) && !mAborted;
}

bool ScenarioPlayer::waitUntil(const std::function<bool()> &condition, int milliseconds)
{
    if (condition())
        return true;
    QEventLoop loop;
    QTimer poll, deadline;
    bool met = false;
    const auto look = [&] {
        met = condition();
        if (met || mAborted)
            loop.quit();
    };
    connect(&poll, &QTimer::timeout, &loop, look);
    connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    poll.start(kPollTick);
    deadline.setSingleShot(true);
    deadline.setTimerType(Qt::PreciseTimer);
    deadline.start(milliseconds);
    loop.exec();
    return met || (!mAborted && condition());
}

} // namespace bench
