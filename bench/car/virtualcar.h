// The car behind the virtual box.
#pragma once

#include "bench/wire/reports.h"

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

/// Holds the state of a car, packs the box's reports from it, and follows the commands that the
/// box passes on. It knows payloads only; frames and the line are the box's.
class VirtualCar : public QObject
{
    Q_OBJECT

public:
    explicit VirtualCar(QObject *parent = nullptr);

    int raw(ValueId id) const { return mRaw[static_cast<std::size_t>(id)]; }
    /// Sets a value by what goes over the wire; bits that have no room there are dropped.
    void setRaw(ValueId id, int raw);
    QString text(ValueId id) const { return valueText(fieldOf(id), raw(id)); }

    /// Whether the bumpers report two codes per sensor, of which the smaller counts.
    void setTwoCodesPerSensor(bool on);

    /// Presses a steering-wheel key, 0 to 255. Another key that is held comes up first.
    void pressKey(quint8 key);
    void releaseKey();

    /// The payloads that report the state of \p type now, in the order of sending: one for each
    /// selector, none for the version (the box's own) and for types that no car reports.
    QList<QByteArray> report(Inbound type) const;

    /// Follows a command of the head unit. \returns whether the car knows it.
    bool obey(Outbound command, const QByteArray &payload);
    /// What obey() takes a command for; empty for what the car does not know.
    static QString meaning(Outbound command, const QByteArray &payload);

    const Cluster &cluster() const { return mCluster; }

signals:
    /// What report() gives for \p type is another now.
    void reportChanged(canbox::Inbound type);
    void valueChanged(bench::ValueId id);
    void clusterChanged();

private:
    bool store(ValueId id, int raw);

    // effects.cpp
    bool obeyClimate(const QByteArray &payload);
    bool show(const Cluster &cluster, bool isKnown);

    std::array<int, kValueCount> mRaw;
    bool mTwoCodesPerSensor = false;
    Cluster mCluster;
};

} // namespace bench
