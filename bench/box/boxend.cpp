#include "bench/box/boxend.h"

#include "bench/box/pseudoterminal.h"
#include "bench/box/serialdevice.h"

namespace bench {

BoxEnd::BoxEnd(const Clock &clock, quint32 seed, QObject *parent)
    : QObject(parent)
    , mBox(&mCar, clock)
    , mFaults(std::make_unique<FaultInjector>(this, seed))
{
}

BoxEnd::~BoxEnd() = default;

QString BoxEnd::open(const QString &device)
{
    if (device.isEmpty())
        mTerminal = std::make_unique<PseudoTerminal>();
    else
        mTerminal = std::make_unique<SerialDevice>(device);
    connect(mTerminal.get(), &SerialLine::received, &mBox, &VirtualBox::receive);
    connect(mTerminal.get(), &SerialLine::received, mFaults.get(), &FaultInjector::onWrite);
    connect(&mBox, &VirtualBox::transmit, mTerminal.get(), &SerialLine::write);
    mTerminal->plug();
    return mTerminal->errorString();
}

void BoxEnd::unplug()
{
    mBox.cutLine();
    mTerminal->unplug();
}

bool BoxEnd::plug()
{
    mBox.awaitHost();
    return mTerminal->plug();
}

} // namespace bench
