#include "canbusmanager.h"

CanBusManager *CanBusManager::instance()
{
    static CanBusManager manager;
    return &manager;
}

int CanBusManager::getCarModelId() const { return mCarModelId; }

void CanBusManager::setCarModelId(int id) { mCarModelId = id; }

int CanBusManager::getHwdCarModelIndex() const { return mHwdCarModelIndex; }

void CanBusManager::setHwdCarModelIndex(int index) { mHwdCarModelIndex = index; }
