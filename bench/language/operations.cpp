#include "bench/language/operations.h"

#include "bench/language/closestname.h"

#include <canservicebase.h>

#include <QDateTime>

namespace bench {

namespace {

struct NamedNumber
{
    const char *text;
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
};

// A word of the table, or any number.
template <std::size_t Count>
bool readWord(LineReader &line, const char *what, const NamedNumber (&words)[Count], int *result)
{
    QString text;
    if (!line.text(what, &text))
        return false;
    QStringList names;
    for (const NamedNumber &word : words) {
        if (text == QLatin1String(word.text)) {
            *result = word.number;
            return true;
        }
        names += QLatin1String(word.text);
    }
    bool isNumber = false;
    *result = text.toInt(&isNumber);
    return isNumber || line.fail(QStringLiteral("'%1' is not %2; possible: a number, %3%4")
                                     .arg(text, QLatin1String(what), names.join(", "),
                                          didYouMean(text, names)));
}

bool readOptionalNumber(LineReader &line, int *result)
{
    return line.atEnd() || line.number("a value", -32768, 65535, result);
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
    if (!line.number("a value", -32768, 65535, &value))
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
    if (!line.text("the name of a source", &name) ||
        !line.number("a type of source", -32768, 65535, &type))
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

bool readRequest(LineReader &line, HostCall *call)
{
    QString name;
    if (!line.text("the name of a report", &name))
        return false;
    QStringList names;
    for (const auto &row : kReports) {
        names += QLatin1String(row.name);
        if (name == names.last()) {
            *call = [request = row.request](CanServiceBase &service) { (service.*request)(); };
            return true;
        }
    }
    return line.fail(QStringLiteral("there is no report '%1'; possible: %2%3")
                         .arg(name, names.join(", "), didYouMean(name, names)));
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
};

} // namespace

bool readHostCall(LineReader &line, HostCall *call)
{
    QString name;
    if (!line.text("the name of a host operation", &name))
        return false;
    QStringList names;
    for (const auto &operation : kOperations) {
        names += QLatin1String(operation.name);
        if (name == names.last())
            return operation.read(line, call);
    }
    return line.fail(QStringLiteral("there is no host operation '%1'; possible: %2%3")
                         .arg(name, names.join(", "), didYouMean(name, names)));
}

QString hostCallSyntax()
{
    QString text;
    for (const auto &operation : kOperations)
        text += QStringLiteral("call %1 %2\n")
                    .arg(QLatin1String(operation.name), QLatin1String(operation.arguments));
    return text;
}

} // namespace bench
