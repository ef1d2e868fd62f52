// Time of our own, for what has been recorded.
#pragma once

#include <QtGlobal>

namespace bench {

/// Takes the monotonic clock of the process over: from construction to destruction it stands still
/// but for advance(). Timers, those of a loaded plug-in too, run on it, so that an hour of
/// recording takes the seconds that its handling takes, with the same time-outs.
class VirtualClock
{
public:
    VirtualClock();
    ~VirtualClock();
    Q_DISABLE_COPY(VirtualClock)

    /// Lets time pass and runs the event loop at each step.
    void advance(qint64 microseconds);
};

} // namespace bench
