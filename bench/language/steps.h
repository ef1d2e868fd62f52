// The steps of the language that acts on car, box and host: a line a step, read before anything
// runs.
#pragma once

#include "bench/language/expectation.h"
#include "bench/language/tokens.h"
#include "bench/wire/linefaults.h"
#include "bench/wire/reports.h"

#include <QByteArray>
#include <QPair>
#include <QVector>

#include <functional>
#include <optional>
#include <variant>

namespace bench {

struct Stage;

namespace steps {

/// A heading in the output.
struct Say
{
    QString text;
};
/// What a person is to do before it goes on.
struct Ask
{
    QString text;
};
/// What is done at once.
struct Do
{
    std::function<void(const Stage &)> action;
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
    ValueId id;
    int raw;
};
/// Values that move evenly, side by side.
struct Ramp
{
    struct Lane
    {
        ValueId id;
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
enum class Box { Unplugged, Plugged };
/// A frame that no car state asks for.
struct Frame
{
    Inbound type;
    QByteArray payload;
};
/// How often faults happen from now on.
struct FaultRates
{
    QVector<QPair<Fault, double>> rates;
};
struct Expect
{
    Expectation expectation;
    int within; ///< ms, real.
};
struct ExpectSignal
{
    SignalExpectation expectation;
    bool absent; ///< It must not come.
    int within;  ///< ms, real.
};
/// A frame of the host's.
struct ExpectFrame
{
    quint8 dataType;
    std::optional<QByteArray> payload; ///< Without it, any.
    bool absent;                       ///< It must not come.
    int within;                        ///< ms, real.
};

} // namespace steps

using Action =
    std::variant<steps::Do, steps::Say, steps::Ask, steps::Stop, steps::Wait, steps::Set,
                 steps::Ramp, steps::Press, steps::Hold, steps::Release, steps::Box, steps::Frame,
                 steps::FaultRates, steps::Expect, steps::ExpectSignal, steps::ExpectFrame>;

inline bool isExpectation(const Action &action)
{
    return std::holds_alternative<steps::Expect>(action) ||
           std::holds_alternative<steps::ExpectSignal>(action) ||
           std::holds_alternative<steps::ExpectFrame>(action);
}

/// Who must be there for a step.
enum Party { Nobody = 0, NeedsHost = 1, NeedsBox = 2 };

struct Step
{
    int line;     ///< From 1.
    QString text; ///< As it is in the file, without the comment.
    Action action;
    int needs = Nobody; ///< Of Party.
    int column = 1;     ///< From 1.
    QString file = {};  ///< Included; empty for the scenario itself.
};

struct Scenario
{
    int carModel = 1;
    int carIndex = 1;
    QVector<Step> steps;
    QVector<Mistake> mistakes; ///< Of all lines. With any of them, the steps are not to be played.
};

} // namespace bench
