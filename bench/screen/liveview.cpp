#include "liveview.h"

#include "eventprinter.h"
#include "viewkeys.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kDrawInterval = 50;   // ms
constexpr int kClockInterval = 500; // ms, for what changes without an event
constexpr int kKeptEvents = 200;
constexpr int kHelpColumns = 2;

/// A radar distance as one character: 1 is nearest, a dot is nothing.
QString nearness(const Snapshot &state, const QByteArray &sensor)
{
    const int distance = state.value(sensor.constData()).value.toInt();
    return distance == 255 ? QStringLiteral(".") : QString::number(distance);
}

QString radar(const Snapshot &state, const QByteArray &bumper)
{
    QStringList sensors;
    for (const char *sensor : {".left", ".middle_left", ".middle_right", ".right"})
        sensors += nearness(state, bumper + sensor);
    return sensors.join(QStringLiteral("  "));
}

/// A pressure, with a mark for a tyre that the car complains of.
QString tyre(const Snapshot &state, const QByteArray &name)
{
    const Snapshot::Value pressure = state.value((name + ".pressure").constData());
    const QString text = pressure.value.toFloat() < 0 ? QStringLiteral("--") : pressure.text();
    return state.isOn((name + ".state").constData()) ? QLatin1Char('!') + text : text;
}

QString door(const Snapshot &state, const char *name)
{
    return state.isOn(name) ? QStringLiteral("open") : QString();
}

/// The car from above: radar in front and behind, tyres and doors at the sides. 35 columns.
QStringList carPicture(const Snapshot &state)
{
    const auto row = [](const QString &left, const char *body, const QString &right) {
        return left.rightJustified(11) + QLatin1String(body) + right.leftJustified(11);
    };
    const char *const tail = state.isOn("door.rear") ? "  '--   --'  " : "  '-------'  ";
    return {
        row({}, "             ", {}).replace(12, 10, radar(state, "radar.front")),
        row({}, "  .-------.  ", {}),
        row(tyre(state, "tyre.front_left"), " [|       |] ", tyre(state, "tyre.front_right")),
        row(door(state, "door.left_front"), "  |-------|  ", door(state, "door.right_front")),
        row(door(state, "door.left_rear"), "  |       |  ", door(state, "door.right_rear")),
        row(tyre(state, "tyre.rear_left"), " [|       |] ", tyre(state, "tyre.rear_right")),
        row({}, tail, door(state, "door.rear")),
        row({}, "             ", {}).replace(12, 10, radar(state, "radar.rear")),
    };
}

QString orNone(const QString &text) { return text.isEmpty() ? QStringLiteral("--") : text; }

/// What stands beside the car, a line each.
QStringList facts(const Snapshot &state, const QString &key, const QStringList &cluster)
{
    const auto get = [&state](const char *name) { return orNone(state.value(name).text()); };
    const auto unit = [&state](const char *name) { return orNone(state.value(name).unit); };
    const bool hasBattery = state.value("battery.voltage").value.toFloat() >= 0;
    return {
        QStringLiteral("driving   %1, range %2").arg(get("drive.speed"), get("drive.range")),
        QStringLiteral("          %1, %2").arg(get("drive.consumption"), get("drive.odometer")),
        QStringLiteral("battery   %1")
            .arg(hasBattery ? get("battery.voltage") : QStringLiteral("--")),
        QStringLiteral("ambient   colour %1, level %2")
            .arg(get("ambient.colour"), get("ambient.level")),
        QStringLiteral("units     %1, %2").arg(unit("unit.temperature"), unit("unit.pressure")),
        QStringLiteral("keys      %1").arg(key),
        QStringLiteral("cluster   %1").arg(cluster.value(0)),
        QStringLiteral("          %1").arg(cluster.mid(1).join(QLatin1Char(' '))),
    };
}

QString keyText(const QVariantList &arguments)
{
    constexpr const char *kStates[] = {"pressed", "released", "long press", "released, long"};
    const int state = arguments.value(1).toInt();
    return QStringLiteral("%1 %2, %3")
        .arg(arguments.value(0).toInt())
        .arg(QLatin1String(state >= 0 && state < 4 ? kStates[state] : "?"),
             QLatin1String(arguments.value(2).toBool() ? "steering wheel" : "panel"));
}

QVector<ScreenLine> helpLines()
{
    QVector<ScreenLine> lines;
    const int rows = (viewKeyCount() + kHelpColumns - 1) / kHelpColumns;
    for (int row = 0; row < rows; ++row) {
        QString text;
        for (int index = row; index < viewKeyCount(); index += rows)
            text += QStringLiteral(" %1  %2")
                        .arg(QLatin1Char(viewKey(index).key))
                        .arg(QLatin1String(viewKey(index).help), -34);
        lines.append({text});
    }
    lines.append({QStringLiteral(" ?  back to the events               q  quit")});
    return lines;
}

} // namespace

LiveView::LiveView(Session *session, QObject *parent)
    : QObject(parent)
    , mSession(session)
{
    // Messages would run across the picture; what they tell comes as an event, too.
    mMessages =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    mDrawTmr.setSingleShot(true);
    connect(&mDrawTmr, &QTimer::timeout, this, &LiveView::draw);
    connect(&mTerminal, &Terminal::keyPressed, this, &LiveView::onKey);
    mDrawTmr.start(0);
}

LiveView::~LiveView() { qInstallMessageHandler(mMessages); }

void LiveView::show(const Event &event)
{
    // A good frame says so every time; the head line shows the link.
    const bool repeatsLink = event.name == QLatin1String("notifyCanbusStatus") &&
                             event.changes.isEmpty() && event.arguments.value(0).toInt() == 3;
    if (event.name == QLatin1String("keyEvent"))
        mKey = keyText(event.arguments);
    if (!repeatsLink)
        mEvents += eventLine(event, mSession->state());
    if (mEvents.size() > kKeptEvents)
        mEvents.removeFirst();
    drawSoon();
}

void LiveView::onKey(char key)
{
    const ViewKey *action = findViewKey(key);
    if (key == 'q') {
        emit quit();
    } else if (key == '?') {
        mShowHelp = !mShowHelp;
    } else if (action && action->needsBox && !mSession->isEmbedded()) {
        mEvents += QStringLiteral("           '%1' needs the embedded box").arg(QLatin1Char(key));
    } else if (action) {
        action->act(*mSession);
    }
    drawSoon();
}

void LiveView::drawSoon()
{
    if (mDrawTmr.interval() != kDrawInterval || !mDrawTmr.isActive())
        mDrawTmr.start(kDrawInterval);
}

void LiveView::draw()
{
    QVector<ScreenLine> lines = stateLines();
    lines.append({QString()});
    if (mShowHelp) {
        lines += helpLines();
    } else {
        const int room = std::max(0, mTerminal.size().height() - lines.size());
        for (const QString &event : mEvents.mid(std::max(0, mEvents.size() - room)))
            lines.append({event, ScreenLine::Faint});
    }
    mTerminal.show(lines);
    mDrawTmr.start(kClockInterval);
}

QVector<ScreenLine> LiveView::stateLines() const
{
    const Snapshot &state = mSession->state();
    const Summary &summary = mSession->summary();
    const int link = mSession->linkCode();
    const char *const linkText = link == 3 ? "link up" : link == 0 ? "LINK LOST" : "knocking";
    const QString head =
        QStringLiteral(" %1   %2   %3 s   in %4   out %5   bad %6   ? keys, q quit")
            .arg(QLatin1String(linkText), orNone(state.value("version").text()))
            .arg(mSession->seconds(), 0, 'f', 1)
            .arg(summary.fromBox.frameTotal())
            .arg(summary.toBox.frameTotal())
            .arg(summary.fromBox.badChecksums);

    QVector<ScreenLine> lines;
    lines.append({head, link == 0 ? ScreenLine::Alarm : ScreenLine::Title});
    lines.append({QString()});
    lines.append({QStringLiteral(" climate   ") + climateLine(state)});
    lines.append({QString()});

    const Cluster &cluster = mSession->car().cluster();
    const QStringList car = carPicture(state);
    const QStringList beside =
        facts(state, mKey, {cluster.source, cluster.lines[0], cluster.lines[1], cluster.clock});
    for (int row = 0; row < car.size(); ++row)
        lines.append({car.at(row) + QStringLiteral("  ") + beside.value(row)});
    return lines;
}

} // namespace bench
