#include "bench/screen/liveview.h"

#include "bench/screen/printer.h"

#include <algorithm>

namespace bench {

namespace {

constexpr int kDrawInterval = 50;   // ms
constexpr int kClockInterval = 500; // ms, for what changes without an event
constexpr int kKeptEvents = 200;
constexpr int kTitleWidth = 10;
// A screen of this size has the picture of the car, the facts beside it, and some events.
constexpr QSize kFullView{76, 18};

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

// Parts with commas between, on as many lines as they need.
QStringList wrapped(const QString &title, const QStringList &parts, int columns)
{
    QStringList lines;
    QString line = ' ' + title.leftJustified(kTitleWidth);
    for (int i = 0; i < parts.size(); ++i) {
        const QString part = parts.at(i) + (i + 1 < parts.size() ? ", " : "");
        if (line.size() + part.trimmed().size() > columns && line.size() > kTitleWidth + 1) {
            lines += line;
            line = QString(kTitleWidth + 1, ' ');
        }
        line += part;
    }
    return lines + QStringList(line);
}

QStringList climateParts(const StateWatch &state) { return climateLine(state).split(", "); }

// What a small screen has of the car, the most important first.
QStringList smallFacts(const StateWatch &state, int columns)
{
    constexpr struct
    {
        const char *getter, *text;
    } kDoors[] = {{"door.left_front", "left front"},
                  {"door.right_front", "right front"},
                  {"door.left_rear", "left rear"},
                  {"door.right_rear", "right rear"},
                  {"door.rear", "tailgate"}};
    constexpr const char *kTyres[] = {"tyre.front_left", "tyre.front_right", "tyre.rear_left",
                                      "tyre.rear_right"};
    QStringList doors, tyres;
    for (const auto &row : kDoors)
        if (state.isOn(row.getter))
            doors += QLatin1String(row.text);
    for (const char *name : kTyres)
        tyres += tyre(state, name);
    const auto get = [&state](const char *name) { return state.text(name); };
    return wrapped("driving", {get("drive.speed"), get("drive.range")}, columns) +
           wrapped("doors", doors.isEmpty() ? QStringList("closed") : doors, columns) +
           QStringList(" radar     " + radar(state, "radar.front") + "   rear  " +
                       radar(state, "radar.rear")) +
           wrapped("climate", climateParts(state), columns) + wrapped("tyres", tyres, columns) +
           wrapped("battery", {get("battery.voltage")}, columns);
}

struct KeyHelp
{
    int pages = 0;
    QStringList lines;
};

// One page of the keys, in as many columns as there is room for.
KeyHelp keyHelp(int page, const QSize &room)
{
    constexpr int kColumn = 33;
    const Span<ViewKey> keys = viewKeys();
    const int columns = std::max(1, (room.width() + 2) / kColumn);
    const int rows = std::clamp(room.height(), 1, (keys.count + columns - 1) / columns);
    const int perPage = rows * columns;
    KeyHelp help;
    help.pages = (keys.count + perPage - 1) / perPage;
    const int first = std::min(page, help.pages - 1) * perPage;
    for (int row = 0; row < rows; ++row) {
        QString text;
        for (int index = first + row; index < std::min(first + perPage, keys.count); index += rows)
            text += QStringLiteral(" %1  %2")
                        .arg(QLatin1Char(keys[index].key))
                        .arg(QLatin1String(keys[index].help), 4 - kColumn);
        help.lines += text;
    }
    return help;
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
        ++mHelpPage;
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
    const QSize size = mTerminal.size();
    KeyHelp help;
    if (mHelpPage > 0) {
        // With some room for what the keys do.
        help = keyHelp(mHelpPage - 1, {size.width(), size.height() - 3});
        if (mHelpPage > help.pages)
            mHelpPage = 0;
    }
    QVector<ScreenLine> lines{headLine(size.width(), help.pages)};
    for (const QString &text : mHelpPage > 0 ? help.lines : stateLines(size))
        lines.append({text});
    if (lines.size() < size.height())
        lines.append({QString()});
    const int room = std::max(0, size.height() - lines.size());
    for (QString event : mEvents.mid(std::max(0, mEvents.size() - room))) {
        if (size.width() < kFullView.width())
            event = event.simplified();
        lines.append({event, ScreenLine::Faint});
    }
    mTerminal.show(lines);
    mDrawTmr.start(kClockInterval);
}

// What the bench knows of the link, which is more than the service's codes: those stay for 31 s.
QString LiveView::linkText() const
{
    constexpr double kQuiet = 4; // s
    BoxEnd *const box = mSession->boxEnd();
    if (box && !box->isPlugged())
        return QStringLiteral("UNPLUGGED");
    if (!mSession->isDeviceOpen())
        return QStringLiteral("NO DEVICE");
    if (mSession->linkCode() == 0)
        return QStringLiteral("LINK LOST");
    if (box && box->box().isSilent())
        return QStringLiteral("BOX SILENT");
    if (mSession->linkCode() < 0)
        return QStringLiteral("knocking");
    const double quiet = mSession->secondsSinceByte();
    return quiet < kQuiet ? QStringLiteral("link up")
                          : QStringLiteral("link up, no bytes for %1 s").arg(quiet, 0, 'f', 0);
}

// The link, and as many of the counts as there is room for before the two keys.
ScreenLine LiveView::headLine(int columns, int helpPages) const
{
    const Summary &summary = mSession->summary();
    const QString link = linkText();
    const QString keys = mHelpPage == 0           ? QStringLiteral("? keys  q quit ")
                         : mHelpPage == helpPages ? QStringLiteral("? back  q quit ")
                                                  : QStringLiteral("? more  q quit ");
    QString head = ' ' + link;
    if (mHelpPage > 0 && helpPages > 1)
        head += QStringLiteral("   keys %1/%2").arg(mHelpPage).arg(helpPages);
    for (const QString &part : {QStringLiteral("%1 s").arg(mSession->seconds(), 0, 'f', 1),
                                orNone(mSession->state().text("version")),
                                QStringLiteral("bad %1").arg(summary.fromBox.badChecksums),
                                QStringLiteral("in %1").arg(summary.fromBox.frameTotal()),
                                QStringLiteral("out %1").arg(summary.toBox.frameTotal())}) {
        if (head.size() + 3 + part.size() + 2 + keys.size() > columns)
            break;
        head += QStringLiteral("   ") + part;
    }
    head = head.leftJustified(columns - keys.size()) + keys;
    return {head, link.at(0).isUpper() ? ScreenLine::Alarm : ScreenLine::Title};
}

QStringList LiveView::stateLines(const QSize &size) const
{
    constexpr int kClimateLines = 2; // So that nothing below moves.
    constexpr int kEventLines = 3;
    const StateWatch &state = mSession->state();
    if (size.width() < kFullView.width() || size.height() < kFullView.height())
        return smallFacts(state, size.width()).mid(0, std::max(1, size.height() - 2 - kEventLines));
    QStringList lines{QString()};
    lines += wrapped("climate", climateParts(state), size.width());
    while (lines.size() <= kClimateLines)
        lines += QString();
    lines += QString();
    const Cluster cluster = mSession->boxEnd() ? mSession->boxEnd()->car().cluster() : Cluster();
    const QStringList car = carPicture(state);
    const QStringList beside =
        facts(state, mKey, {cluster.source, cluster.lines[0], cluster.lines[1], cluster.clock});
    for (int row = 0; row < car.size(); ++row)
        lines += car.at(row) + QStringLiteral("  ") + beside.value(row);
    return lines;
}

} // namespace bench
