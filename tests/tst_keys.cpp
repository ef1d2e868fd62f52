// Keys of the steering wheel and of a panel, with the long press.
#include "servicetest.h"

namespace {

// Events: four digits are a frame's key and action, with a P before them a panel's; T is the end of
// the timer. What comes of them: key, state and source of each signal; the key that is remembered.
const Case kStrokes[] = {
    {"a second press is dropped", "0501 0901 0501 0900", "5 0 true, 5 1 true, 9"},
    {"a release needs no key", "0501 0000", "5 0 true, 5 1 true, 0"},
    {"a release without a press", "0500", "-1"},
    {"unknown actions", "0502 05ff 0501 0502 0581", "5 0 true, 5"},
    {"codes are unsigned", "f001 T f000", "240 0 true, 240 2 true, 240 3 true, 240"},
    {"every press starts afresh", "0501 T 0500 0701 0700",
     "5 0 true, 5 2 true, 5 3 true, 7 0 true, 7 1 true, 7"},
    {"panel key", "P0501 P0500 P0601 T P0600",
     "5 0 false, 5 1 false, 6 0 false, 6 2 false, 6 3 false, 6"},
    {"the source is that of the press", "P0501 0901 T 0500 0901 P0900",
     "5 0 false, 5 2 false, 5 3 false, 9 0 true, 9 1 true, 9"},
    {"panel frames of wrong lengths", "P P05 P050100", "-1"},
};

} // namespace

class KeysTest : public QObject
{
    Q_OBJECT

private slots:
    void strokes_data() { addRows(kStrokes); }
    void strokes()
    {
        const auto &row = currentRow(kStrokes);
        ServiceTest test;
        canservice::LazyTimer &timer = test.probe.longPress;
        QStringList seen;
        for (const QByteArray &event : QByteArray(row.given).split(' ')) {
            QByteArray payload = QByteArray::fromHex(event.mid(event.startsWith('P') ? 1 : 0));
            if (event == "T") {
                timer.stop(); // As a single shot does before its signal.
                test.timeout("onLongPressTimeout");
            } else if (event.startsWith('P')) {
                test.service.doPanelKey(0, payload);
            } else {
                test.service.doSwc(0x20, payload);
            }
            seen += test.take().replaceInStrings("keyEvent ", "");
            // The timer runs from the press to its end or to the release.
            QCOMPARE(timer.isActive(), !seen.isEmpty() && seen.last().contains(" 0 "));
            QVERIFY(!timer.isActive() || (timer.interval() == 1500 && timer.isSingleShot()));
        }
        test.service.start(); // Restarts leave the key alone.
        test.service.stop();
        seen << QString::number(test.probe.currentKey);
        QCOMPARE(seen.join(", "), row.expected);
    }
};

QTEST_GUILESS_MAIN(KeysTest)
#include "tst_keys.moc"
