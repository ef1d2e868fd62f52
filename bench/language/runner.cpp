#include "bench/language/runner.h"

#include <QEventLoop>

#include <algorithm>
#include <cmath>
#include <limits>

namespace bench {

namespace {

constexpr int kPollTick = 5; // ms; a getter may change without a signal.

// Whether the signals before the step may still be expected after it.
bool onlyLooks(const Action &action)
{
    return std::holds_alternative<steps::Say>(action) ||
           std::holds_alternative<steps::Wait>(action) || isExpectation(action);
}

// Who only waits for long does not need all that passes.
template <typename Item>
void appendLatest(QVector<Item> *items, const Item &item)
{
    constexpr int kMost = 4096;
    if (items->size() >= kMost)
        items->remove(0, kMost / 2);
    items->append(item);
}

} // namespace

Runner::Runner(const Stage &stage, double speed, QObject *parent)
    : QObject(parent)
    , mStage(stage)
    , mSpeed(speed)
{
    mPoll.setInterval(kPollTick);
    connect(&mPoll, &QTimer::timeout, this, &Runner::look);
    if (mStage.host)
        connect(mStage.host, &Session::happened, this, [this](const Event &event) {
            appendLatest(&mSignals, {event.name, event.arguments});
        });
    if (mStage.box)
        connect(&mStage.box->box(), &VirtualBox::heard, this, [this](const LineItem &item) {
            if (item.kind == LineItem::Frame)
                appendLatest(&mFrames, item);
        });
}

void Runner::run(const QVector<Step> &steps)
{
    mSteps = steps;
    mNext = 0;
    mLine = 0; // Whatever acts first is another step than the latest.
    mRunning = true;
    mPending.reset();
    mPoll.start(0); // The first step is done from the event loop, too.
}

Runner::Result Runner::play(const QVector<Step> &steps)
{
    QEventLoop loop;
    connect(this, &Runner::finished, &loop, &QEventLoop::quit);
    run(steps);
    loop.exec();
    return mResult;
}

void Runner::abort()
{
    if (mRunning)
        finish(Aborted);
}

void Runner::finish(Result result)
{
    mRunning = false;
    mPoll.stop();
    mPending.reset();
    mResult = result;
    emit finished(result);
}

// Does what can be done without waiting.
void Runner::advance()
{
    while (mRunning && !mPending) {
        if (mNext == mSteps.size())
            return finish(Passed);
        const Step step = mSteps.at(mNext++);
        // Several settings of one line are one step.
        if (!onlyLooks(step.action)) {
            if (step.line != mLine) {
                mSignals.clear();
                mFrames.clear();
            }
            mUnsettled = true;
        }
        mLine = step.line;
        mFile = step.file;
        std::visit([this](const auto &kind) { act(kind); }, step.action);
    }
}

void Runner::look()
{
    mPoll.setInterval(kPollTick);
    if (mPending) {
        if (mPending->tick)
            mPending->tick();
        const bool isMet = mPending->until && mPending->until();
        if (!isMet && now() < mPending->deadline)
            return;
        // What comes after may wait for something else.
        const Pending pending = *std::exchange(mPending, std::nullopt);
        if (pending.after)
            pending.after(isMet);
    }
    advance();
}

// The steps go on, later.
void Runner::wait(int milliseconds, std::function<bool()> until, std::function<void(bool)> after,
                  std::function<void()> tick)
{
    mPending = Pending{now() + milliseconds, std::move(until), std::move(tick), std::move(after)};
}

void Runner::act(const steps::Do &step) { step.action(mStage); }

void Runner::act(const steps::Say &step) { emit said(step.text); }

void Runner::act(const steps::Ask &step)
{
    mAnswered = false;
    emit asked(step.text);
    wait(std::numeric_limits<int>::max(), [this] { return mAnswered; });
}

void Runner::act(const steps::Stop &)
{
    if (mStage.host->isStarted())
        mStage.host->halt();
    wait(50); // The box hears of it.
}

void Runner::act(const steps::Wait &step)
{
    wait(step.real ? step.milliseconds : scaled(step.milliseconds));
}

void Runner::act(const steps::Set &step) { mStage.box->car().setRaw(step.id, step.raw); }

void Runner::act(const steps::Ramp &step)
{
    const int duration = std::max(1, scaled(step.milliseconds));
    QVector<int> from;
    for (const steps::Ramp::Lane &lane : step.lanes)
        from += lane.from.value_or(mStage.box->car().raw(lane.id));
    const qint64 begin = now();
    wait(duration, {}, {}, [this, step, from, begin, duration] {
        const double share = std::min(1.0, static_cast<double>(now() - begin) / duration);
        for (int i = 0; i < step.lanes.size(); ++i) {
            const int way = step.lanes.at(i).to - from.at(i);
            mStage.box->car().setRaw(step.lanes.at(i).id,
                                     from.at(i) + static_cast<int>(std::lround(share * way)));
        }
    });
}

void Runner::act(const steps::Press &step)
{
    mStage.box->car().pressKey(step.key);
    wait(step.milliseconds, {}, [this](bool) { mStage.box->car().releaseKey(); });
}

void Runner::act(const steps::Hold &step) { mStage.box->car().pressKey(step.key); }

void Runner::act(const steps::Release &) { mStage.box->car().releaseKey(); }

void Runner::act(steps::Box state)
{
    if (state == steps::Box::Unplugged)
        mStage.box->unplug();
    if (state == steps::Box::Unplugged || mStage.box->plug())
        return;
    mFailure = QStringLiteral("the box cannot be plugged in: %1")
                   .arg(mStage.box->terminal().errorString());
    finish(Broken);
}

void Runner::act(const steps::Frame &step) { mStage.box->box().sendFrame(step.type, step.payload); }

void Runner::act(const steps::FaultRates &step)
{
    FaultPlan plan = mStage.box->faults().plan();
    for (const auto &row : step.rates)
        plan.rate(row.first) = row.second;
    mStage.box->faults().setPlan(plan);
}

int Runner::scaled(int milliseconds) const
{
    return static_cast<int>(
        std::min<double>(milliseconds / mSpeed, std::numeric_limits<int>::max()));
}

} // namespace bench
