#include "bench/screen/liveview.h"

#include "bench/screen/printer.h"
#include "bench/screen/viewkeys.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kDrawInterval = 50;   // ms
constexpr int kClockInterval = 500; // ms, for what changes without an event
constexpr int kKeptEvents = 200;
constexpr int kHelpColumns = 2;

/// A radar distance as one character: 1 is nearest, a dot is nothing.
QString nearness(const StateWatch &state, const QByteArray &sensor)
{
    const QString distance = state.text(sensor.constData());
    return distance == QLatin1String("none") ? QStringLiteral(".") : distance;
}

QString radar(const StateWatch &state, const QByteArray &bumper)
{
    QStringList sensors;
    for (const char *sensor : {".left", ".middle_left", ".middle_right", ".right"})
        sensors += nearness(state, bumper + sensor);
    return sensors.join(QStringLiteral("  "));
}

/// A pressure, with a mark for a tyre that the car complains of.
QString tyre(const StateWatch &state, const QByteArray &name)
{
    const QString text = state.text((name + ".pressure").constData());
    return state.isOn((name + ".state").constData()) ? QLatin1Char('!') + text : text;
}

QString door(const StateWatch &state, const char *name)
{
    return state.isOn(name) ? QStringLiteral("open") : QString();
}

/// The car from above: radar in front and behind, tyres and doors at the sides. 35 columns.
QStringList carPicture(const StateWatch &state)
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
QStringList facts(const StateWatch &state, const QString &key, const QStringList &cluster)
{
    const auto get = [&state](const char *name) { return orNone(state.text(name)); };
    return {
        QStringLiteral("driving   %1, range %2").arg(get("drive.speed"), get("drive.range")),
        QStringLiteral("          %1, %2").arg(get("drive.consumption"), get("drive.odometer")),
        QStringLiteral("battery   %1").arg(get("battery.voltage")),
        QStringLiteral("ambient   colour %1, level %2")
            .arg(get("ambient.colour"), get("ambient.level")),
        QStringLiteral("units     %1, %2").arg(get("unit.temperature"), get("unit.pressure")),
        QStringLiteral("keys      %1").arg(key),
        QStringLiteral("cluster   %1").arg(cluster.value(0)),
        QStringLiteral("          %1").arg(cluster.mid(1).join(QLatin1Char(' '))),
    };
}

QString keyText(const QVector<Value> &arguments)
{
    constexpr const char *kStates[] = {"pressed", "released", "long press", "released, long"};
    const int state = static_cast<int>(numberOf(arguments.value(1)));
    return QStringLiteral("%1 %2, %3")
        .arg(plainText(arguments.value(0)))
        .arg(QLatin1String(state >= 0 && state < 4 ? kStates[state] : "?"),
             QLatin1String(numberOf(arguments.value(2)) > 0 ? "steering wheel" : "panel"));
}

QVector<ScreenLine> helpLines()
{
    QVector<ScreenLine> lines;
    const Span<ViewKey> keys = viewKeys();
    const int rows = (keys.count + kHelpColumns - 1) / kHelpColumns;
    for (int row = 0; row < rows; ++row) {
        QString text;
        for (int index = row; index < keys.count; index += rows)
            text += QStringLiteral(" %1  %2")
                        .arg(QLatin1Char(keys[index].key))
                        .arg(QLatin1String(keys[index].help), -34);
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
    const bool repeatsLink = event.isLink() && std::get<int>(event.arguments.first()) == 3;
    if (event.name == QLatin1String("keyEvent"))
        mKey = keyText(event.arguments);
    if (!repeatsLink)
        note(eventLine(event, mSession->state()));
}

void LiveView::note(const QString &text)
{
    mEvents += text;
    if (mEvents.size() > kKeptEvents)
        mEvents.removeFirst();
    drawSoon();
}

void LiveView::onKey(char key)
{
    if (key == 'q')
        emit quit();
    if (key == '?')
        mShowHelp = !mShowHelp;
    for (const ViewKey &row : viewKeys())
        if (row.key == key)
            emit acted(QString::fromLatin1(row.steps));
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

// What the bench knows of the link, which is more than the service's codes: those stay for 31 s.
QString LiveView::linkText() const
{
    constexpr double kQuiet = 2.5; // s: a living box is heard at least with the answer to a knock.
    BoxEnd *const box = mSession->boxEnd();
    if (box && !box->isPlugged())
        return QStringLiteral("UNPLUGGED");
    if (!mSession->isDeviceOpen())
        return QStringLiteral("NO DEVICE");
    if (mSession->linkCode() == 0)
        return QStringLiteral("LINK LOST");
    if (mSession->linkCode() < 0)
        return QStringLiteral("knocking");
    if (box && box->box().isSilent())
        return QStringLiteral("box silent");
    const double quiet = mSession->secondsSinceByte();
    return quiet < kQuiet ? QStringLiteral("link up")
                          : QStringLiteral("link up, no bytes for %1 s").arg(quiet, 0, 'f', 0);
}

QVector<ScreenLine> LiveView::stateLines() const
{
    const StateWatch &state = mSession->state();
    const Summary &summary = mSession->summary();
    const QString link = linkText();
    const QString head =
        QStringLiteral(" %1   %2   %3 s   in %4   out %5   bad %6   ? keys, q quit")
            .arg(link, orNone(state.text("version")))
            .arg(mSession->seconds(), 0, 'f', 1)
            .arg(summary.fromBox.frameTotal())
            .arg(summary.toBox.frameTotal())
            .arg(summary.fromBox.badChecksums);

    QVector<ScreenLine> lines;
    lines.append({head, link.at(1).isUpper() ? ScreenLine::Alarm : ScreenLine::Title});
    lines.append({QString()});
    lines.append({QStringLiteral(" climate   ") + climateLine(state)});
    lines.append({QString()});

    const Cluster cluster = mSession->boxEnd() ? mSession->boxEnd()->car().cluster() : Cluster();
    const QStringList car = carPicture(state);
    const QStringList beside =
        facts(state, mKey, {cluster.source, cluster.lines[0], cluster.lines[1], cluster.clock});
    for (int row = 0; row < car.size(); ++row)
        lines.append({car.at(row) + QStringLiteral("  ") + beside.value(row)});
    return lines;
}

} // namespace bench
