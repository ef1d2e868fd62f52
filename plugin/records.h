// The plain records that cross the boundary between the host and a CAN service.
//
// The host reads and writes them by layout: the order and the types of the members are part of the
// contract. Members called `reserved` have a meaning to the host alone.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// Fuel consumption texts. No frame of this box feeds them: six null strings.
struct FuelConsumptionData
{
    QString reserved[6];
};

/// Driving data as texts ready for display: a decimal number and its unit with nothing between, or
/// "--" for a value out of range. Null until the box has reported the value.
struct DrivingData
{
    QString speed;       ///< Member 0, from frame 0x69 byte 0: 0 to 254 km/h.
    QString range;       ///< Member 1, from frame 0x63 bytes 3 and 4: 0 to 999 km.
    QString reserved2;   ///< Member 2.
    QString consumption; ///< Member 3, from frame 0x63 byte 5: 0.1 to 29.9 L/100km.
    QString odometer;    ///< Member 4, from frame 0x63 bytes 0 to 2: 0 to 16777215 km.
    QString reserved5[13];
};

/// Further vehicle texts. No frame of this box feeds them.
struct OtherInfoData
{
    QString reserved[9];
    bool flag = true;
};

/// Display units: three parallel lists, one entry per unit setting. This box reports entry 3
/// (temperature) and entry 5 (pressure).
struct UnitData
{
    QList<int> reserved{0, 0, 0, 0, 0, 0};
    QList<int> values{0, 0, 0, 0, 0, 0}; ///< The value selected in the vehicle.
    /// Empty, not null. No literals of the library that makes the record: a copy may outlive it.
    QStringList texts{QString(QLatin1String("")), QString(QLatin1String("")),
                      QString(QLatin1String("")), QString(QLatin1String("")),
                      QString(QLatin1String("")), QString(QLatin1String(""))};
};

/// Interior ambient light.
struct AmbientLightData
{
    unsigned char reserved0 = 1;
    unsigned char level = 0xFF;  ///< 0 to 51: the box's value divided by 5.
    unsigned char colour = 0xFF; ///< The host's colour index, 0 to 7.
    unsigned char reserved3[2] = {1, 1};
};

/// Known to the host alone; the service hands out the defaults.
struct EvrData
{
    QByteArray reserved0 = QByteArray::number(0xFFFFFF, 10);
    unsigned char reserved1 = 0xFF;
    unsigned char reserved2[3] = {1, 1, 1};
    int reserved3 = 1;
};

/// Vehicle settings.
struct CarSettingData
{
    AmbientLightData ambient;
    EvrData evr;
};

/// The host's date and time. Which calendar quantity a byte holds is the host's to say.
struct GPSTime
{
    unsigned char field0;
    unsigned char field1;
    unsigned char field2;
    unsigned char field3;
    unsigned short year; ///< The full year, for example 2025.
};

/// The answer to a clock report. Trivially copyable, so that it is returned in registers.
struct GPSTimePacket
{
    unsigned char reserved0 = 0;
    unsigned char reserved1 = 0;
    unsigned char reserved2 = 1;
    quint32 reserved3 = 0;
    quint32 reserved4 = 0;
    unsigned char reserved5 = 1;
    unsigned char reserved6 = 1;
};

/// A camera command: two words that only the host understands.
struct CameraData
{
    quint32 reserved0;
    quint32 reserved1;
};

/// Known to the host alone; the service passes it on by reference and never looks inside.
struct VehicleMaintenanceData;
