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
    QString reserved[6]; ///< Null.
};

/// Driving data as texts ready for display: a decimal number and its unit with nothing between, or
/// "--" for a value out of range. Null until the box has reported the value.
struct DrivingData
{
    QString speed;         ///< Member 0, from frame 0x69 byte 0: 0 to 254 km/h.
    QString range;         ///< Member 1, from frame 0x63 bytes 3 and 4: 0 to 999 km.
    QString reserved2;     ///< Member 2: null.
    QString consumption;   ///< Member 3, from frame 0x63 byte 5: 0.1 to 29.9 L/100km.
    QString odometer;      ///< Member 4, from frame 0x63 bytes 0 to 2: 0 to 16777215 km.
    QString reserved5[13]; ///< Members 5 to 17: null.
};

/// Further vehicle texts. No frame of this box feeds them.
struct OtherInfoData
{
    QString reserved[9]; ///< Null.
    bool flag = true;    ///< Known to the host alone.
};

/// Display units: three parallel lists, one entry per unit setting. This box reports entry 3
/// (temperature, from code 0x72 of frame 0x28: 0 Celsius, 1 Fahrenheit) and entry 5 (pressure, from
/// code 0x70: 0 psi, 1 kPa, 2 bar).
struct UnitData
{
    QList<int> reserved{0, 0, 0, 0, 0, 0}; ///< Known to the host alone.
    QList<int> values{0, 0, 0, 0, 0, 0};   ///< The value selected in the vehicle.
    /// The host's text for the value; empty, not null, until the box has reported it. No literals
    /// of the library that makes the record: a copy may outlive it.
    QStringList texts{QString(QLatin1String("")), QString(QLatin1String("")),
                      QString(QLatin1String("")), QString(QLatin1String("")),
                      QString(QLatin1String("")), QString(QLatin1String(""))};
};

/// Interior ambient light. Level and colour are 0xFF until the first start(), then 0 until the box
/// has reported them.
struct AmbientLightData
{
    unsigned char reserved0 = 1;         ///< Known to the host alone.
    unsigned char level = 0xFF;          ///< 0 to 51: byte 1 of frame 0x61 divided by 5.
    unsigned char colour = 0xFF;         ///< The host's index, 0 to 7, of the colour in byte 0.
    unsigned char reserved3[2] = {1, 1}; ///< Known to the host alone.
};

/// Known to the host alone; the service hands out the defaults.
struct EvrData
{
    /// \{
    /// Known to the host alone.
    QByteArray reserved0 = QByteArray::number(0xFFFFFF, 10);
    unsigned char reserved1 = 0xFF;
    unsigned char reserved2[3] = {1, 1, 1};
    int reserved3 = 1;
    /// \}
};

/// Vehicle settings.
struct CarSettingData
{
    AmbientLightData ambient; ///< What the box reports.
    EvrData evr;              ///< The defaults, always.
};

/// The host's date and time. Which calendar quantity a byte holds is the host's to say.
struct GPSTime
{
    unsigned char field0; ///< Byte 4 of frame 0x82.
    unsigned char field1; ///< Byte 3.
    unsigned char field2; ///< Byte 2.
    unsigned char field3; ///< Byte 1.
    unsigned short year;  ///< The full year, 2000 to 2255; byte 0 is what is above 2000.
};

/// The answer to a clock report, always the same. Trivially copyable, so that it is returned in
/// registers.
struct GPSTimePacket
{
    /// \{
    /// Known to the host alone.
    unsigned char reserved0 = 0;
    unsigned char reserved1 = 0;
    unsigned char reserved2 = 1;
    quint32 reserved3 = 0;
    quint32 reserved4 = 0;
    unsigned char reserved5 = 1;
    unsigned char reserved6 = 1;
    /// \}
};

/// A camera command: two words that only the host understands.
struct CameraData
{
    /// \{
    /// Known to the host alone.
    quint32 reserved0;
    quint32 reserved1;
    /// \}
};

// Passed and returned in registers.
static_assert(std::is_trivially_copyable_v<GPSTimePacket> && std::is_trivially_copyable_v<GPSTime>);
static_assert(std::is_trivially_copyable_v<CameraData>);

/// Known to the host alone; the service passes it on by reference and never looks inside.
struct VehicleMaintenanceData;
