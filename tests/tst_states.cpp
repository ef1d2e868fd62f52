// Every state that a service can be in, and every event in each: the whole graph of link, parser
// and keys, held against what must be so in all of them and against the diagrams of the
// documentation.
#include "servicetest.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

namespace {

const QString kStart = "2e8101017c !";
const QString kStop = "2e8101007d !";
const QString kAskVersion = "2e900230003d !";
const QString kCarSelect = "2e91013439"; // of index 0x1234, by its low byte
const QString kAlive = "notifyCanbusStatus 3";
const QString kLost = "notifyCanbusStatus 0";

struct State
{
    bool check, knock, watchdog, carType, parseOut, longPress, held;
    int missed, parser, remaining;

    explicit State(const ServiceTest &test)
        : check(test.probe.checkConnect.isActive())
        , knock(test.probe.requestConnect.isActive())
        , watchdog(test.probe.send.isActive())
        , carType(test.probe.cartype.isActive())
        , parseOut(test.probe.parseOut.isActive())
        , longPress(test.probe.longPress.isActive())
        , held(test.probe.keyPressed)
        , missed(test.probe.noAnswerCount)
        , parser(test.probe.parseState)
        , remaining(parser == 4 ? test.probe.recvRemain : 0)
    {
    }

    auto all() const
    {
        return std::tie(check, knock, watchdog, carType, parseOut, longPress, held, missed, parser,
                        remaining);
    }
    bool operator<(const State &other) const { return all() < other.all(); }

    QString link() const
    {
        return watchdog ? "Checking" : check ? "Alive" : knock ? "Knocking" : "Created";
    }

    // What the diagrams call the state of each part.
    QStringList nodes() const
    {
        static const QMap<int, QString> parsers{{0, "Idle"},
                                                {3, "AwaitType"},
                                                {2, "AwaitLength"},
                                                {4, "Payload"},
                                                {5, "AwaitChecksum"}};
        const auto timer = [](const char *name, bool on) {
            return name + QString(on ? "On" : "Off");
        };
        return {link(),
                parsers.value(parser),
                !held       ? "Released"
                : longPress ? "Held"
                            : "HeldLong",
                timer("LinkCheck", check),
                timer("Knock", knock),
                timer("AnswerTick", watchdog),
                timer("CarSelection", carType),
                timer("ParseOut", parseOut),
                timer("LongPress", longPress)};
    }
};

void fire(QTimer &timer) { QMetaObject::invokeMethod(&timer, "timeout"); }
void fire(canservice::LazyTimer &timer)
{
    if (timer.isSingleShot())
        timer.stop();
    QMetaObject::invokeMethod(&timer, "timeout");
}

using Test = ServiceTest &;
using In = const State &;

const QString kTaken = "ff !, " + kAlive;

// What a host, a timer or the box can do: its names in the diagrams, general to special; when it
// can happen; and all that comes of it.
const struct Event
{
    QStringList names;
    bool (*isPossible)(In);
    void (*happen)(Test);
    QString (*effect)(In);
} kEvents[] = {
    {{"start"},
     [](In) { return true; },
     [](Test t) { t.service.start(); },
     [](In) { return kStart + ", " + kAskVersion; }},
    {{"stop"}, [](In) { return true; }, [](Test t) { t.service.stop(); }, [](In) { return kStop; }},
    {{"link check"},
     [](In s) { return s.check; },
     [](Test t) { fire(t.probe.checkConnect); },
     [](In) { return kCarSelect + ", " + kAskVersion; }},
    {{"knock"},
     [](In s) { return s.knock; },
     [](Test t) { fire(t.probe.requestConnect); },
     [](In) { return kStop + ", " + kStart + ", " + kAskVersion; }},
    {{"answer tick"},
     [](In s) { return s.watchdog; },
     [](Test t) { fire(t.probe.send); },
     [](In s) { return s.missed < 3 ? QString() : kLost; }},
    {{"car selection"},
     [](In s) { return s.carType; },
     [](Test t) { fire(t.probe.cartype); },
     [](In) { return kCarSelect; }},
    {{"parse-out"},
     [](In s) { return s.parseOut; },
     [](Test t) { fire(t.probe.parseOut); },
     [](In) { return QString(); }},
    {{"long press"},
     [](In s) { return s.longPress; },
     [](Test t) { fire(t.probe.longPress); },
     [](In) { return QString("keyEvent 5 2 true"); }},
    {{"good frame", "press"},
     [](In s) { return s.parser == 0; },
     [](Test t) { t.receive(hex("2e20020501d7")); },
     [](In s) { return kTaken + (s.held ? "" : ", keyEvent 5 0 true"); }},
    {{"good frame", "release"},
     [](In s) { return s.parser == 0; },
     [](Test t) { t.receive(hex("2e20020500d8")); },
     [](In s) {
         return kTaken + (!s.held       ? ""
                          : s.longPress ? ", keyEvent 5 1 true"
                                        : ", keyEvent 5 3 true");
     }},
};

// What the box can send besides, in each state of the parser or in one: a piece of the frame that
// comes in pieces, or a whole chunk.
const struct Chunk
{
    int parser, remaining;
    const char *bytes, *effect;
    QStringList names;
} kChunks[] = {
    {0, 0, "2e3002563146", "+, sigVersionData, notifyCanbusStatus 3", {"good frame", "version"}},
    {0, 0, "2e210a00000000000000000000d4", "+, acStatusChanged", {"good frame"}},
    {0, 0, "2e22080000000000000000d5", "+", {"good frame"}},
    {0, 0, "2e23080000000000000000d4", "+", {"good frame"}},
    {0, 0, "2e240700000000000000d4", "+", {"good frame"}},
    {0, 0, "2e28020000d5", "+, unitDataChanged", {"good frame"}},
    {0, 0, "2e610200009c", "+, sigAmbientChanged", {"good frame"}},
    {0, 0, "2e6301009b", "+", {"good frame"}}, // Of a length that is refused.
    {0, 0, "2e69010095", "+", {"good frame"}},
    {0, 0, "2e250105d4", "+", {"good frame"}}, // Of no known type.
    {0, 0, "2e250105d5", "f0 !", {"bad frame"}},
    {0, 0, "00ff", "", {"noise"}},
    {0, 0, "2e", "", {"0x2E"}},
    {3, 0, "25", "", {"next bytes", "data type"}},
    {2, 0, "02", "", {"next bytes", "length"}},
    {4, 2, "01", "", {"next bytes", "payload byte"}},
    {4, 1, "02", "", {"next bytes", "last payload byte"}},
    {5, 0, "d5", "+", {"good frame", "right checksum"}},
    {5, 0, "d4", "f0 !", {"next bytes", "wrong checksum"}},
};

constexpr int kEventCount = std::size(kEvents) + std::size(kChunks);

bool isPossible(int event, In state)
{
    if (event < int(std::size(kEvents)))
        return kEvents[event].isPossible(state);
    const Chunk &chunk = kChunks[event - std::size(kEvents)];
    return chunk.parser == state.parser && chunk.remaining == state.remaining;
}

void happen(int event, Test test)
{
    if (event < int(std::size(kEvents)))
        kEvents[event].happen(test);
    else
        test.receive(hex(kChunks[event - std::size(kEvents)].bytes));
}

QString effect(int event, In state)
{
    return event < int(std::size(kEvents))
               ? kEvents[event].effect(state)
               : QString(kChunks[event - std::size(kEvents)].effect).replace('+', kTaken);
}

const QStringList &names(int event)
{
    return event < int(std::size(kEvents)) ? kEvents[event].names
                                           : kChunks[event - std::size(kEvents)].names;
}

// From, to and the name of what happens, by part.
using Edges = std::set<std::tuple<QString, QString, QString>>;

// The edges of the diagrams, less those that begin at a start.
Edges drawnEdges()
{
    QFile file(STATES_PAGE);
    file.open(QIODevice::ReadOnly);
    static const QRegularExpression edge("^ *(\\w+) --> (\\w+): (.+)$",
                                         QRegularExpression::MultilineOption);
    Edges edges;
    for (auto found = edge.globalMatch(QString::fromUtf8(file.readAll())); found.hasNext();) {
        const auto match = found.next();
        edges.insert({match.captured(1), match.captured(2), match.captured(3)});
    }
    return edges;
}

} // namespace

class StatesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { CanBusManager::instance()->setHwdCarModelIndex(0x1234); }

    // From a new service on, each event in each state, until no new state appears.
    void everyStateIsSound()
    {
        const LogCapture silence(false);
        const Edges drawn = drawnEdges();
        Edges walked;
        std::map<State, QVector<int>> ways; // The events that lead to a state.
        std::vector<State> found;
        const auto add = [&](In state, const QVector<int> &way) {
            if (ways.emplace(state, way).second)
                found.push_back(state);
        };
        add(State(ServiceTest()), {});
        int edges = 0;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const State before = found[i];
            const QVector<int> way = ways.at(before);
            for (int event = 0; event < kEventCount; ++event) {
                if (!isPossible(event, before))
                    continue;
                ServiceTest test; // Its end is a deletion in every state.
                for (const int step : way)
                    happen(step, test);
                test.take();
                happen(event, test);
                ++edges;

                const State after(test);
                const QByteArray what =
                    (before.nodes().join(' ') + ": " + names(event).last()).toUtf8();
                QVERIFY2(test.taken() == effect(event, before), what);
                const bool good = names(event).first() == "good frame";
                // Once a host has started it or the box has spoken, something leads back to a
                // living link; the car is selected while it lives; a frame ends the knocking.
                add(after, way + QVector{event});
                const auto begins = [](int e) {
                    return names(e).first() == "start" || names(e).first() == "good frame";
                };
                const bool begun = begins(event) || std::any_of(way.begin(), way.end(), begins);
                QVERIFY2(after.check || after.knock || !begun, what);
                QVERIFY2(after.check || !(after.carType || after.watchdog), what);
                QVERIFY2(!good || (after.check && !after.knock && !after.watchdog &&
                                   after.missed == 0 && !after.parseOut),
                         what);
                note(before, after, event, drawn, walked);
            }
        }
        Edges difference;
        std::set_symmetric_difference(walked.begin(), walked.end(), drawn.begin(), drawn.end(),
                                      std::inserter(difference, difference.end()));
        QStringList wrong; // Walked but not drawn, or drawn but not walked.
        for (const auto &[from, to, name] : difference)
            wrong << from + " --> " + to + ": " + name;
        QCOMPARE(wrong, QStringList());
        QCOMPARE(int(found.size()), 520);
        QCOMPARE(edges, 5379);
    }

private:
    // What an event does to each part, by the most special of its names that the part's diagram
    // has.
    static void note(In before, In after, int event, const Edges &drawn, Edges &walked)
    {
        const QStringList from = before.nodes();
        const QStringList to = after.nodes();
        for (int part = 0; part < from.size(); ++part) {
            if (from[part] == to[part])
                continue;
            QString name = names(event).last();
            for (const QString &candidate : names(event))
                if (drawn.count({from[part], to[part], candidate}) > 0)
                    name = candidate;
            walked.insert({from[part], to[part], name});
        }
    }
};

QTEST_GUILESS_MAIN(StatesTest)
#include "tst_states.moc"
