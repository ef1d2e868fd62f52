// The box's end of the line: everything that is not the host.
#pragma once

#include "bench/box/faultinjector.h"
#include "bench/box/pseudoterminal.h"
#include "bench/box/virtualbox.h"

#include <memory>

namespace bench {

/// A virtual car, its box, the faults on its line and the terminal that a host opens.
class BoxEnd : public QObject
{
    Q_OBJECT

public:
    /// \param seed the same seed gives the same faults.
    explicit BoxEnd(const Clock &clock, quint32 seed = 1, QObject *parent = nullptr);
    ~BoxEnd() override;

    /// Makes the terminal. \returns an empty text, or what went wrong.
    QString open();

    VirtualCar &car() { return mCar; }
    VirtualBox &box() { return mBox; }
    PseudoTerminal &terminal() { return *mTerminal; }
    FaultInjector &faults() { return *mFaults; }
    bool isPlugged() const { return mTerminal && mTerminal->isPlugged(); }

    void unplug();
    /// Plugs the box in again. \returns false when there is no device left for it.
    bool plug();
    /// Nothing of the box's is on its way, and no fault holds the line.
    bool isQuiet() { return mBox.isQuiet() && !mFaults->isBusy(); }

private:
    VirtualCar mCar;
    VirtualBox mBox;
    std::unique_ptr<PseudoTerminal> mTerminal;
    std::unique_ptr<FaultInjector> mFaults;
};

} // namespace bench
