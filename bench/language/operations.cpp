#include "bench/language/operations.h"

#include "bench/language/closestname.h"
#include "bench/wire/named.h"

#include <canservicebase.h>

#include <QDateTime>

#include <cstddef>
#include <iterator>

namespace bench {

namespace {

struct NamedNumber
{
    const char *name;
    int number;
};

// The climate keys, by what they do in the virtual car.
constexpr NamedNumber kClimateKeys[] = {
    {"power", 0},
    {"ac", 2},
    {"auto", 3},
    {"rear_defrost", 4},
    {"front_defrost", 5},
    {"inside_air", 6},
    {"max", 8},
    {"dual", 9},
    {"right_seat_heat", 10},
    {"right_seat_air", 11},
    {"fan_up", 15},
    {"fan_down", 16},
    {"left_warmer", 19},
    {"left_cooler", 20},
    {"right_warmer", 21},
    {"right_cooler", 22},
    {"left_seat_heat", 25},
    {"left_seat_air", 26},
    {"wheel_heat", 29},
    {"blowing_mode", 31},
    {"rear", 34},
};
constexpr int kAmbientColour = 5;
constexpr int kAmbientColours = 8;
constexpr NamedNumber kCarSettings[] = {{"ambient_level", 4}, {"ambient_colour", kAmbientColour}};
constexpr NamedNumber kUnits[] = {{"temperature", 3}, {"pressure", 5}};

constexpr struct
{
    const char *name;
    void (CanServiceBase::*request)();
} kReports[] = {
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
template <std::size_t Count>
bool readWord(LineReader &line, const char *what, const NamedNumber (&words)[Count], int *result)
{
    QString text;
    if (!line.text(what, &text))
        return false;
    const NamedNumber *word = findNamed(words, text);
    bool isNumber = true;
    *result = word ? word->number : text.toInt(&isNumber);
    return isNumber || line.fail(QStringLiteral("'%1' is not %2").arg(text, QLatin1String(what)) +
                                 possible(text, namesOf(words), QStringLiteral("a number, ")));
}

bool readOptionalNumber(LineReader &line, int *result)
{
    return line.atEnd() || line.wholeNumber("a value", result);
}

bool readClimateKey(LineReader &line, HostCall *call)
{
    int key = 0, value = 0;
    if (!readWord(line, "a climate key", kClimateKeys, &key) || !readOptionalNumber(line, &value))
        return false;
    *call = [=](CanServiceBase &service) { service.sendAcKey(key, value); };
    return true;
}

bool readCarSetting(LineReader &line, HostCall *call)
{
    int key = 0, value = 0;
    if (!readWord(line, "a car setting", kCarSettings, &key))
        return false;
    if (key == kAmbientColour && line.accept("next")) {
        *call = [](CanServiceBase &service) {
            const int colour = service.getCarSettingData().ambient.colour;
            service.sendCarSettingKey(kAmbientColour, (colour + 1) % kAmbientColours);
        };
        return true;
    }
    if (!line.wholeNumber("a value", &value))
        return false;
    *call = [=](CanServiceBase &service) { service.sendCarSettingKey(key, value); };
    return true;
}

bool readUnit(LineReader &line, HostCall *call)
{
    int unit = 0;
    if (!readWord(line, "a unit setting", kUnits, &unit))
        return false;
    *call = [=](CanServiceBase &service) { service.setUnitCmd(unit); };
    return true;
}

bool readSource(LineReader &line, HostCall *call)
{
    int type = 0;
    QString name, text;
    QStringList info;
    if (!line.text("the name of a source", &name) || !line.wholeNumber("a type of source", &type))
        return false;
    while (!line.atEnd()) {
        if (!line.text("a text of the source", &text))
            return false;
        info += text;
    }
    *call = [=](CanServiceBase &service) { service.onRadioSourceInformation(name, info, type); };
    return true;
}

bool readClock(LineReader &line, HostCall *call)
{
    QString text, timeOfDay;
    if (!line.text("a date, as in 2025-06-15", &text))
        return false;
    const QDate date = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid() || date.year() < 2000 || date.year() > 2255)
        return line.fail(
            QStringLiteral("'%1' is not a date from 2000 to 2255, as in 2025-06-15").arg(text));
    if (!line.text("a time of day, as in 09:30", &timeOfDay))
        return false;
    const QTime time = QTime::fromString(timeOfDay, QStringLiteral("HH:mm"));
    if (!time.isValid())
        return line.fail(QStringLiteral("'%1' is not a time of day, as in 09:30").arg(timeOfDay));
    *call = [=](CanServiceBase &service) {
        // The fields in the order in which this bench's cluster shows them.
        const auto byte = [](int value) { return static_cast<unsigned char>(value); };
        GPSTime now{byte(time.minute()), byte(time.hour()), byte(date.day()), byte(date.month()),
                    static_cast<unsigned short>(date.year())};
        service.GPSTimeSend(now);
    };
    return true;
}

// Null for a mistake.
template <typename Rows>
auto readRow(LineReader &line, const char *what, const Rows &rows) -> decltype(std::begin(rows))
{
    QString name;
    if (!line.text(what, &name))
        return nullptr;
    const auto row = findNamed(rows, name);
    if (!row)
        line.fail(QStringLiteral("'%1' is not %2").arg(name, QLatin1String(what)) +
                  possible(name, namesOf(rows)));
    return row;
}

bool readRequest(LineReader &line, HostCall *call)
{
    const auto *row = readRow(line, "the name of a report", kReports);
    if (row)
        *call = [request = row->request](CanServiceBase &service) { (service.*request)(); };
    return row;
}

bool readRead(LineReader &line, HostCall *call)
{
    const auto *row = readRow(line, "the name of a record", kRecords);
    if (row)
        *call = row->read;
    return row;
}

bool readAnyData(LineReader &line, HostCall *call)
{
    QByteArray bytes;
    if (!line.bytes("a byte", &bytes))
        return false;
    *call = [bytes](CanServiceBase &service) {
        QByteArray data = bytes;
        service.sendAnyData(data);
    };
    return true;
}

// One or two whole numbers, of which the second may be left out.
template <auto Operation>
bool readNumber(LineReader &line, HostCall *call)
{
    int number = 0;
    if (!line.wholeNumber("a value", &number))
        return false;
    *call = [number](CanServiceBase &service) { (service.*Operation)(number); };
    return true;
}

template <auto Operation>
bool readPair(LineReader &line, HostCall *call)
{
    int number = 0, value = 0;
    if (!line.wholeNumber("a number", &number) || !readOptionalNumber(line, &value))
        return false;
    *call = [=](CanServiceBase &service) { (service.*Operation)(number, value); };
    return true;
}

bool readCameraKey(LineReader &line, HostCall *call)
{
    int key = 0;
    if (!line.wholeNumber("a key", &key))
        return false;
    *call = [key](CanServiceBase &service) { service.sendCameraKey(key, {}); };
    return true;
}

template <auto Operation>
bool readNothing(LineReader &, HostCall *call)
{
    *call = callIt<Operation>;
    return true;
}

constexpr struct
{
    const char *name;
    const char *arguments;
    bool (*read)(LineReader &line, HostCall *call);
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

bool readHostCall(LineReader &line, HostCall *call)
{
    const auto *operation = readRow(line, "a host operation", kOperations);
    return operation && operation->read(line, call);
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
