// Time set by hand, for timers that a test need not wait for.
#pragma once

/// While one lives, its thread's monotonic clock stands still but for pass(): Qt's timers and
/// std::chrono::steady_clock see no other. It begins with a second, on which coarse timers depend.
class VirtualClock
{
public:
    VirtualClock();
    ~VirtualClock();

    /// Lets the time pass, millisecond by millisecond, and runs what is due at each.
    void pass(int milliseconds);

    /// Lets the time pass at once, as a process that was stopped sees it.
    void skip(int milliseconds);
};
