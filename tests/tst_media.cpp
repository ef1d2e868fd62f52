// What the head unit tells the car: the playing source and the clock.
#include "servicetest.h"

namespace {

const char kNoteAndEuro[] = "2ec1090100000000d83cdfb58c, 2ec107020000000020ac69";
const char kEmptyPair[] = "2ec105010000000038, 2ec105020000000037";

QStringList thrice(const QString &text) { return {text, text, text}; }

// What is sent of a long text: the length byte, the units, and the checksum of the first line.
QString cut(const QString &length, const QString &units, int sum)
{
    const QString end = "00000000" + units;
    return "2ec1" + length + "01" + end + QString::number(sum, 16) + ", 2ec1" + length + "02" +
           end + QString::number(sum - 1, 16);
}

const QString kA123 = QString("0041").repeated(123);

const struct
{
    const char *name;
    int type;
    const char *source;
    QStringList info;
    QString frames;
} kSources[] = {
    {"FM1", 0, "FM1", {"87.50MHz"}, "2ec00501002e2200e9 !"},
    {"FM2 without a frequency", 0, "FM2", {}, "2ec005010100000038 !"},
    {"FM3 with further entries", 0, "FM3", {"108.00MHz", "a", "b"}, "2ec0050102302a00dd !"},
    {"AM1", 0, "AM1", {"1008KHz"}, "2ec0050110f0030036 !"},
    {"AM2", 0, "AM2", {"531KHz"}, "2ec005011013020014 !"},
    {"a product in single precision", 0, "FM1", {"87.60MHz"}, "2ec0050100382200df !"},
    {"a product that is cut", 0, "FM1", {"65.20MHz"}, "2ec0050100771900a9 !"},
    {"text shorter than the unit", 0, "FM1", {"87"}, "2ec0050100fc21001c !"},
    {"a unit alone", 0, "FM1", {"MHz"}, "2ec005010000000039 !"},
    {"not a number", 0, "FM1", {"nanMHz"}, "2ec005010000000039 !"},
    {"beyond an int", 0, "FM1", {"1e30MHz"}, "2ec005010000000039 !"},
    {"negative", 0, "FM1", {"-5MHz"}, "2ec00501000cfe002f !"},
    {"beyond 16 bits", 0, "FM3", {"1966.07MHz"}, "2ec0050102ffff0039 !"},
    {"unknown name", 0, "FM4", {"87.50MHz"}, ""},
    {"type 1", 1, "FM1", {"87.50MHz", "x", "y"}, ""},
    {"a fixed code", 5, "FM1", {"AB", "x", "y"}, "2ec0010737 !"},
    {"text", 3, "", {"AB", "x", "y"}, "2ec109010000000000410042b1, 2ec10702000000000078bd"},
    {"text of the other type", 4, "", {"\U0001F3B5", "\u20AC", ""}, kNoteAndEuro},
    {"empty lines", 4, "", {"", "", "y"}, kEmptyPair},
    {"two entries", 4, "", {"AB", "x"}, kEmptyPair},
    {"four entries", 4, "", {"AB", "x", "y", "z"}, kEmptyPair},
    {"126 units are cut", 3, "", thrice(QString(126, 'A')), cut("ff", kA123 + "00410041", 0x81)},
    {"a pair before the cut", 3, "", thrice(QString(123, 'A') + "\U0001F3B5"),
     cut("ff", kA123 + "d83cdfb5", 0x5b)},
    {"a pair at the cut", 3, "", thrice(QString(124, 'A') + "\U0001F3B5"),
     cut("fd", kA123 + "0041", 0xc4)},
    {"half a pair at the cut", 3, "", thrice(QString(124, 'A') + QChar(0xD83C) + "A"),
     cut("ff", kA123 + "0041d83c", 0xae)},
};

const struct
{
    const char *name;
    GPSTime time;
    QString frame;
} kTimes[] = {
    {"2256 reads as 2000", {30, 10, 15, 6, 2256}, "2e820600060f0a1e003a"},
    {"1999 reads as 2255", {30, 10, 15, 6, 1999}, "2e8206ff060f0a1e003b"},
    {"bytes as they are", {1, 0, 128, 255, 2025}, "2e820619ff80000100de"},
};

} // namespace

class MediaTest : public QObject
{
    Q_OBJECT

private slots:
    void sources_data() { addRows(kSources); }
    void sources()
    {
        const auto &row = currentRow(kSources);
        ServiceTest test;
        for (int repetition = 0; repetition < 2; ++repetition) {
            test.service.onRadioSourceInformation(row.source, row.info, row.type);
            QCOMPARE(test.taken(), row.frames);
        }
    }

    void sourceIsLogged()
    {
        ServiceTest test;
        const LogCapture log;
        test.service.onRadioSourceInformation("FM4", {"87.50MHz"}, 0); // No band's name.
        QCOMPARE(log.items().join('\n'), "ttttttttttttttt \"FM4\" (\"87.50MHz\") 0\n"
                                         "src type--> 0\n0 87 0\nsrc type--> 0");
    }

    void clock_data() { addRows(kTimes); }
    void clock()
    {
        const auto &row = currentRow(kTimes);
        GPSTime time = row.time;
        ServiceTest test;
        const LogCapture log;
        test.service.GPSTimeSend(time);
        QCOMPARE(test.taken(), row.frame);
        QCOMPARE(log.items(), QStringList{"kwr enter into!"});
    }
};

QTEST_GUILESS_MAIN(MediaTest)
#include "tst_media.moc"
