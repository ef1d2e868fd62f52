// Scenarios: what is read from the text, what is said about mistakes, and what canbench makes of
// both.
#include "hosttest.h"

#include "bench/language/closestname.h"
#include "bench/language/parser.h"
#include "bench/language/prompts.h"
#include "bench/screen/liveview.h"

#include <QRegularExpression>

#include <algorithm>

using namespace bench;

namespace {

// A text with one mistake in its last line; the mistake's column and a part of what is said.
const struct
{
    const char *name;
    QByteArray text;
    int column;
    const char *said;
} kMistakes[] = {
    {"a step's word with a slip", " expct link == 3", 2, "no step 'expct'; did you mean 'expect'"},
    {"a step's word that is like none", "xyzzyx", 1, "possible: model, start"},
    {"a car value with a slip", "set drive.sped 3", 5, "did you mean 'drive.speed'"},
    {"a word that the value does not have", "set door.rear ajar", 15, "possible: closed, open"},
    {"a number that is none of a value", "set climate.left nan", 18, "15.5 to 29.5"},
    {"a number beyond all", "set climate.left 1e300", 18, "15.5 to 29.5"},
    {"a value that is missing", "set climate.left  # 20", 17, "the line ends where 15.5 to"},
    {"a missing word", "ramp drive.speed 5 over 1s", 18, "'5' is where 'to' belongs"},
    {"a time below zero", "wait -1s", 6, "is not a time"},
    {"a wait that is not real", "wait 1s reel", 9, "'reel' is too much"},
    {"a quote without end", "say \"hello", 5, "no end"},
    {"an operator for a name", "expect == 3", 8, "'==' is where the name of a getter belongs"},
    {"a getter with a slip", "expect climat.left == 3", 8, "did you mean 'climate.left'"},
    {"an assignment for a comparison", "expect link = 3", 13, "'=' is not =="},
    {"a text for a number", "expect link == up", 16, "link cannot be 'up'; possible: a number"},
    {"a number that is none", "expect link > nan", 15, "link cannot be 'nan'; possible: a number"},
    {"an order of texts", "expect cluster.clock < 3", 24, "compare it by == or !="},
    {"a signal with a slip", "expect signal doorChange", 15, "did you mean 'doorChanged'"},
    {"too few arguments of a signal", "expect signal keyEvent(5)", 24, "has 3 arguments, not 1"},
    {"an open parenthesis", "expect signal keyEvent(5, 1, true", 34, "where ')' belongs"},
    {"a frame of the host with a slip", "expect frame climate comand", 22,
     "'climate comand'; possible"},
    {"half a name of a frame", "expect frame car", 17, "where the rest of the name belongs"},
    {"a frame's byte out of range", "expect frame clock 1 300", 22, "'300' is not a payload byte"},
    {"a model after a step", "wait 1s\nmodel 3", 1, "before the first step"},
    {"an unknown operation", "start\ncall clok 2025-01-01 10:00", 6, "did you mean 'clock'"},
    {"a day that is not in the calendar", "start\ncall clock 2025-02-30 10:00", 12, "a date"},
    {"a fault with a slip", "fault bitflip", 7, "did you mean 'bit-flip'"},
    {"bytes that are no text", "say \"\xff\"", 1, "not UTF-8 text"},
    {"a zero byte", QByteArray("say \"\0\"", 7), 1, "not UTF-8 text"},
};

const struct
{
    const char *name;
    Value actual;
    const char *met, *unmet;
} kComparisons[] = {
    {"a float that is not exact", 21.6F, "== 21.6|<= 21.6|>= 21.6",
     "!= 21.6|< 21.6|> 21.6|== 21.61"},
    {"a whole number", 255, "== 255|!= 254|> 254|< 256", "== 254|!= 255|<= 254|>= 256"},
    {"a number below zero", -100.0F, "== -100|!= -99|== low", "== -99|== high"},
    {"a switch", true, "== on|!= false|== 1", "== false|!= on|== 0"},
    {"a text with a number", QStringLiteral("3km/h"), "== 3km/h|== 3|< 4|!= none",
     "!= 3|== 30|> 3|== none"},
    {"a text without reading", QStringLiteral("--"), "== none|== --|!= 3", "== 3|> 0"},
    {"no text", QString(), "== \"\"", "!= \"\""},
};

// A scenario, the text of each file that it includes, and what is read: its steps by line, or what
// is wrong.
const struct
{
    const char *name;
    QByteArray text, included;
    const char *outcome;
} kStructures[] = {
    {"one repeat in another", "repeat 2\nsay 1\nrepeat 3\nsay 2\nend\nend", "",
     "2 say 1|4 say 2|4 say 2|4 say 2|2 say 1|4 say 2|4 say 2|4 say 2"},
    {"several steps of a line", "set door.rear open, key.code 3 # both", "",
     "1 set door.rear open, key.code 3|1 set door.rear open, key.code 3"},
    {"a file in a repeat", "repeat 2\ninclude \"b\"\nend", "\nsay 1",
     "dir/b:2 say 1|dir/b:2 say 1"},
    {"a mistake in a file", "\n include \"sub/../b\"", "wait",
     "dir/b:1:5 the line ends where a time (200ms, 1.5s, 2min) belongs"},
    {"a repeat without end", "say 1\nrepeat 2", "", "2:8 this repeat has no 'end'"},
    {"no times", "repeat 0", "", "1:8 '0' is not a number of times from 1 to 100000"},
    {"the most steps", "repeat 100000\nsay 1\nend", "", "100000 steps"},
    {"a step too many", "say 0\nrepeat 50000\nsay 1\nsay 2\nend", "",
     "5:1 these are more than 100000 steps"},
    {"a service that is left stopped", "start\nrepeat 2\nstop\nend", "",
     "4:1 the steps from line 2 cannot be repeated: they leave the service stopped"},
    {"a service that was stopped", "repeat 2\nstart\nend", "",
     "3:1 the steps from line 1 cannot be repeated: they begin with the service stopped"},
    {"a box that is left unplugged", "repeat 2\nunplug\nend", "",
     "3:1 the steps from line 1 cannot be repeated: they leave the box unplugged"},
    {"a box that was unplugged", "unplug\nrepeat 2\nplug\nend", "",
     "4:1 the steps from line 2 cannot be repeated: they begin with the box unplugged"},
    {"a file in itself", "include \"a.scenario\"", "", "1:9 'dir/a.scenario' would include itself"},
    {"a file in a file in itself", "include \"b\"", "include \"./b\"",
     "dir/b:1:9 'dir/b' would include itself"},
    {"a file that is not there", "include \"c\"", "", "1:9 dir/c is not there"},
    {"half a repeat in a file", "include \"b\"", "repeat 2",
     "1:9 'dir/b' has a 'repeat' without 'end', or the reverse"},
    {"the other half", "repeat 2\nsay 1\ninclude \"b\"", "end",
     "3:9 'dir/b' has a 'repeat' without 'end', or the reverse"},
    {"the most files", QByteArray("include \"b\"\n").repeated(100), "", "0 steps"},
    {"a file too many", QByteArray("include \"b\"\n").repeated(101), "",
     "101:9 these are more than 100 included files"},
};

// Steps of the box, and what a person is asked for instead of each.
const struct
{
    const char *step, *prompt;
} kPrompts[] = {
    {"set door.rear open", "Open the tailgate"},
    {"set door.left_front closed", "Close the left front door"},
    {"set climate.ac on", "Switch the A/C on"},
    {"set climate.power off", "Switch the climate control off"},
    {"set climate.left low", "Bring the left temperature to low"},
    {"set ambient.level 3", "Bring ambient.level to 3"},
    {"ramp drive.speed to 50, climate.fan from 1 to 7 over 1.5s",
     "Bring the speed to 50 km/h and the fan to 7 within 1.5 s"},
    {"press 5", "Press the steering-wheel key 5 for 0.2 s"},
    {"hold 0x10", "Press the steering-wheel key 16 and hold it"},
    {"release", "Release the steering-wheel key"},
    {"unplug", "Pull the cable of the box"},
    {"plug", "Put the cable of the box back"},
};

// What changes the car, by the host and by the bench, and the getter that shows what each time
// does.
const struct
{
    const char *step, *getter, *states;
} kChanges[] = {
    {"call climate_key ac", "climate.ac", "on off"},
    {"call climate_key auto", "climate.auto", "off on"},
    {"call climate_key rear_defrost", "climate.rear_defrost", "on off"},
    {"call climate_key front_defrost", "climate.front_defrost", "on off"},
    {"call climate_key inside_air", "climate.inside_air", "on off"},
    {"call climate_key max", "climate.max", "on off"},
    {"call climate_key dual", "climate.dual", "off on"},
    {"call climate_key left_seat_heat", "climate.left_seat", "heat1 heat2 heat3 off"},
    {"call climate_key left_seat_air", "climate.left_seat", "vent1 vent2 vent3 off"},
    {"call climate_key right_seat_heat", "climate.right_seat", "heat1 heat2 heat3 off heat1"},
    {"call climate_key right_seat_air", "climate.right_seat", "vent1 vent2 vent3 off"},
    {"call climate_key left_seat_heat", "climate.left_seat", "heat1"},
    {"call climate_key left_seat_air", "climate.left_seat", "vent1"},
    {"call climate_key wheel_heat", "climate.wheel_heat", "on off"},
    {"call climate_key rear", "climate.rear", "on off"},
    {"call climate_key fan_up", "climate.fan", "4 5 6 7 7"},
    {"call climate_key fan_down", "climate.fan", "6 5 4 3 2 1 0 0"},
    {"call climate_key left_warmer", "climate.left", "22"},
    {"call climate_key left_cooler", "climate.left", "21.5 21"},
    {"call climate_key right_warmer", "climate.right", "22.5"},
    {"call climate_key right_cooler", "climate.right", "22 21.5"},
    {"call climate_key blowing_mode", "climate.mode", "2 3 7 5 1 2"},
    {"call climate_key power", "climate.power", "off on"},
    {"call car_setting ambient_level 1", "ambient.level", "11 12"},
    {"call car_setting ambient_level -1", "ambient.level", "11 10"},
    {"call car_setting ambient_colour 3", "ambient.colour", "3"},
    {"call car_setting ambient_colour next", "ambient.colour", "4 5 6 7 0"},
    {"call unit pressure", "unit.pressure", "bar psi kpa"},
    {"call unit temperature", "unit.temperature", "fahrenheit celsius"},
    {"set climate.left 15.5", "climate.left", "15.5"},
    {"change climate.left by -0.5", "climate.left", "15.5"},
    {"change climate.left by 14", "climate.left", "29.5 low 15.5"},
    {"set radar.rear.left none", "radar.rear.left", "255"},
    {"toggle door.rear", "door.rear", "open closed open"},
    {"ramp drive.speed to 90 over 1s", "drive.speed", "90"},
};

// What follows a start with a link; the exit code, and the message after the file's name.
const struct
{
    const char *name;
    QByteArray text;
    int code;
    const char *message;
} kEndings[] = {
    {"all expectations are met", "set door.rear open\nexpect door.rear == true within 2s\n", 0, ""},
    {"a value that is on its way", "set door.rear open\nexpect door.rear == closed within 1s\n", 3,
     ":4: expected door.rear == closed within 1s, but it is open"},
    {"a value is another", "expect climate.left == 22 within 50ms\n", 3,
     ":3: expected climate.left == 22 within 50ms, but it is 21.5 \u00B0C"},
    {"a signal does not come, another does",
     "wait 500ms\npress 5\nexpect signal keyEvent(5, 3, true) within 20ms\n", 3,
     ":5: expected keyEvent(5, 3, true) within 20ms, but there was keyEvent(5, 0, true), "
     "keyEvent(5, 1, true)"},
    {"a signal comes that must not",
     "wait 500ms\nset door.rear open\nexpect no signal doorChanged\n", 3,
     ":5: expected no doorChanged within 1s, but it came"},
    {"a signal is expected twice and comes once",
     "wait 500ms\nset door.rear open\nexpect signal doorChanged\n"
     "expect signal doorChanged within 50ms\n",
     3, ":6: expected doorChanged within 50ms, but there was no signal at all"},
    {"a frame of the host that does not come",
     "wait 5s\ncall climate_key fan_up\nexpect frame climate command 0xAC 0x1E 0\n"
     "expect frame climate command 0xAC 0 0\nexpect no frame car select within 10ms\n"
     "expect frame clock within 50ms\n",
     3, ":8: expected frame 0x82 clock within 50ms, but there was no frame at all"},
    {"many other signals",
     "bytes" + QByteArray(" 0x2e 0x30 1 0x31 0x9d").repeated(10) +
         "\nexpect signal doorChanged within 2s\n",
     3,
     ":4: expected doorChanged within 2s, but there was 2 others, sigVersionData, "
     "sigVersionData, sigVersionData, sigVersionData, sigVersionData, sigVersionData, "
     "sigVersionData, sigVersionData"},
    {"a getter of another type", "expect climate.ac == 2", 2,
     ":3:22: climate.ac cannot be '2'; possible: off, on"},
    {"a mistake in the last line", "wait", 2,
     ":3:5: the line ends where a time (200ms, 1.5s, 2min) belongs"},
};

} // namespace

class ScenarioTest : public QObject
{
    Q_OBJECT

private slots:
    void readsSteps()
    {
        const Scenario scenario =
            parseScenario("model 22 0x107 # before all steps\r\n"
                          "\n"
                          "set door.rear open, climate.left 22.5   # two steps\n"
                          "ramp drive.speed to 50, battery.voltage from 12.4 to "
                          "12.4 over 1.5s\n"
                          "press 0x14 for 2min\n"
                          "say \"a \\\"quoted\\\" # text\"\n"
                          "frame 0x55 1 0xff\n"
                          "expect climate.left>=22.5 within 200ms\n"
                          "expect no signal keyEvent(5, 1, true)");
        QVERIFY2(scenario.mistakes.isEmpty(), qPrintable(scenario.mistakes.value(0).text));
        QCOMPARE(scenario.carModel, 22);
        QCOMPARE(scenario.carIndex, 0x107);
        QCOMPARE(scenario.steps.size(), 8);

        const auto &set = std::get<steps::Set>(scenario.steps.at(1).action);
        QCOMPARE(scenario.steps.at(1).line, 3);
        QCOMPARE(scenario.steps.at(1).text,
                 QStringLiteral("set door.rear open, climate.left 22.5"));
        QCOMPARE(set.id, valueId("climate.left"));
        QCOMPARE(set.raw, 45);

        const auto &ramp = std::get<steps::Ramp>(scenario.steps.at(2).action);
        QCOMPARE(ramp.lanes.size(), 2);
        QVERIFY(!ramp.lanes.at(0).from);
        QCOMPARE(ramp.lanes.at(1).from, std::optional(151));
        QCOMPARE(ramp.milliseconds, 1500);

        QCOMPARE(std::get<steps::Press>(scenario.steps.at(3).action).key, quint8(20));
        QCOMPARE(std::get<steps::Press>(scenario.steps.at(3).action).milliseconds, 120000);
        QCOMPARE(std::get<steps::Say>(scenario.steps.at(4).action).text,
                 QStringLiteral("a \"quoted\" # text"));
        QCOMPARE(std::get<steps::Frame>(scenario.steps.at(5).action).payload,
                 QByteArray::fromHex("01ff"));
        const auto &expect = std::get<steps::Expect>(scenario.steps.at(6).action);
        QCOMPARE(expect.expectation.text(), QStringLiteral("climate.left >= 22.5"));
        QCOMPARE(expect.within, 200);
        const auto &signal = std::get<steps::ExpectSignal>(scenario.steps.at(7).action);
        QCOMPARE(signal.expectation.text(), QStringLiteral("keyEvent(5, 1, true)"));
        QVERIFY(signal.absent);
    }

    void tellsMistakes_data() { addRows(kMistakes); }
    void tellsMistakes()
    {
        const auto &row = currentRow(kMistakes);
        const Scenario scenario = parseScenario(row.text);
        QCOMPARE(scenario.mistakes.size(), 1);
        const Mistake &mistake = scenario.mistakes.first();
        QVERIFY2(mistake.text.contains(row.said), qPrintable(mistake.text));
        QCOMPARE(mistake.column, row.column);
        QCOMPARE(mistake.line, row.text.count('\n') + 1);
    }

    void tellsAllMistakesInOrder()
    {
        const Scenario scenario = parseScenario("wait\nstart\n\nwait 5\nset a b\n");
        QStringList lines;
        for (const Mistake &mistake : scenario.mistakes)
            lines += QString::number(mistake.line);
        QCOMPARE(lines.join(' '), QStringLiteral("1 4 5"));
    }

    void readsStructures_data() { addRows(kStructures); }
    void readsStructures()
    {
        const auto &row = currentRow(kStructures);
        static QByteArray included;
        included = row.included;
        const Scenario scenario =
            parseScenario(row.text, "dir/./a.scenario", [](const QString &path, QByteArray *text) {
                *text = included;
                return path == "dir/b" ? QString() : path + " is not there";
            });
        QStringList outcome;
        const auto place = [](const auto &one) {
            return one.file + (one.file.isEmpty() ? "" : ":");
        };
        for (const Mistake &mistake : scenario.mistakes)
            outcome += place(mistake) +
                       QString("%1:%2 %3").arg(mistake.line).arg(mistake.column).arg(mistake.text);
        for (const Step &step : scenario.steps.mid(0, outcome.isEmpty() ? 10 : 0))
            outcome += place(step) + QString("%1 %2").arg(step.line).arg(step.text);
        if (outcome.size() % 10 == 0)
            outcome = QStringList(QString("%1 steps").arg(scenario.steps.size()));
        QCOMPARE(outcome.join('|'), QString(row.outcome));
    }

    void asksAPersonInstead()
    {
        QByteArray text = "wait 1s\nsilence\n";
        QStringList expected, obstacles;
        for (const auto &row : kPrompts) {
            text += QByteArray(row.step) + '\n';
            expected += row.prompt + QString(", then press Enter.");
        }
        Scenario scenario = parseScenario(text + "start\nset climate.fan 1, drive.speed none");
        expected +=
            {"Bring the fan to 1, then press Enter.", "Bring the speed to none, then press Enter."};
        QStringList asked;
        for (const Mistake &mistake : findObstacles(scenario.steps, Nobody))
            obstacles +=
                QString("%1:%2 %3").arg(mistake.line).arg(mistake.column).arg(mistake.text);
        QCOMPARE(obstacles.size(), 15);
        QCOMPARE(obstacles.first(),
                 "2:1 'silence' needs the virtual box, and this box is a real one");
        QCOMPARE(obstacles.at(13), "15:1 'start' needs the bench's own host, which is not here");
        for (const Step &step : makePrompts(&scenario.steps))
            asked += std::get<steps::Ask>(step.action).text;
        QCOMPARE(asked, expected);
        QCOMPARE(findObstacles(scenario.steps, NeedsHost).size(), 1); // The silence.
    }

    // A key that means nothing would only be noticed by who presses it.
    void keysOfTheLiveViewAreSteps()
    {
        QSet<char> keys{'q', '?'};
        for (const ViewKey &row : viewKeys()) {
            Scenario scenario;
            ParseContext context{&scenario, true, row.key != 'X'};
            for (const QString &step : QString(row.steps).split('\n'))
                parseLine(step, 1, context);
            QVERIFY2(scenario.mistakes.isEmpty(), row.steps);
            QVERIFY2(!scenario.steps.isEmpty() && !keys.contains(row.key), row.help);
            keys.insert(row.key);
        }
    }

    void comparesValues_data() { addRows(kComparisons); }
    void comparesValues()
    {
        const auto &row = currentRow(kComparisons);
        const auto check = [&](const QByteArray &text) {
            const char *name = isSwitch(row.actual) ? "climate.ac "
                               : isText(row.actual) ? "drive.speed "
                                                    : "climate.left ";
            const Scenario scenario = parseScenario(QByteArray("expect ") + name + text);
            const auto &expect = std::get<steps::Expect>(scenario.steps.at(0).action);
            return expect.expectation.isMetBy(row.actual);
        };
        for (const QByteArray &text : QByteArray(row.met).split('|'))
            QVERIFY2(check(text), text);
        for (const QByteArray &text : QByteArray(row.unmet).split('|'))
            QVERIFY2(!check(text), text);
    }

    void stepsReachTheCar()
    {
        QByteArray text = "model 1\nstart\nexpect link == 3 within 2s\n";
        for (const auto &row : kChanges)
            for (const QByteArray &state : QByteArray(row.states).split(' '))
                text += QByteArray(row.step) + "\nexpect " + row.getter + " == " + state +
                        " within 2s\n";
        const Outcome play = run(CANBENCH, {"play", "--speed", "10",
                                            writeFile(mDirectory.filePath("keys.scenario"), text)});
        QCOMPARE(play.errors, QByteArray());
        QCOMPARE(play.code, 0);
    }

    void rampsPassWhatIsBetween()
    {
        const QByteArray text = "start\nexpect link == 3 within 2s\nset drive.speed 200\n"
                                "expect drive.speed == 200 within 1s\n"
                                "ramp drive.speed to 100, climate.fan from 0 to 7 over 400ms\n"
                                "expect drive.speed == 100 within 1s\nexpect climate.fan == 7\n";
        const QByteArray seen =
            run(CANBENCH, {"play", writeFile(mDirectory.filePath("ramp"), text)}).output;
        static const QRegularExpression change(" -> (\\d+) km/h");
        QVector<int> speeds;
        for (auto found = change.globalMatch(seen); found.hasNext();)
            speeds += found.next().captured(1).toInt();
        QVERIFY2(speeds.size() > 5 && speeds[1] == 200 && speeds.last() == 100, seen);
        QVERIFY2(std::is_sorted(speeds.rbegin(), speeds.rend() - 1), seen);
    }

    void answersLineByLine()
    {
        QFile file(DIALOGUE);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArrayList dialogue = file.readAll().trimmed().split('\n').mid(1);
        QProcess canbench;
        canbench.start(CANBENCH, {"run", "--control", "-"});
        for (const QByteArray &exchange : dialogue)
            canbench.write(exchange.left(exchange.indexOf(" => ")) + '\n');
        canbench.closeWriteChannel();
        QVERIFY(canbench.waitForFinished());
        QByteArrayList seen = canbench.readAllStandardOutput().split('\n');
        QCOMPARE(seen.size(), dialogue.size() + 1);
        for (const QByteArray &exchange : dialogue)
            QCOMPARE(exchange.left(exchange.indexOf(" => ") + 4) + seen.takeFirst(), exchange);
    }

    // Of letters that are missing, too many, other, or in another order; of nothing else.
    void suggestsTheClosestName()
    {
        const QStringList names{"expect", "except", "set", "wait", "Ramp"};
        const struct
        {
            const char *slip, *meant;
        } rows[] = {
            {"expct", "expect"},
            {"expectt", "expect"},
            {"expeXt", "expect"},
            {"epxect", "expect"},
            {"exepct", "expect"},
            {"xcept", "except"},
            {"exceptt", "except"},
            {"ste", "set"},
            {"est", "set"},
            {"wiat", "wait"},
            {"ramp", "Ramp"},
            {"wXYt", ""},
            {"st", "set"},
            {"XX", ""},
            {"", ""},
            {"rXYm", ""},
        };
        for (const auto &row : rows)
            QCOMPARE(didYouMean(row.slip, names),
                     *row.meant ? QString("; did you mean '%1'?").arg(row.meant) : QString());
        QCOMPARE(editDistance("kitten", "sitting"), 3);
        QCOMPARE(editDistance("ca", "abc"), 3); // A pair that changed places stays together.
        QCOMPARE(editDistance("", "abc"), 3);
        QCOMPARE(didYouMean(QString(64, 'x'), {QString(63, 'x')}),
                 "; did you mean '" + QString(63, 'x') + "'?");
        QCOMPARE(didYouMean(QString(65, 'x'), {QString(65, 'x')}), QString());
    }

    void canbenchTellsHowItEnded_data() { addRows(kEndings); }
    void canbenchTellsHowItEnded()
    {
        const auto &row = currentRow(kEndings);
        const QString path = mDirectory.filePath("a.scenario");
        writeFile(path, QByteArray("start\nexpect link == 3 within 2s\n") + row.text);
        const Outcome play = run(CANBENCH, {"play", "--speed", "10", path});
        QCOMPARE(QString(play.errors).trimmed(), *row.message ? path + row.message : QString());
        QCOMPARE(play.code, row.code);
        if (row.code == 2)
            QVERIFY(!play.output.contains("notifyCanbusStatus"));
    }

    void ctrlCEndsAScenario()
    {
        QProcess canbench;
        canbench.start(CANBENCH, {"play", "-"});
        canbench.write("start\nexpect link == 3 within 2s\nsay \"waiting\"\nwait 60s\n");
        canbench.closeWriteChannel();
        while (!canbench.peek(100000).contains("waiting"))
            QVERIFY(canbench.waitForReadyRead(5000));
        canbench.terminate();
        QVERIFY(canbench.waitForFinished(5000));
        QCOMPARE(canbench.exitCode(), 128 + 15);
    }

    void ctrlCEndsASoakThatHasHardlyBegun()
    {
        QProcess canbench;
        canbench.setReadChannel(QProcess::StandardError);
        canbench.start(CANBENCH, {"soak"});
        QVERIFY(canbench.waitForReadyRead(5000));
        canbench.terminate();
        QVERIFY(canbench.waitForFinished(4000));
        QCOMPARE(canbench.exitCode(), 128 + 15);
    }

private:
    QTemporaryDir mDirectory;
};

QTEST_GUILESS_MAIN(ScenarioTest)
#include "tst_scenario.moc"
