// The car that is selected in the head unit.
#pragma once

#include "hostexport.h"

/// The car that is selected in the head unit. A service asks afresh whenever it needs to know.
class CANSERVICE_EXPORT CanBusManager
{
public:
    static CanBusManager *instance(); ///< The one of the process.

    /// The selected car model, 0 by default; the services hold lists of the ids they know.
    int getCarModelId();
    /// Selects the car model.
    void setCarModelId(int id);

    /// The index under which the box knows the car, 0 by default; the box gets its low byte.
    int getHwdCarModelIndex();
    /// Selects the index under which the box knows the car.
    void setHwdCarModelIndex(int index);

private:
    CanBusManager() = default;

    int mCarModelId = 0;
    int mHwdCarModelIndex = 0;
};
