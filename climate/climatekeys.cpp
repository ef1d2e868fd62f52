// The host's climate keys as commands to the box. Every key ends with the zero command, which
// releases it.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

namespace canservice {

namespace {

constexpr quint8 kClimateCommand = 0xAC;
constexpr unsigned char kZeroCommand = 0;

// What a key does instead of sending one fixed command.
constexpr int kNone = -1;
constexpr int kUnknown = -2;
constexpr int kCycle = -3;

// The command of each climate key.
constexpr int kCommandOfKey[] = {
    0x01,     // 0
    kNone,    // 1
    0x02,     // 2
    0x04,     // 3
    0x18,     // 4
    0x17,     // 5
    0x03,     // 6
    0x03,     // 7
    0x05,     // 8
    0x06,     // 9
    0x08,     // 10
    0x0A,     // 11
    0x20,     // 12
    0x22,     // 13
    0x21,     // 14
    0x1E,     // 15
    0x1F,     // 16
    kNone,    // 17
    kNone,    // 18
    0x1A,     // 19
    0x1B,     // 20
    0x1C,     // 21
    0x1D,     // 22
    kNone,    // 23
    kNone,    // 24
    0x07,     // 25
    0x09,     // 26
    kNone,    // 27
    kNone,    // 28
    0x0B,     // 29
    kNone,    // 30
    kCycle,   // 31
    kUnknown, // 32
    kUnknown, // 33
    0x11,     // 34
};
constexpr int kKeyCount = sizeof(kCommandOfKey) / sizeof(kCommandOfKey[0]);
static_assert(kKeyCount == 35);

constexpr int commandOf(int key)
{
    return key >= 0 && key < kKeyCount ? kCommandOfKey[key] : kUnknown;
}

// The blowing-mode key: by raw wind mode and by the model's blowing-mode class 0, 1 or 2.
constexpr unsigned char kBlowingModeCycle[8][3] = {
    {0x25, 0x22, 0x22}, //
    {0x25, 0x21, 0x21}, //
    {0x20, 0x22, 0x20}, //
    {0x22, 0x23, 0x23}, //
    {0x22, 0x25, 0x25}, //
    {0x22, 0x25, 0x22}, //
    {0x25, 0x22, 0x22}, //
    {0x25, 0x22, 0x22}, //
};

} // namespace

void SimpleService::sendAcSet(unsigned char command, unsigned char value)
{
    if (!isSupportAcCtrl(mAcKey))
        return;
    mSerialPort.writeData(
        canbox::buildFrame(canbox::Outbound::Climate, {kClimateCommand, command, value}), false);
}

int SimpleService::sendAcKey(int key, int value)
{
    CHECK_THREAD();
    mAcKey = key;
    LOG_DEBUG() << key << mAcKey << value;

    int command = commandOf(key);
    if (command == kCycle) {
        LOG_DEBUG() << rawWindMode();
        command = kBlowingModeCycle[rawWindMode()][AcBlowingModeCtrl()];
    }
    if (command == kUnknown)
        LOG_DEBUG() << "Function not supported,KEY = " << key;
    else if (command != kNone)
        sendAcSet(static_cast<unsigned char>(command), 0);
    sendAcSet(kZeroCommand, 0);
    return 0;
}

} // namespace canservice
