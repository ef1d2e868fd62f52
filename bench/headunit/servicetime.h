// The time of a loaded service.
#pragma once

#include "bench/wire/clock.h"

namespace bench {

/// Time for a service that works on a recording: from construction to destruction the process's
/// monotonic clock stands still but for advance(), and no event loop sees a file. What the bench
/// itself stamps gets its clock passed in; a plug-in's timers can only be reached where they ask,
/// in the C library. An hour of recording so takes the seconds that its handling takes, with the
/// same time-outs.
class ServiceTime : public Clock
{
public:
    ServiceTime();
    ~ServiceTime() override;
    Q_DISABLE_COPY(ServiceTime)

    /// Since the construction.
    qint64 nanoseconds() const override;
    /// Lets time pass and runs the event loop at each step.
    void advance(qint64 microseconds);
    /// Lets time pass at once, as a process that was stopped sees it.
    void skip(qint64 microseconds);
};

} // namespace bench
