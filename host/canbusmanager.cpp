#include "canbusmanager.h"

CanBusManager *CanBusManager::instance()
{
    static CanBusManager manager;
    return &manager;
}

int CanBusManager::getCarModelId() { return mCarModelId; }

void CanBusManager::setCarModelId(int id) { mCarModelId = id; }

int CanBusManager::getHwdCarModelIndex() { return mHwdCarModelIndex; }

void CanBusManager::setHwdCarModelIndex(int index) { mHwdCarModelIndex = index; }
