// Scenarios: what is read from the text, what is said about mistakes, and what canbench makes of
// both.
#include "scenario.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace bench;

class ScenarioTest : public QObject
{
    Q_OBJECT

private slots:
    void readsSteps();
    void tellsMistakes_data();
    void tellsMistakes();
    void tellsAllMistakesInOrder();
    void comparesValues_data();
    void comparesValues();
    void shippedScenariosAreRight();
    void canbenchTellsHowItEnded_data();
    void canbenchTellsHowItEnded();
    void ctrlCEndsAScenario();

private:
    QTemporaryDir mDirectory;
};

void ScenarioTest::readsSteps()
{
    const Scenario scenario = parseScenario("model 22 0x107 # before all steps\r\n"
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
    QCOMPARE(scenario.steps.at(1).text, QStringLiteral("set door.rear open, climate.left 22.5"));
    QCOMPARE(set.value, CarValue::ClimateLeft);
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

void ScenarioTest::tellsMistakes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("what");
    const auto row = [](const char *name, const QByteArray &text, int column, const char *what) {
        QTest::newRow(name) << text << column << QString::fromUtf8(what);
    };
    row("a step's word with a slip", " expct link == 3", 2,
        "no step 'expct'; did you mean 'expect'");
    row("a step's word that is like none", "xyzzyx", 1, "possible: model, start");
    row("a car value with a slip", "set drive.sped 3", 5, "did you mean 'drive.speed'");
    row("two letters of a name swapped", "set dirve.speed 3", 5, "did you mean 'drive.speed'");
    row("a word that the value does not have", "set door.rear ajar", 15, "possible: closed, open");
    row("a number out of range", "set climate.left 40", 18, "15.5 to 29.5");
    row("a value that is missing", "set climate.left  # 20", 17, "the line ends where 15.5 to");
    row("a missing word", "ramp drive.speed 5 over 1s", 18, "'5' is where 'to' belongs");
    row("a time without unit", "wait 200", 6, "'200' is not a time");
    row("a time that is too long", "wait 61min", 6, "up to 60min");
    row("a time that is no number", "wait nans", 6, "is not a time");
    row("a time below zero", "wait -1s", 6, "is not a time");
    row("a key out of range", "press 256", 7, "from 0 to 255");
    row("a wait that is not real", "wait 1s reel", 9, "'reel' is too much");
    row("more words than the step has", "wait 1s 2s", 9, "'2s' is too much");
    row("a quote without end", "say \"hello", 5, "no end");
    row("an operator for a name", "expect == 3", 8, "'==' is where the name of a getter belongs");
    row("a getter with a slip", "expect climat.left == 3", 8, "did you mean 'climate.left'");
    row("an assignment for a comparison", "expect link = 3", 13, "'=' is not ==");
    row("a quoted comparison", "expect link \"==\" 3", 13, "belongs");
    row("a text for a number", "expect link == up", 16, "link is a number, and 'up' is none");
    row("a number that is none", "expect link > nan", 15, "link is a number, and 'nan' is none");
    row("an order of texts", "expect cluster.clock < 3", 24, "compare it by == or !=");
    row("a signal with a slip", "expect signal doorChange", 15, "did you mean 'doorChanged'");
    row("too few arguments of a signal", "expect signal keyEvent(5)", 24, "has 3 arguments, not 1");
    row("an open parenthesis", "expect signal keyEvent(5, 1, true", 34, "where ')' belongs");
    row("a payload byte out of range", "frame 0x55 256", 12, "'256' is not a payload byte");
    row("a model after a step", "wait 1s\nmodel 3", 1, "before the first step");
    row("a second start", "start\nstart", 1, "'stop' it before");
    row("a call before the start", "call unit pressure", 1, "'start' it before");
    row("a plug that is in", "plug", 1, "'unplug' it before");
    row("an unknown operation", "start\ncall clok 2025-01-01 10:00", 6, "did you mean 'clock'");
    row("an unknown climate key", "start\ncall climate_key fanup", 18, "did you mean 'fan_up'");
    row("a day that is not in the calendar", "start\ncall clock 2025-02-30 10:00", 12, "a date");
    row("a fault with a slip", "fault bitflip", 7, "did you mean 'bit-flip'");
    row("a fault that is more than certain", "fault drop rate 101%", 17, "0% to 100%");
    row("a rate of no fault", "fault drop rate 0.5, rate 1", 22, "no fault 'rate'");
    row("bytes that are no text", "say \"\xff\"", 1, "not UTF-8 text");
    row("a zero byte", QByteArray("say \"\0\"", 7), 1, "not UTF-8 text");
}

void ScenarioTest::tellsMistakes()
{
    QFETCH(QByteArray, text);
    QFETCH(int, column);
    QFETCH(QString, what);
    const Scenario scenario = parseScenario(text);
    QCOMPARE(scenario.mistakes.size(), 1);
    const Mistake &mistake = scenario.mistakes.first();
    QVERIFY2(mistake.text.contains(what), qPrintable(mistake.text));
    QCOMPARE(mistake.column, column);
    QCOMPARE(mistake.line, text.count('\n') + 1);
}

void ScenarioTest::tellsAllMistakesInOrder()
{
    const Scenario scenario = parseScenario("wait\nstart\n\nwait 5\nset a b\n");
    QStringList lines;
    for (const Mistake &mistake : scenario.mistakes)
        lines += QString::number(mistake.line);
    QCOMPARE(lines.join(' '), QStringLiteral("1 4 5"));
}

void ScenarioTest::comparesValues_data()
{
    QTest::addColumn<QVariant>("actual");
    QTest::addColumn<QString>("met");
    QTest::addColumn<QString>("unmet");

    QTest::newRow("a float that is not exact") << QVariant(11.6F) << "== 11.6|<= 11.6|>= 11.6"
                                               << "!= 11.6|< 11.6|> 11.6|== 11.61";
    QTest::newRow("a whole number") << QVariant(255) << "== 255|!= 254|> 254|< 256"
                                    << "== 254|!= 255|<= 254|>= 256";
    QTest::newRow("a number below zero") << QVariant(-100.0F) << "== -100|< -99"
                                         << "> -99";
    QTest::newRow("a switch") << QVariant(true) << "== true|!= false"
                              << "== false|!= true";
    QTest::newRow("a text") << QVariant(QStringLiteral("3km/h")) << "== 3km/h|!= 3"
                            << "== 3";
    QTest::newRow("no text") << QVariant(QString()) << "== \"\""
                             << "!= \"\"";
}

void ScenarioTest::comparesValues()
{
    QFETCH(QVariant, actual);
    QFETCH(QString, met);
    QFETCH(QString, unmet);
    const auto check = [&](const QString &text) {
        const Scenario scenario = parseScenario("expect climate.left " + text.toUtf8());
        return std::get<steps::Expect>(scenario.steps.at(0).action).expectation.isMetBy(actual);
    };
    for (const QString &text : met.split('|'))
        QVERIFY2(check(text), qPrintable(text));
    for (const QString &text : unmet.split('|'))
        QVERIFY2(!check(text), qPrintable(text));
}

void ScenarioTest::shippedScenariosAreRight()
{
    const QStringList names = QDir(SCENARIOS).entryList({QStringLiteral("*.scenario")});
    QVERIFY(names.size() >= 6);
    for (const QString &name : names) {
        QFile file(QDir(SCENARIOS).filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const Scenario scenario = parseScenario(file.readAll());
        QVERIFY2(scenario.mistakes.isEmpty(), qPrintable(name));
    }
}

void ScenarioTest::canbenchTellsHowItEnded_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message"); // After the file's name.

    const QByteArray begin = "start\nexpect link == 3 within 2s\n";
    QTest::newRow("all expectations are met")
        << begin + "set door.rear open\nexpect door.rear == true within 2s\n"
        << 0 << "";
    QTest::newRow("a value is another")
        << begin + "expect climate.left == 22 within 50ms\n"
        << 3 << ":3: expected climate.left == 22 within 50ms, but it is 21.5 \u00B0C";
    QTest::newRow("a value is another now") << begin + "expect cluster.clock != \"\"" << 3
                                            << ":3: expected cluster.clock != \"\", but it is \"\"";
    QTest::newRow("a signal does not come, another does")
        << begin + "wait 500ms\npress 5\nexpect signal keyEvent(5, 3, true) within 20ms\n"
        << 3
        << ":5: expected keyEvent(5, 3, true) within 20ms, but there was keyEvent(5, 0, true), "
           "keyEvent(5, 1, true)";
    QTest::newRow("a signal comes that must not")
        << begin + "wait 500ms\nset door.rear open\nexpect no signal doorChanged\n"
        << 3 << ":5: expected no doorChanged within 1s, but it came";
    QTest::newRow("a signal is expected twice and comes once")
        << begin + "wait 500ms\nset door.rear open\nexpect signal doorChanged\n"
                   "expect signal doorChanged within 50ms\n"
        << 3 << ":6: expected doorChanged within 50ms, but there was no signal at all";
    QTest::newRow("a mistake in the last line")
        << begin + "wait" << 2 << ":3:5: the line ends where a time (200ms, 1.5s, 2min) belongs";
    QTest::newRow("a getter of another type")
        << begin + "expect climate.ac == 1" << 2
        << ":3:22: climate.ac is a switch; compare it by == or != with true or false";
}

void ScenarioTest::canbenchTellsHowItEnded()
{
    QFETCH(QByteArray, text);
    QFETCH(int, code);
    QFETCH(QString, message);
    const QString path = mDirectory.filePath(QStringLiteral("a.scenario"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.close();

    QProcess canbench;
    canbench.start(CANBENCH, {"play", "--speed", "10", path});
    QVERIFY(canbench.waitForFinished());
    const QString errors = QString::fromUtf8(canbench.readAllStandardError()).trimmed();
    QCOMPARE(errors, message.isEmpty() ? QString() : path + message);
    QCOMPARE(canbench.exitStatus(), QProcess::NormalExit);
    QCOMPARE(canbench.exitCode(), code);
    if (code == 2)
        QVERIFY(!canbench.readAllStandardOutput().contains("notifyCanbusStatus"));
}

void ScenarioTest::ctrlCEndsAScenario()
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

QTEST_GUILESS_MAIN(ScenarioTest)
#include "tst_scenario.moc"
