// Which car model can do what. The tables here are by key, those of the service by model.
#include "servicetest.h"

namespace {

// Ids as people write them: "14 16-17 22".
QVector<int> ids(const QString &text)
{
    QVector<int> found;
    for (const QString &range : text.split(' ', Qt::SkipEmptyParts))
        for (int id = range.section('-', 0, 0).toInt(); id <= range.section('-', -1).toInt(); ++id)
            found << id;
    return found;
}

const QVector<int> kNewControl = ids("1-3 6-7 15 18 21 23 30-32 35-38 42-44 46 76-84 90 96 103 "
                                     "105-106 109-117 119-121");
const QVector<int> kHighEnd = ids("1 11 27 30 35 39 47 51 55 58 65 68-69 76 79 82 86 92 97-98 "
                                  "111-112 119");
// Every id that a list could hold, and some that none can.
const QVector<int> kModels = ids("0-128 200 65537") + QVector<int>{-1, -5, INT_MIN, INT_MAX};

const struct
{
    const char *name;
    QVector<int> keys;
    const char *models;
} kKeys[] = {
    {"keys that model 22 lacks", {0, 2, 6, 7}, "14 16-17 19-20 24-25 45 68-75 85 91-95 97-102 107"},
    {"keys of every older control",
     {3, 12, 13, 14, 15, 16, 19, 20, 31},
     "14 16-17 19-20 22 24-25 45 68-75 85 91-95 97-102 107"},
    {"key 4", {4}, "14 16-17 19-20 22 24-25 68-75 85 91-95"},
    {"keys 5 and 9", {5, 9}, "14 16-17 19-20 24-25 68-75 85 91-95 97-102"},
    {"key 8", {8}, "16-17 19-20 24-25 68-73 85 91-95 97-102"},
    {"keys 10 and 11", {10, 11}, "16-17 19-20 24-25 74-75 85 91-95 97-102"},
    {"keys of no older control", {17, 18, 23, 24, 27, 28}, ""},
    {"keys 21 and 22", {21, 22}, "14 16-17 19-20 22 24-25 45 74-75 85 91-95 97-102 107"},
    {"keys 25 and 26", {25, 26}, "16-17 19-20 24-25 68-75 85 91-95 97-102"},
    {"key 29", {29}, "16-17 74-75"},
    {"key 34", {34}, "14 19-20 85"},
    {"unknown keys", {-1, 1, 30, 32, 33, 35, 64, 128, INT_MIN, INT_MAX}, ""},
};

const char *const kCyclingModels[8] = {
    "14 19-20 24-25 45 74-75 91-95 97-102 107",
    "14 19-20 24-25 45 74-75 91-95 97-102 107",
    "97-102",
    "16 22 68-73 85",
    "16 22 68-73 85",
    "16 22 68-73 85",
    "",
    "",
};

} // namespace

class ModelRulesTest : public QObject
{
    Q_OBJECT

private slots:
    void keys_data() { addRows(kKeys); }
    void keys()
    {
        const auto &row = currentRow(kKeys);
        ServiceTest test;
        for (const int model : kModels)
            for (const int key : row.keys) {
                selectCar(model);
                const bool newControl = kNewControl.contains(model);
                const auto where = QStringLiteral("model %1, key %2").arg(model).arg(key);
                QVERIFY2(test.service.isSupportAcCtrl(key) ==
                             (newControl || ids(row.models).contains(model)),
                         qPrintable(where));
            }
    }

    // The selection changes under one service, which asks for it at each call.
    void models()
    {
        ServiceTest test;
        for (int mode = 0; mode < 8; ++mode) {
            QByteArray climate(10, '\xff');
            climate[1] = static_cast<char>(mode << 5 | 0x1F);
            test.dispatch(0x21, climate);
            for (const int model : kModels) {
                selectCar(model);
                const bool newControl = kNewControl.contains(model);
                const bool cycles = ids(kCyclingModels[mode]).contains(model);
                const auto where = QStringLiteral("model %1, wind mode %2").arg(model).arg(mode);
                QVERIFY2(test.service.isNewModelCtrl() == newControl, qPrintable(where));
                QVERIFY2(test.service.isHighEnd() == kHighEnd.contains(model), qPrintable(where));
                QVERIFY2(test.service.AcBlowingModeCtrl() == (newControl ? 2
                                                              : cycles   ? 1
                                                                         : 0),
                         qPrintable(where));
            }
        }
    }
};

QTEST_GUILESS_MAIN(ModelRulesTest)
#include "tst_modelrules.moc"
