// How far a command is, on a terminal.
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
    /// The same of a work that has no time of its own, from 0 to 1; drawn for each percent.
    void showShare(double share);
    /// Makes room for a line of something else.
    void clear();

private:
    const bool mVisible;
    bool mShown = false;
    int mPercent = -1;
};

} // namespace bench
