// How far a replay is, on a terminal.
#pragma once

#include <optional>

namespace bench {

/// One line on standard error that is drawn over; nothing at all unless that is a terminal.
class Progress
{
public:
    Progress();
    ~Progress() { clear(); }

    bool isVisible() const { return mVisible; }
    /// Seconds. Without a total there is no end in sight.
    void show(double elapsed, std::optional<double> total);
    /// Makes room for a line of something else.
    void clear();

private:
    const bool mVisible;
    bool mShown = false;
};

} // namespace bench
