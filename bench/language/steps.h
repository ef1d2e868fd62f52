// A scenario: a text with a line a step, read into steps before anything runs.
#pragma once

#include "carvalues.h"
#include "faults.h"
#include "scenarioexpectation.h"
#include "scenarioline.h"

#include <QByteArray>
#include <QPair>
#include <QVector>

#include <functional>
#include <optional>
#include <variant>

class CanServiceBase;

namespace bench {

namespace steps {

/// A heading in the output.
struct Say
{
    QString text;
};
struct Start
{
};
struct Stop
{
};
struct Wait
{
    int milliseconds;
    bool real; ///< Not the scenario's time: the wait is for a timer of the service.
};
struct Set
{
    CarValue value;
    int raw;
};
/// Values that move evenly, side by side.
struct Ramp
{
    struct Lane
    {
        CarValue value;
        std::optional<int> from; ///< Raw; without it, from where the value is.
        int to;                  ///< Raw.
    };
    QVector<Lane> lanes;
    int milliseconds; ///< Scenario's time.
};
struct Press
{
    quint8 key;
    int milliseconds; ///< Real: whether a press is long is for the service to decide.
};
struct Hold
{
    quint8 key;
};
struct Release
{
};
/// An operation of the interface, with its arguments.
struct Call
{
    std::function<void(CanServiceBase &)> operation;
};
enum class Box { Silent, Speaking, Unplugged, Plugged };
/// A frame that no car state asks for.
struct Frame
{
    quint8 dataType;
    QByteArray payload;
};
/// One fault, with the next frame of the box.
struct InjectFault
{
    Fault fault;
};
/// How often faults happen from now on.
struct FaultRates
{
    QVector<QPair<Fault, double>> rates;
};
struct NoFaults
{
};
struct Expect
{
    Expectation expectation;
    int column; ///< Of the expected value, from 1.
    int within; ///< ms, real.
};
struct ExpectSignal
{
    SignalExpectation expectation;
    bool absent; ///< It must not come.
    int within;  ///< ms, real.
};

} // namespace steps

using Action = std::variant<steps::Say, steps::Start, steps::Stop, steps::Wait, steps::Set,
                            steps::Ramp, steps::Press, steps::Hold, steps::Release, steps::Call,
                            steps::Box, steps::Frame, steps::InjectFault, steps::FaultRates,
                            steps::NoFaults, steps::Expect, steps::ExpectSignal>;

struct Step
{
    int line;     ///< From 1.
    QString text; ///< As it is in the file, without the comment.
    Action action;
};

struct Scenario
{
    int carModel = 1;
    int carIndex = 1;
    QVector<Step> steps;
    QVector<Mistake> mistakes; ///< Of all lines. With any of them, the steps are not to be played.
};

/// Reads UTF-8 text.
Scenario parseScenario(const QByteArray &text);

/// What is wrong with the expected values, once a service tells the types of its getters.
QVector<Mistake> checkExpectations(const Scenario &scenario, const Snapshot &state);

/// The forms of the steps, a line each.
QString scenarioSyntax();

} // namespace bench
