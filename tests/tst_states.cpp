// Every state that a service can be in, and every event in each: the whole graph of link, parser
// and keys, held against what must be so in all of them and against the diagrams of docs/states.md.
#include "servicetest.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <map>
#include <set>

namespace {

enum { Check, Knock, Tick, Selection, ParseOut, LongPress, Held, Missed, Parser, Remaining, Parts };
using State = std::array<int, Parts>; // Timers run or not.

State stateOf(const canservice::ServiceProbe &p)
{
    return {p.checkConnect.isActive(),
            p.requestConnect.isActive(),
            p.send.isActive(),
            p.cartype.isActive(),
            p.parseOut.isActive(),
            p.longPress.isActive(),
            p.keyPressed,
            p.noAnswerCount,
            p.parseState,
            p.parseState == 4 ? p.recvRemain : 0};
}

// What the diagrams call the state of each part.
QStringList nodesOf(const State &s)
{
    static const QMap<int, QString> parsers{
        {0, "Idle"}, {3, "AwaitType"}, {2, "AwaitLength"}, {4, "Payload"}, {5, "AwaitChecksum"}};
    static const char *const timers[] = {"LinkCheck",    "Knock",    "AnswerTick",
                                         "CarSelection", "ParseOut", "LongPress"};
    QStringList nodes{s[Tick]    ? "Checking"
                      : s[Check] ? "Alive"
                      : s[Knock] ? "Knocking"
                                 : "Created",
                      s[LongPress] ? "Held"
                      : s[Held]    ? "HeldLong"
                                   : "Released",
                      parsers.value(s[Parser])};
    for (int timer = Check; timer <= LongPress; ++timer)
        nodes << timers[timer] + QString(s[std::size_t(timer)] ? "On" : "Off");
    return nodes;
}

// What a host, a timer and the box can do: the names in the diagrams, the general one first; the
// part whose state allows it; the box's bytes; all that comes of it, + for a frame that is taken.
const struct
{
    const char *names;
    int part, value;
    const char *bytes, *effect;
} kEvents[] = {
    {"start", Parts, 0, "", "2e8101017c !, 2e900230003d !"},
    {"stop", Parts, 0, "", "2e8101007d !"},
    {"link check", Check, 1, "", "2e91013439, 2e900230003d !"},
    {"knock", Knock, 1, "", "2e8101007d !, 2e8101017c !, 2e900230003d !"},
    {"answer tick", Tick, 1, "", "notifyCanbusStatus 0"},
    {"car selection", Selection, 1, "", "2e91013439"},
    {"parse-out", ParseOut, 1, "", ""},
    {"long press", LongPress, 1, "", "keyEvent 5 2 true"},
    {"good frame|press", Parser, 0, "2e20020501d7", "+, keyEvent 5 0 true"},
    {"good frame|release", Parser, 0, "2e20020500d8", "+, keyEvent 5 3 true"},
    {"good frame|version", Parser, 0, "2e3002563146", "+, sigVersionData, notifyCanbusStatus 3"},
    {"good frame", Parser, 0, "2e210a00000000000000000000d4", "+, acStatusChanged"},
    {"good frame", Parser, 0, "2e22080000000000000000d5", "+"},
    {"good frame", Parser, 0, "2e23080000000000000000d4", "+"},
    {"good frame", Parser, 0, "2e240700000000000000d4", "+"},
    {"good frame", Parser, 0, "2e28020000d5", "+, unitDataChanged"},
    {"good frame", Parser, 0, "2e610200009c", "+, sigAmbientChanged"},
    {"good frame", Parser, 0, "2e6301009b", "+"}, // Of a length that is refused.
    {"good frame", Parser, 0, "2e69010095", "+"},
    {"good frame", Parser, 0, "2e250105d4", "+"}, // Of no known type.
    {"bad frame", Parser, 0, "2e250105d5", "f0 !"},
    {"noise", Parser, 0, "00ff", ""},
    {"0x2E", Parser, 0, "2e", ""}, // And the rest of a frame in pieces.
    {"next bytes|data type", Parser, 3, "25", ""},
    {"next bytes|length", Parser, 2, "02", ""},
    {"next bytes|payload byte", Remaining, 2, "01", ""},
    {"next bytes|last payload byte", Remaining, 1, "02", ""},
    {"good frame|right checksum", Parser, 5, "d5", "+"},
    {"next bytes|wrong checksum", Parser, 5, "d4", "f0 !"},
};

QStringList namesOf(int event) { return QString(kEvents[event].names).split('|'); }

bool isPossible(int event, const State &state)
{
    const auto &row = kEvents[event];
    return row.part == Parts || state[std::size_t(row.part)] == row.value;
}

void happen(int event, ServiceTest &test)
{
    const auto &row = kEvents[event];
    auto &probe = test.probe;
    QTimer *const timers[] = {&probe.checkConnect, &probe.requestConnect, &probe.send,
                              &probe.cartype,      &probe.parseOut,       &probe.longPress};
    if (row.part == ParseOut)
        probe.parseOut.stop(); // As a single shot does.
    if (row.part == LongPress)
        probe.longPress.stop();
    if (row.part <= LongPress)
        QMetaObject::invokeMethod(timers[row.part], "timeout");
    else if (row.part != Parts)
        test.receive(hex(row.bytes));
    else if (row.names == QString("start"))
        test.service.start();
    else
        test.service.stop();
}

QString effectOf(int event, const State &before)
{
    const QString name = namesOf(event).last();
    QString effect = QString(kEvents[event].effect).replace('+', "ff !, notifyCanbusStatus 3");
    if (name == "answer tick" && before[Missed] < 3)
        return QString();
    if ((name == "press" && before[Held]) || (name == "release" && !before[Held]))
        return effect.section(", keyEvent", 0, 0);
    return name == "release" && before[LongPress] ? effect.replace("5 3", "5 1") : effect;
}

// From, to, and the name of what happens.
using Edges = std::set<QStringList>;

Edges drawnEdges()
{
    QFile file(STATES_PAGE);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression edge("^ *(\\w+) --> (\\w+): (.+)$",
                                         QRegularExpression::MultilineOption);
    Edges edges;
    for (auto found = edge.globalMatch(QString::fromUtf8(file.readAll())); found.hasNext();)
        edges.insert(found.next().capturedTexts().mid(1));
    return edges;
}

// What an event does to each part, by the most special of its names that the diagrams have there.
void note(const State &before, const State &after, int event, const Edges &drawn, Edges &walked)
{
    const QStringList from = nodesOf(before);
    const QStringList to = nodesOf(after);
    for (int part = 0; part < from.size(); ++part) {
        QStringList edge{from[part], to[part], namesOf(event).last()};
        for (const QString &name : namesOf(event))
            if (drawn.count({from[part], to[part], name}) > 0)
                edge[2] = name;
        if (from[part] != to[part])
            walked.insert(edge);
    }
}

} // namespace

class StatesTest : public QObject
{
    Q_OBJECT

private slots:
    // From a new service on, each event in each state, until no new state appears.
    void everyStateIsSound()
    {
        CanBusManager::instance()->setHwdCarModelIndex(0x1234);
        const LogCapture silence(false);
        const Edges drawn = drawnEdges();
        Edges walked;
        std::vector<State> found{stateOf(ServiceTest().probe)};
        std::map<State, QVector<int>> ways{{found.front(), {}}}; // What leads to a state.
        int edges = 0;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const State before = found[i];
            for (int event = 0; event < int(std::size(kEvents)); ++event) {
                if (!isPossible(event, before))
                    continue;
                ++edges;
                ServiceTest test; // Its end is a deletion in every state.
                QVector<int> way = ways.at(before);
                for (const int step : way)
                    happen(step, test);
                test.take();
                // The link signal finds no give-up ahead, the version request the watchdog at work.
                test.afterEvent = [&] {
                    const QString last = test.journal.last();
                    QVERIFY(last != "notifyCanbusStatus 3" || !test.probe.parseOut.isActive());
                    QVERIFY(kEvents[event].part != Check || last == "2e91013439" ||
                            test.probe.send.isActive());
                };
                happen(event, test);
                way << event;
                const State after = stateOf(test.probe);
                const QByteArray what =
                    (nodesOf(before).join(' ') + ": " + kEvents[event].names).toUtf8();
                QVERIFY2(test.taken() == effectOf(event, before), what);

                // Once the host or the box has begun, something leads back to a living link. The
                // car is selected while it lives, and a frame ends the knocking and the waiting.
                const bool begun = std::any_of(way.begin(), way.end(), [](int step) {
                    return step == 0 || namesOf(step).first() == "good frame";
                });
                QVERIFY2(after[Check] || after[Knock] || !begun, what);
                QVERIFY2(after[Check] || !(after[Selection] || after[Tick]), what);
                QVERIFY2(namesOf(event).first() != "good frame" ||
                             (after[Check] && !after[Knock] && !after[Tick] && !after[Missed] &&
                              !after[ParseOut]),
                         what);
                if (ways.emplace(after, way).second)
                    found.push_back(after);
                note(before, after, event, drawn, walked);
            }
        }
        QCOMPARE(int(found.size()), 520);
        QCOMPARE(edges, 5379);

        Edges wrong; // Walked but not drawn, or drawn but not walked.
        std::set_symmetric_difference(walked.begin(), walked.end(), drawn.begin(), drawn.end(),
                                      std::inserter(wrong, wrong.end()));
        QCOMPARE(wrong.empty() ? QStringList() : *wrong.begin(), QStringList());
    }
};

QTEST_GUILESS_MAIN(StatesTest)
#include "tst_states.moc"
