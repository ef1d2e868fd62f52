// Prints docs/models.md: what differs between car models, asked of the service itself. The tables
// are therefore never typed a second time; the test model_tables compares the page with them.
#include "plugin/simpleservice.h"

#include <canbusmanager.h>

#include <QMap>

#include <cstdio>

using canservice::SerialMonitor;
using canservice::SimpleService;

namespace {

constexpr int kModels = 256;
constexpr int kKeys = 35;
constexpr int kWindModes = 8;

// A list of numbers in which neighbours are joined: "1 to 3, 6".
QString listed(const QList<int> &numbers)
{
    QStringList parts;
    for (int i = 0; i < numbers.size();) {
        int last = i;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1)
            ++last;
        if (last < i + 2)
            last = i;
        parts += last == i ? QString::number(numbers[i])
                           : QStringLiteral("%1 to %2").arg(numbers[i]).arg(numbers[last]);
        i = last + 1;
    }
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QLatin1String(", "));
}

void row(const QStringList &cells)
{
    std::printf("| %s |\n", qPrintable(cells.join(QLatin1String(" | "))));
}

void head(const QStringList &cells)
{
    row(cells);
    std::printf("|%s\n", qPrintable(QStringLiteral("---|").repeated(cells.size())));
}

QString hex(int byte)
{
    return QStringLiteral("0x%1").arg(QString::number(byte, 16).toUpper(), 2, QLatin1Char('0'));
}

class Tables
{
public:
    Tables()
    {
        QObject::connect(SerialMonitor::instance(), &SerialMonitor::written,
                         [this](const QByteArray &bytes) { mWritten += bytes; });
        mService.initData();
    }

    void print()
    {
        printControls();
        printKeys();
        printBlowingModes();
        printRadar();
        printColours();
    }

private:
    static void select(int model) { CanBusManager::instance()->setCarModelId(model); }

    // The payload of the first frame that a call sends; empty if it sends none.
    template <typename Call>
    QByteArray sent(Call call)
    {
        mWritten.clear();
        call();
        return mWritten.isEmpty() ? QByteArray() : mWritten.mid(3, canbox::byteAt(mWritten, 2));
    }

    // The command of a climate key, 0 when the key has none; -1 when the model lacks it.
    int commandOf(int key)
    {
        const QByteArray payload = sent([&] { mService.sendAcKey(key, 0); });
        return payload.isEmpty() ? -1 : canbox::byteAt(payload, 1);
    }

    void setWindMode(int mode)
    {
        QByteArray climate(10, 0);
        climate[1] = static_cast<char>(mode << 5);
        mService.doClimate(0x21, climate);
    }

    template <typename Predicate>
    static QList<int> modelsThat(Predicate matches)
    {
        QList<int> models;
        for (int model = 0; model < kModels; ++model) {
            select(model);
            if (matches())
                models += model;
        }
        return models;
    }

    void printControls()
    {
        std::printf("## Climate controls\n\n"
                    "A model with the newer control has every climate key; one with an older\n"
                    "control has those that name it below; any other has none.\n\n");
        head({QStringLiteral("control"), QStringLiteral("car models")});
        row({QStringLiteral("newer"),
             listed(modelsThat([&] { return mService.isNewModelCtrl(); }))});
        row({QStringLiteral("older"), listed(modelsThat([&] { return isOlder(); }))});
    }

    bool isOlder()
    {
        if (mService.isNewModelCtrl())
            return false;
        for (int key = 0; key < kKeys; ++key)
            if (mService.isSupportAcCtrl(key))
                return true;
        return false;
    }

    void printKeys()
    {
        std::printf(
            "\n## Climate keys\n\n"
            "The first command of `sendAcKey()`; command 0 follows each. A key without one\n"
            "sends command 0 alone.\n\n");
        head({QStringLiteral("key"), QStringLiteral("command"),
              QStringLiteral("car models with an older control")});
        const int newer = modelsThat([&] { return mService.isNewModelCtrl(); }).first();
        for (int key = 0; key < kKeys; ++key) {
            select(newer);
            setWindMode(0);
            const int inModeZero = commandOf(key);
            setWindMode(3);
            const QString command = inModeZero != commandOf(key) ? QStringLiteral("blowing mode")
                                    : inModeZero == 0            ? QStringLiteral("none")
                                                                 : hex(inModeZero);
            row({QString::number(key), command, listed(modelsThat([&] {
                     return !mService.isNewModelCtrl() && mService.isSupportAcCtrl(key);
                 }))});
        }
    }

    void printBlowingModes()
    {
        std::printf("\n## The blowing-mode key\n\n"
                    "The command of key 31 by the wind mode of the last report, 0x21 byte 1 bits\n"
                    "7..5.\n\n");
        QStringList titles;
        for (int mode = 0; mode < kWindModes; ++mode)
            titles += QString::number(mode);
        head(titles << QStringLiteral("car models"));
        QList<QStringList> cycles;
        QMap<QStringList, QList<int>> modelsOf;
        for (int model = 0; model < kModels; ++model) {
            select(model);
            QStringList cycle;
            for (int mode = 0; mode < kWindModes && mService.isSupportAcCtrl(31); ++mode) {
                setWindMode(mode);
                cycle += hex(commandOf(31));
            }
            if (!cycle.isEmpty() && !modelsOf.contains(cycle))
                cycles += cycle;
            modelsOf[cycle] += model;
        }
        for (const QStringList &cycle : qAsConst(cycles))
            row(cycle + QStringList{listed(modelsOf[cycle])});
    }

    // The payload bytes of which the smallest decides what a getter answers.
    template <typename Handler>
    QString bytesOf(Handler handler, int (CanServiceBase::*distance)())
    {
        QList<int> bytes;
        for (int byte = 0; byte < 8; ++byte) {
            QByteArray codes(8, 31);
            codes[byte] = 1;
            (mService.*handler)(0, codes);
            if ((mService.*distance)() == 1)
                bytes += byte;
        }
        return listed(bytes);
    }

    void printRadar()
    {
        using Base = CanServiceBase;
        struct Sensor
        {
            const char *name;
            int (Base::*rear)();
            int (Base::*front)();
        };
        constexpr Sensor kSensors[] = {
            {"left", &Base::getRearRadarLeftDistance, &Base::getFrontRadarLeftDistance},
            {"middle left", &Base::getRearRadarMiddleLeftDistance,
             &Base::getFrontRadarMiddleLeftDistance},
            {"middle right", &Base::getRearRadarMiddleRightDistance,
             &Base::getFrontRadarMiddleRightDistance},
            {"right", &Base::getRearRadarRightDistance, &Base::getFrontRadarRightDistance},
        };
        const QList<int> highEnd = modelsThat([&] { return mService.isHighEnd(); });
        std::printf("\n## Park assist\n\n"
                    "Two codes a sensor, of which the smaller counts, on car models\n%s.\n\n",
                    qPrintable(listed(highEnd)));
        head({QStringLiteral("sensor"), QStringLiteral("rear (0x22), two codes"),
              QStringLiteral("front (0x23), two codes"), QStringLiteral("rear, one code"),
              QStringLiteral("front, one code")});
        for (const Sensor &sensor : kSensors) {
            QStringList cells{QString::fromLatin1(sensor.name)};
            for (const int model : {highEnd.first(), kModels - 1}) {
                select(model);
                cells +=
                    QStringLiteral("bytes ") + bytesOf(&SimpleService::doRearRadar, sensor.rear);
                cells +=
                    QStringLiteral("bytes ") + bytesOf(&SimpleService::doFontRadar, sensor.front);
            }
            row(cells);
        }
        select(kModels - 1);
        std::printf("\n");
        head({QStringLiteral("distance that the host sees"), QStringLiteral("codes")});
        QMap<int, QList<int>> codesOf;
        for (int code = 0; code < 256; ++code) {
            QByteArray codes(8, static_cast<char>(code));
            mService.doRearRadar(0, codes);
            codesOf[mService.getRearRadarLeftDistance()] += code;
        }
        for (auto codes = codesOf.cbegin(); codes != codesOf.cend(); ++codes)
            row({QString::number(codes.key()), listed(codes.value())});
    }

    void printColours()
    {
        std::printf(
            "\n## Ambient colours\n\n"
            "The box's code, 0x61 byte 0 bits 6..0, for each of the host's indices: the same\n"
            "in both directions.\n\n");
        QList<QStringList> palettes;
        QMap<QStringList, QList<int>> modelsOf;
        for (int model = 0; model < kModels; ++model) {
            select(model);
            QStringList palette;
            for (int index = 0; index < 8; ++index) {
                const QByteArray payload = sent([&] { mService.sendCarSettingKey(5, index); });
                QByteArray report(2, payload.isEmpty() ? '\x7F' : payload[0]);
                mService.doAmbientLight(0, report);
                const bool back = mService.getCarSettingData().ambient.colour == index;
                palette += back ? QString::number(report[0]) : QStringLiteral("?");
            }
            if (!modelsOf.contains(palette))
                palettes += palette;
            modelsOf[palette] += model;
        }
        QStringList titles;
        for (int index = 0; index < 8; ++index)
            titles += QString::number(index);
        head(titles << QStringLiteral("car models"));
        for (const QStringList &palette : qAsConst(palettes))
            row(palette + QStringList{modelsOf[palette].size() > kModels / 2
                                          ? QStringLiteral("all others")
                                          : listed(modelsOf[palette])});
    }

    SimpleService mService;
    QByteArray mWritten;
};

} // namespace

int main()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    std::printf(
        "# What differs between car models\n\n"
        "The host selects the car model; the service asks for it at every use. Made from the\n"
        "service's own tables by `scripts/reference`.\n\n");
    Tables().print();
    return std::fflush(stdout) == 0 ? 0 : 1;
}
