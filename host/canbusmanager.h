// The car that is selected in the head unit.
#pragma once

#include "hostexport.h"

class CANSERVICE_EXPORT CanBusManager
{
public:
    static CanBusManager *instance();

    /// The selected car model; the services hold lists of the ids they know.
    int getCarModelId();
    void setCarModelId(int id);

    /// The index under which the box knows the car; the box gets its low byte.
    int getHwdCarModelIndex();
    void setHwdCarModelIndex(int index);

private:
    CanBusManager() = default;

    int mCarModelId = 0;
    int mHwdCarModelIndex = 0;
};
