// What a box sees of the head unit.
#pragma once

#include "bench/box/boxend.h"
#include "bench/box/openwatch.h"

namespace bench {

/// Something that happened at the box's end of the line.
struct BoxEvent
{
    enum Kind {
        Heard,   ///< `item`, from the host; `text` is what a frame says.
        Puzzled, ///< The frame heard before has no meaning.
        Changed, ///< A value of the car: `name`, from `before` to `text`.
        Cluster, ///< `text` is what the instrument cluster shows.
        Host,    ///< `text` is what the host does with the line.
        Line,    ///< `text` is what becomes of the line.
    };

    Kind kind = Heard;
    double seconds = 0; ///< On the box's clock.
    LineItem item{};
    QString name, before, text;
};

/// Turns what happens at an open end of the line into events.
class BoxWatch : public QObject
{
    Q_OBJECT

public:
    BoxWatch(BoxEnd *end, const Clock &clock, QObject *parent = nullptr);

signals:
    void happened(const bench::BoxEvent &event);

private:
    BoxEvent event(BoxEvent::Kind kind, const QString &text = {}) const;
    void tell(BoxEvent::Kind kind, const QString &text);
    void onHeard(const LineItem &item);
    void onValue(ValueId id);
    void onPlugged(bool isPlugged);
    void watchDoor();
    void awaitHost();

    BoxEnd *const mEnd;
    const Clock &mClock;
    OpenWatch mOpenWatch;
    QTimer mSilenceTmr; ///< From when a host should say something.
    bool mSilent = false;
    int mNoise = 0;          ///< Bytes without sense since the latest that had some.
    QVector<QString> mShown; ///< The values of the car.
};

} // namespace bench
