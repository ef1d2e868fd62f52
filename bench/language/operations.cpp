#include "bench/language/operations.h"

#include "bench/language/closestname.h"
#include "bench/wire/tables.h"

#include <canservicebase.h>

#include <QDateTime>

#include <cstddef>
#include <iterator>

namespace bench {

namespace {

// The climate keys, by what they do in the virtual car.
constexpr Word kClimateKeys[] = {
    {0, "power"},
    {2, "ac"},
    {3, "auto"},
    {4, "rear_defrost"},
    {5, "front_defrost"},
    {6, "inside_air"},
    {8, "max"},
    {9, "dual"},
    {10, "right_seat_heat"},
    {11, "right_seat_air"},
    {15, "fan_up"},
    {16, "fan_down"},
    {19, "left_warmer"},
    {20, "left_cooler"},
    {21, "right_warmer"},
    {22, "right_cooler"},
    {25, "left_seat_heat"},
    {26, "left_seat_air"},
    {29, "wheel_heat"},
    {31, "blowing_mode"},
    {34, "rear"},
};
constexpr int kAmbientColour = 5;
constexpr int kAmbientColours = 8;
constexpr Word kCarSettings[] = {{4, "ambient_level"}, {kAmbientColour, "ambient_colour"}};
constexpr Word kUnitSettings[] = {{3, "temperature"}, {5, "pressure"}};

constexpr struct
{
    const char *name;
    void (CanServiceBase::*request)();
} kReportRequests[] = {
    {"gauges", &CanServiceBase::requsetGauges},
    {"climate", &CanServiceBase::requsetClimate},
    {"park_assist", &CanServiceBase::requsetParkAssist},
    {"vehicle_info", &CanServiceBase::requsetVehicleInfo},
    {"car_setting", &CanServiceBase::requsetCarSetting},
    {"driving_data", &CanServiceBase::requsetDrinvingData},
    {"maintenance", &CanServiceBase::requsetMaintenance},
    {"fuel", &CanServiceBase::requsetFuel},
    {"unit_settings", &CanServiceBase::requsetUnitSettings},
    {"other_info", &CanServiceBase::requsetOtherInfo},
    {"speed", &CanServiceBase::requestSpeed},
};

template <auto Operation>
void callIt(CanServiceBase &service)
{
    (service.*Operation)();
}

template <typename Record, auto Operation>
void readRecord(CanServiceBase &service)
{
    Record record{};
    (service.*Operation)(record);
}

// Known to a host alone; the service passes it on by reference.
void readMaintenance(CanServiceBase &service)
{
    alignas(std::max_align_t) char room[1024] = {};
    service.getMaintenanceData(reinterpret_cast<VehicleMaintenanceData &>(room));
}

// The operations that hand something out, beside the getters that `expect` looks at.
constexpr struct
{
    const char *name;
    void (*read)(CanServiceBase &service);
} kRecords[] = {
    {"car_setting", callIt<&CanServiceBase::getCarSettingData>},
    {"driving", readRecord<DrivingData, &CanServiceBase::getDrivingData>},
    {"driving_data", callIt<&CanServiceBase::requestDrivingData>},
    {"fuel_consumption", readRecord<FuelConsumptionData, &CanServiceBase::getFuelConsumptionData>},
    {"maintenance", readMaintenance},
    {"maintenance_data", callIt<&CanServiceBase::requestMaintenanceData>},
    {"other_info", readRecord<OtherInfoData, &CanServiceBase::getOtherInfoData>},
    {"units", readRecord<UnitData, &CanServiceBase::getUnitData>},
    {"vehicle", readRecord<QMap<QString, QString>, &CanServiceBase::getVehicleData>},
};

// A word of the table, or any number.
int readWord(LineReader &line, const char *what, Span<Word> words)
{
    const QString text = line.text(what);
    if (const Word *word = findNamed(words, text))
        return word->raw;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber)
        line.fail(QStringLiteral("'%1' is not %2").arg(text, what) +
                  possible(text, namesOf(words), QStringLiteral("a number, ")));
    return number;
}

int readOptionalNumber(LineReader &line) { return line.atEnd() ? 0 : line.wholeNumber("a value"); }

HostCall readClimateKey(LineReader &line)
{
    const int key = readWord(line, "a climate key", kClimateKeys);
    const int value = readOptionalNumber(line);
    return [=](CanServiceBase &service) { service.sendAcKey(key, value); };
}

HostCall readCarSetting(LineReader &line)
{
    const int key = readWord(line, "a car setting", kCarSettings);
    if (key == kAmbientColour && line.accept("next"))
        return [](CanServiceBase &service) {
            const int colour = service.getCarSettingData().ambient.colour;
            service.sendCarSettingKey(kAmbientColour, (colour + 1) % kAmbientColours);
        };
    const int value = line.wholeNumber("a value");
    return [=](CanServiceBase &service) { service.sendCarSettingKey(key, value); };
}

HostCall readUnit(LineReader &line)
{
    const int unit = readWord(line, "a unit setting", kUnitSettings);
    return [=](CanServiceBase &service) { service.setUnitCmd(unit); };
}

HostCall readSource(LineReader &line)
{
    const QString name = line.text("the name of a source");
    const int type = line.wholeNumber("a type of source");
    QStringList info;
    while (line.goesOn())
        info += line.text("a text of the source");
    return [=](CanServiceBase &service) { service.onRadioSourceInformation(name, info, type); };
}

HostCall readClock(LineReader &line)
{
    const QString text = line.text("a date, as in 2025-06-15");
    const QDate date = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid() || date.year() < 2000 || date.year() > 2255)
        line.fail(
            QStringLiteral("'%1' is not a date from 2000 to 2255, as in 2025-06-15").arg(text));
    const QString timeOfDay = line.text("a time of day, as in 09:30");
    const QTime time = QTime::fromString(timeOfDay, QStringLiteral("HH:mm"));
    if (!time.isValid())
        line.fail(QStringLiteral("'%1' is not a time of day, as in 09:30").arg(timeOfDay));
    return [=](CanServiceBase &service) {
        // The fields in the order in which this bench's cluster shows them.
        const auto byte = [](int value) { return static_cast<unsigned char>(value); };
        GPSTime now{byte(time.minute()), byte(time.hour()), byte(date.day()), byte(date.month()),
                    static_cast<unsigned short>(date.year())};
        service.GPSTimeSend(now);
    };
}

// Null for a mistake.
template <typename Rows>
auto readRow(LineReader &line, const char *what, const Rows &rows) -> decltype(std::begin(rows))
{
    const QString name = line.text(what);
    const auto row = findNamed(rows, name);
    if (!row)
        line.fail(QStringLiteral("'%1' is not %2").arg(name, what) + possible(name, namesOf(rows)));
    return row;
}

HostCall readRequest(LineReader &line)
{
    const auto *row = readRow(line, "the name of a report", kReportRequests);
    return [row](CanServiceBase &service) { (service.*row->request)(); };
}

HostCall readRead(LineReader &line)
{
    const auto *row = readRow(line, "the name of a record", kRecords);
    return row ? row->read : HostCall();
}

HostCall readAnyData(LineReader &line)
{
    return [bytes = line.bytes("a byte")](CanServiceBase &service) {
        QByteArray data = bytes;
        service.sendAnyData(data);
    };
}

// One or two whole numbers, of which the second may be left out.
template <auto Operation>
HostCall readNumber(LineReader &line)
{
    const int number = line.wholeNumber("a value");
    return [number](CanServiceBase &service) { (service.*Operation)(number); };
}

template <auto Operation>
HostCall readPair(LineReader &line)
{
    const int number = line.wholeNumber("a number");
    const int value = readOptionalNumber(line);
    return [=](CanServiceBase &service) { (service.*Operation)(number, value); };
}

HostCall readCameraKey(LineReader &line)
{
    const int key = line.wholeNumber("a key");
    return [key](CanServiceBase &service) { service.sendCameraKey(key, {}); };
}

template <auto Operation>
HostCall readNothing(LineReader &)
{
    return callIt<Operation>;
}

constexpr struct
{
    const char *name;
    const char *arguments;
    HostCall (*read)(LineReader &line);
} kOperations[] = {
    {"climate_key", "KEY [VALUE]", readClimateKey},
    {"car_setting", "SETTING VALUE|next", readCarSetting},
    {"unit", "SETTING", readUnit},
    {"source", "NAME TYPE [TEXT]...", readSource},
    {"clock", "YYYY-MM-DD HH:MM", readClock},
    {"request", "REPORT", readRequest},
    {"read", "RECORD", readRead},
    {"setting", "NUMBER [VALUE]", readPair<&CanServiceBase::setSettings>},
    {"command", "NUMBER [VALUE]", readPair<&CanServiceBase::request>},
    {"camera_key", "KEY", readCameraKey},
    {"driving_page", "PAGE", readNumber<&CanServiceBase::setDrivingDataPage>},
    {"driving_position", "POSITION", readNumber<&CanServiceBase::setCanDrivingPosition>},
    {"any_data", "[BYTE]...", readAnyData},
    {"flush_debug_file", "", readNothing<&CanServiceBase::flushDebugFile>},
};

} // namespace

HostCall readHostCall(LineReader &line)
{
    const auto *operation = readRow(line, "a host operation", kOperations);
    return operation ? operation->read(line) : HostCall();
}

QStringList operationNames() { return namesOf(kOperations); }

QString hostCallSyntax()
{
    QString text;
    for (const auto &operation : kOperations)
        text +=
            QStringLiteral("call %1 %2").arg(operation.name, operation.arguments).trimmed() + '\n';
    return text;
}

} // namespace bench
