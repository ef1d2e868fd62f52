// The car behind the virtual box.
#pragma once

#include "carvalues.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include <array>

namespace bench {

/// What the instrument cluster shows of the head unit.
struct Cluster
{
    QString source;   ///< For example "FM1 87.50 MHz"; empty until the first report.
    QString lines[2]; ///< The texts of a source that is reported by text.
    QString clock;    ///< "2025-06-15 10:30"; empty until the first clock report.

    bool operator==(const Cluster &other) const;
};

/// Holds the state of a car, encodes the box's reports from it, and follows the commands that the
/// box passes on. It knows payloads only; frames and the line are the box's.
class VirtualCar : public QObject
{
    Q_OBJECT

public:
    explicit VirtualCar(QObject *parent = nullptr);

    int raw(CarValue value) const { return mRaw[static_cast<std::size_t>(value)]; }
    /// Sets a value by what goes over the wire; bits that have no room there are dropped.
    void setRaw(CarValue value, int raw);
    QString text(CarValue value) const { return carValueText(carValueInfo(value), raw(value)); }

    /// Sets a value by its name and text, as in `door.left_front` and `open`.
    /// \returns an empty text, or what was wrong and what would be right.
    QString set(const QString &name, const QString &text);

    /// Cars of the models whose bumpers report two codes per sensor, of which the smaller counts.
    static bool hasTwoCodesPerSensor(int carModelId);
    void setTwoCodesPerSensor(bool on);

    /// Presses a steering-wheel key, 0 to 255. Another key that is held comes up first.
    void pressKey(quint8 key);
    void releaseKey();

    /// The payloads that report the state of \p dataType now, in the order of sending: two for the
    /// unit settings, none for the version (the box's own) and for types that no car reports.
    QList<QByteArray> report(quint8 dataType) const;

    /// Follows a command of the head unit. \returns whether the car knows it.
    bool obey(quint8 dataType, const QByteArray &payload);

    const Cluster &cluster() const { return mCluster; }

signals:
    /// What report() gives for \p dataType is another now.
    void reportChanged(quint8 dataType);
    void clusterChanged();

private:
    QByteArray place(canbox::Inbound report, int size) const;
    QByteArray radar(canbox::Inbound report) const;

    // carcommands.cpp
    bool obeyClimate(const QByteArray &payload);
    bool obeyAmbient(const QByteArray &payload);
    bool obeyUnit(const QByteArray &payload);
    bool obeySource(const QByteArray &payload);
    bool obeySourceText(const QByteArray &payload);
    bool obeyClock(const QByteArray &payload);
    void show(const Cluster &cluster);

    std::array<int, kCarValueCount> mRaw;
    bool mTwoCodesPerSensor = false;
    quint8 mKey = 0;
    bool mKeyHeld = false;
    Cluster mCluster;
};

} // namespace bench
