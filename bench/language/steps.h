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

class CanServiceBase;

namespace bench {

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
    ValueId id;
    int raw;
};
/// Moves within the range; below it is a word such as `none`, if the value has one.
struct Change
{
    ValueId id;
    int by; ///< Raw.
};
/// On to the next word.
struct Toggle
{
    ValueId id;
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
/// An operation of the interface, with its arguments.
struct Call
{
    std::function<void(CanServiceBase &)> operation;
};
enum class Box { Silent, Speaking, Unplugged, Plugged };
/// A frame that no car state asks for.
struct Frame
{
    Inbound type;
    QByteArray payload;
};
/// Bytes on the line as they are.
struct Bytes
{
    QByteArray bytes;
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

using Action = std::variant<steps::Say, steps::Ask, steps::Start, steps::Stop, steps::Wait,
                            steps::Set, steps::Change, steps::Toggle, steps::Ramp, steps::Press,
                            steps::Hold, steps::Release, steps::Call, steps::Box, steps::Frame,
                            steps::Bytes, steps::InjectFault, steps::FaultRates, steps::NoFaults,
                            steps::Expect, steps::ExpectSignal, steps::ExpectFrame>;

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
