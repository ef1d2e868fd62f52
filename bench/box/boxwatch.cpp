#include "bench/box/boxwatch.h"

#include "bench/box/pseudoterminal.h"

namespace bench {

namespace {

constexpr int kSilence = 3000; // ms without a receipt or anything else
constexpr int kMuchNoise = 8;  // bytes: more than a fault on the line makes

QString clusterText(const Cluster &cluster)
{
    QStringList parts;
    for (const QString &part : {cluster.source, cluster.lines[0], cluster.lines[1], cluster.clock})
        if (!part.isEmpty())
            parts += part;
    return parts.join(QStringLiteral(" | "));
}

} // namespace

BoxWatch::BoxWatch(BoxEnd *end, const Clock &clock, QObject *parent)
    : QObject(parent)
    , mEnd(end)
    , mClock(clock)
{
    for (int index = 0; index < kValueCount; ++index)
        mShown += mEnd->car().text(ValueId{index});
    connect(&mEnd->box(), &VirtualBox::heard, this, &BoxWatch::onHeard);
    connect(&mEnd->box(), &VirtualBox::puzzled, this,
            [this] { tell(BoxEvent::Puzzled, QStringLiteral("not understood")); });
    connect(&mEnd->box(), &VirtualBox::frameSent, this, &BoxWatch::awaitHost);
    connect(&mEnd->car(), &VirtualCar::valueChanged, this, &BoxWatch::onValue);
    connect(&mEnd->car(), &VirtualCar::clusterChanged, this,
            [this] { tell(BoxEvent::Cluster, clusterText(mEnd->car().cluster())); });
    connect(&mEnd->terminal(), &SerialLine::pluggedChanged, this, &BoxWatch::onPlugged);

    connect(&mOpenWatch, &OpenWatch::opened, this, [this] {
        tell(BoxEvent::Host, QStringLiteral("opens the device"));
        awaitHost();
    });
    connect(&mOpenWatch, &OpenWatch::closed, this, [this] {
        tell(BoxEvent::Host, QStringLiteral("closes the device"));
        mSilenceTmr.stop();
    });
    watchDoor();
    mSilenceTmr.setSingleShot(true);
    mSilenceTmr.setInterval(kSilence);
    connect(&mSilenceTmr, &QTimer::timeout, this, [this] {
        mSilent = true;
        tell(BoxEvent::Host, QStringLiteral("is silent"));
    });
}

BoxEvent BoxWatch::event(BoxEvent::Kind kind, const QString &text) const
{
    BoxEvent event;
    event.kind = kind;
    event.seconds = static_cast<double>(mClock.nanoseconds()) / 1e9;
    event.text = text;
    return event;
}

void BoxWatch::tell(BoxEvent::Kind kind, const QString &text) { emit happened(event(kind, text)); }

void BoxWatch::awaitHost()
{
    if (!mSilent && !mSilenceTmr.isActive())
        mSilenceTmr.start();
}

void BoxWatch::onHeard(const LineItem &item)
{
    mOpenWatch.look(); // It has opened the device before it spoke.
    mSilenceTmr.stop();
    mSilent = false;
    BoxEvent heard = event(BoxEvent::Heard);
    heard.item = item;
    if (item.kind == LineItem::Frame)
        heard.text = VirtualBox::meaning(canbox::Outbound{item.dataType}, item.bytes);
    emit happened(heard);

    const bool isNoise = item.kind == LineItem::Noise || item.kind == LineItem::Incomplete;
    const int before = mNoise;
    mNoise = isNoise ? mNoise + item.bytes.size() : 0;
    if (before >= kMuchNoise || mNoise < kMuchNoise)
        return;
    const int speed = mEnd->terminal().otherSpeed();
    tell(BoxEvent::Host, speed == canbox::kBaudRate
                             ? QStringLiteral("makes noise only; does it speak at 38400 baud?")
                             : QStringLiteral("speaks at %1 instead of 38400")
                                   .arg(speed > 0 ? QStringLiteral("%1 baud").arg(speed)
                                                  : QStringLiteral("an odd speed")));
}

void BoxWatch::onValue(ValueId id)
{
    BoxEvent changed = event(BoxEvent::Changed, mEnd->car().text(id));
    changed.name = QLatin1String(fieldOf(id).name);
    changed.before = std::exchange(mShown[static_cast<int>(id)], changed.text);
    emit happened(changed);
}

void BoxWatch::onPlugged(bool isPlugged)
{
    mSilenceTmr.stop();
    mSilent = false;
    watchDoor();
    tell(BoxEvent::Line, isPlugged ? QStringLiteral("plugged in") : QStringLiteral("unplugged"));
}

// A real device is opened by us; who has its other end, nobody can tell.
void BoxWatch::watchDoor()
{
    if (const auto *terminal = qobject_cast<PseudoTerminal *>(&mEnd->terminal()))
        if (terminal->isPlugged())
            mOpenWatch.watch(terminal->device());
}

} // namespace bench
