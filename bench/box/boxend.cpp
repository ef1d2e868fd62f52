#include "bench/box/boxend.h"

namespace bench {

BoxEnd::BoxEnd(const Clock &clock, quint32 seed, QObject *parent)
    : QObject(parent)
    , mBox(&mCar, clock)
    , mFaults(std::make_unique<FaultInjector>(this, seed))
{
}

BoxEnd::~BoxEnd() = default;

QString BoxEnd::open()
{
    mTerminal = std::make_unique<PseudoTerminal>();
    connect(mTerminal.get(), &PseudoTerminal::received, &mBox, &VirtualBox::receive);
    connect(mTerminal.get(), &PseudoTerminal::received, mFaults.get(), &FaultInjector::onWrite);
    connect(&mBox, &VirtualBox::transmit, mTerminal.get(), &PseudoTerminal::write);
    return mTerminal->errorString();
}

void BoxEnd::unplug() { mTerminal->unplug(); }

bool BoxEnd::plug()
{
    mBox.awaitHost();
    return mTerminal->plug();
}

} // namespace bench
