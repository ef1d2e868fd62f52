#include "servicemodel.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace {

// The box's colour code for the host's index, by palette; where the report comes from is searched.
constexpr int kOwnCodes[] = {5, 2, 6, 4, 7, 3, 1, 0};
constexpr int kCommonCodes[] = {6, 1, 3, 2, 4, 5, 7, 0};

bool isHighEnd(int model)
{
    static const std::set<int> models{1,  11, 27, 30, 35, 39, 47, 51, 55,  58,  65, 68,
                                      69, 76, 79, 82, 86, 92, 97, 98, 111, 112, 119};
    return models.count(model) == 1;
}

// Bands of six codes, of which the nearest has one and the farthest counts double.
int distanceOf(int code)
{
    if (code == 0 || code > 31)
        return 255;
    const int band = (code + 4) / 6 + 1;
    return code == 1 ? 1 : band == 6 ? 7 : band;
}

double temperatureOf(int code, bool fahrenheit)
{
    if (code == 0)
        return -100;
    if (code == 127)
        return -101;
    if (code < 31 || code > 59)
        return -1;
    return fahrenheit ? code * 0.9 + 32 : code / 2.0;
}

int bit(int byte, int number) { return byte / (1 << number) % 2; }

} // namespace

QByteArray frameOf(quint8 dataType, const Bytes &payload)
{
    const int sum = std::accumulate(payload.begin(), payload.end(),
                                    dataType + static_cast<int>(payload.size()));
    QByteArray frame(1, '\x2e');
    frame.append(static_cast<char>(dataType));
    frame.append(static_cast<char>(payload.size()));
    for (const quint8 byte : payload)
        frame.append(static_cast<char>(byte));
    frame.append(static_cast<char>(255 - sum % 256));
    return frame;
}

void ServiceModel::write(quint8 dataType, const Bytes &payload, bool flag)
{
    note(QString::fromLatin1(frameOf(dataType, payload).toHex()) +
         QString::fromLatin1(flag ? " !" : ""));
}

void ServiceModel::note(const QString &event)
{
    journal << event;
    afterEvent();
}

// The line's order: whatever comes in while a chunk is taken comes after it.
void ServiceModel::receive(const QByteArray &chunk)
{
    mLine.push_back(chunk);
    if (mLine.size() > 1)
        return;
    for (; !mLine.empty(); mLine.pop_front())
        takeChunk(mLine.front());
}

void ServiceModel::takeChunk(const QByteArray &chunk)
{
    if (!mOpen.empty())
        running[ParseOut] = true;
    for (const char character : chunk) {
        const auto byte = static_cast<quint8>(character);
        if (mOpen.empty() && byte != 0x2e)
            continue;
        mOpen.push_back(byte);
        if (mOpen.size() < 5 || mOpen[2] == 0 || mOpen.size() < mOpen[2] + 4U)
            continue;
        Bytes frame;
        frame.swap(mOpen);
        take(frame);
    }
}

// Data type, length, payload and checksum of a good frame add up to 0xFF.
void ServiceModel::take(const Bytes &frame)
{
    if (std::accumulate(frame.begin() + 1, frame.end(), 0) % 256 != 255) {
        note(QStringLiteral("f0 !"));
        return;
    }
    note(QStringLiteral("ff !"));
    running[ParseOut] = false;
    alive();
    handle(frame[1], Bytes(frame.begin() + 3, frame.end() - 1));
}

void ServiceModel::alive()
{
    noAnswerCount = 0;
    running[Watchdog] = running[Knock] = false;
    running[Check] = true;
    note(QStringLiteral("notifyCanbusStatus 3"));
}

void ServiceModel::start()
{
    wakeUp();
    mLevel = mColour = 0;
}

void ServiceModel::wakeUp()
{
    write(0x81, {1}, true);
    running[Knock] = true;
    write(0x90, {0x30, 0}, true);
}

void ServiceModel::stop()
{
    write(0x81, {0}, true);
    running[CarType] = false;
}

void ServiceModel::selectCar() { write(0x91, {static_cast<quint8>(carIndex)}, false); }

void ServiceModel::fire(Timer timer)
{
    switch (timer) {
    case Check:
        selectCar();
        running[Watchdog] = true;
        write(0x90, {0x30, 0}, true);
        break;
    case Knock:
        stop();
        wakeUp();
        break;
    case Watchdog:
        if (++noAnswerCount < 4)
            break;
        noAnswerCount = 0;
        running[Watchdog] = running[Check] = running[CarType] = false;
        running[Knock] = true;
        note(QStringLiteral("notifyCanbusStatus 0"));
        break;
    case CarType:
        selectCar();
        break;
    case LongPress:
        running[LongPress] = false;
        note(QStringLiteral("keyEvent %1 2 %2")
                 .arg(QString::number(key), QString::fromLatin1(mFromWheel ? "true" : "false")));
        break;
    case ParseOut:
        running[ParseOut] = false;
        mOpen.clear();
        break;
    case TimerCount:
        break;
    }
}

void ServiceModel::request(std::initializer_list<quint8> dataTypes)
{
    for (const quint8 dataType : dataTypes)
        write(0x90, {dataType, 0}, false);
}

void ServiceModel::ambientKey(int setting, int value)
{
    const auto &codes = hasOwnPalette() ? kOwnCodes : kCommonCodes;
    const int colour = setting == 5 ? value : mColour;
    const int code = colour >= 0 && colour < 8 ? codes[colour] : 0;
    const bool up = setting == 4 && value == 1 && mLevel < 20;
    const bool down = setting == 4 && value == -1 && mLevel > 0;
    if (setting == 5 || up || down)
        write(0xc5,
              {static_cast<quint8>(code), static_cast<quint8>((mLevel + (up - down)) * 5 % 256)},
              true);
}

void ServiceModel::unitKey(int setting)
{
    if (setting == 3)
        write(0xc9, {0x72, static_cast<quint8>(mTemperatureUnit ^= 1)}, true);
    else if (setting == 5)
        write(0xc9, {0x70, static_cast<quint8>(mPressureUnit = (mPressureUnit + 1) % 3)}, true);
}

void ServiceModel::handle(quint8 dataType, const Bytes &payload)
{
    const size_t size = payload.size();
    if (dataType == 0x20 && size == 2) {
        handleKey(payload[0], payload[1]);
    } else if (dataType == 0x21 && size == 10) {
        mClimate = payload;
        note(QStringLiteral("acStatusChanged"));
    } else if ((dataType == 0x22 || dataType == 0x23) && size == 8) {
        handleRadar(payload, dataType == 0x22);
    } else if (dataType == 0x24 && size == 7) {
        const int doors = payload[0] / 8;
        if (std::exchange(mDoors, doors) != doors)
            note(QStringLiteral("doorChanged"));
    } else if (dataType == 0x28 && size == 2) {
        static const QString temperatures[] = {QStringLiteral("°C"), QStringLiteral("°F")};
        static const QString pressures[] = {QStringLiteral("psi"), QStringLiteral("kPa"),
                                            QStringLiteral("bar")};
        if (payload[0] == 0x72 && payload[1] < 2)
            mTemperatureText = temperatures[mTemperatureUnit = payload[1]];
        if (payload[0] == 0x70 && payload[1] < 3)
            mPressureText = pressures[mPressureUnit = payload[1]];
        note(QStringLiteral("unitDataChanged"));
    } else if (dataType == 0x30) {
        const auto end = std::find(payload.begin(), payload.end(), 0);
        mVersion = QString::fromUtf8(std::string(payload.begin(), end).c_str());
        note(QStringLiteral("sigVersionData"));
        alive();
        running[CarType] = true;
    } else if (dataType == 0x61 && size == 2) {
        const auto &codes = hasOwnPalette() ? kOwnCodes : kCommonCodes;
        const auto *found = std::find(std::begin(codes), std::end(codes), payload[0] % 128);
        mColour = found == std::end(codes) ? 0 : static_cast<int>(found - codes);
        mLevel = payload[1] / 5;
        note(QStringLiteral("sigAmbientChanged"));
    } else if (dataType == 0x63 && size == 18) {
        handleVehicle1(payload);
    } else if (dataType == 0x69 && size == 5) {
        handleVehicle2(payload);
    }
}

void ServiceModel::handleKey(quint8 code, quint8 action)
{
    if (action == 1 && !mHeld) {
        mHeld = mFromWheel = running[LongPress] = true;
        key = code;
        note(QStringLiteral("keyEvent %1 0 true").arg(key));
    } else if (action == 0 && mHeld) {
        const int state = std::exchange(running[LongPress], false) ? 1 : 3;
        note(QStringLiteral("keyEvent %1 %2 true").arg(std::exchange(key, code)).arg(state));
        mHeld = false;
    }
}

void ServiceModel::handleRadar(const Bytes &p, bool rear)
{
    int codes[4] = {p[0], p[1], p[2], p[3]};
    if (isHighEnd(carModel)) {
        codes[1] = std::min(p[0], p[1]);
        codes[2] = std::min(p[2], p[3]);
        codes[0] = rear ? std::min(p[4], p[5]) : std::min(p[5], p[6]);
        codes[3] = rear ? std::min(p[6], p[7]) : std::min(p[4], p[7]);
    }
    bool changed = false;
    for (int i = 0; i < 4; ++i) {
        const int distance = distanceOf(codes[i]);
        changed |= std::exchange(mDistance[i + (rear ? 4 : 0)], distance) != distance;
    }
    if (changed)
        note(QStringLiteral("sigRadarChanged"));
}

void ServiceModel::handleVehicle1(const Bytes &p)
{
    const auto keepText = [this](QString &kept, const QString &text) {
        if (std::exchange(kept, text) != text)
            note(QStringLiteral("drivingDataChanged"));
    };
    const int range = p[3] * 256 + p[4];
    const int tenths = 2 * p[5] + 1;
    const QString consumption = QStringLiteral("%1.%2L/100km").arg(tenths / 10).arg(tenths % 10);
    keepText(mOdometer, QStringLiteral("%1km").arg((p[0] * 256 + p[1]) * 256 + p[2]));
    keepText(mRange, range > 999 ? QStringLiteral("--") : QStringLiteral("%1km").arg(range));
    keepText(mConsumption, tenths > 300 ? QStringLiteral("--") : consumption);

    if (!std::equal(p.begin() + 7, p.begin() + 11, mPressureCode)) {
        std::copy(p.begin() + 7, p.begin() + 11, mPressureCode);
        note(QStringLiteral("tireDataChanged"));
    }
    bool changed = false;
    for (size_t tire = 0; tire < 4; ++tire) {
        const int code = tire % 2 == 0 ? p[15 + tire / 2] / 16 : p[15 + tire / 2] % 16;
        const int state = code == 1 ? 2 : code == 2 || code == 7 ? 1 : 0;
        changed |= std::exchange(mTireState[tire], state) != state;
    }
    mTireAlert = mTireState[0] + mTireState[1] + mTireState[2] + mTireState[3] > 0 ? 1 : 0;
    if (changed)
        note(QStringLiteral("tireAlert"));
}

void ServiceModel::handleVehicle2(const Bytes &p)
{
    const QString speed = p[0] == 255 ? QStringLiteral("--") : QStringLiteral("%1km/h").arg(p[0]);
    if (std::exchange(mSpeed, speed) != speed)
        note(QStringLiteral("drivingDataChanged"));
    const int code = std::min<int>(p[4], 240);
    if (std::exchange(mBatteryCode, code) != code)
        note(QStringLiteral("batteryVoltageChange"));
}

// In the order of stateOf(), which asks the service.
QVector<double> ServiceModel::numbers() const
{
    static constexpr int kWindModes[] = {0, 2, 1, 3, 7, 5, 4, 6};
    const Bytes &c = mClimate;
    const int left = c[8] % 16;
    const int right = c[8] / 16;
    const auto heat = [](int code) { return code > 3 && code < 7 ? code - 3 : 0; };
    const auto ventilation = [](int code) { return code < 4 ? code : 0; };
    QVector<double> all;
    all.reserve(64);
    for (const int flag : {bit(c[0], 7), bit(c[0], 6), bit(c[0], 5), bit(c[0], 3), 1 - bit(c[0], 2),
                           bit(c[0], 0), bit(c[4], 7), bit(c[4], 5), bit(c[4], 3), bit(c[4], 2)})
        all << flag;
    all << kWindModes[c[1] / 32] << c[1] % 8 << heat(left) << heat(right) << ventilation(left)
        << ventilation(right) << temperatureOf(c[2], bit(c[4], 6))
        << temperatureOf(c[3], bit(c[4], 6));
    for (const int distance : mDistance)
        all << distance;
    for (int door = 0; door < 5; ++door)
        all << bit(mDoors, door);
    for (const int state : mTireState)
        all << state;
    for (const int code : mPressureCode)
        all << (code == 255 ? -1 : code * 2.75);
    all << mTireAlert << (mBatteryCode < 0 ? -1 : std::min(mBatteryCode * 47 / 755.0 + 3, 17.9))
        << mTemperatureUnit << mPressureUnit << mLevel << mColour << key << noAnswerCount
        << isIdle();
    for (const bool timer : running)
        all << timer;
    return all;
}

QStringList ServiceModel::texts() const
{
    return {bit(mClimate[4], 6) ? QStringLiteral("°F") : QStringLiteral("°C"),
            mVersion,
            mSpeed,
            mRange,
            mConsumption,
            mOdometer,
            mTemperatureText,
            mPressureText};
}
