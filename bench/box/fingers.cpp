#include "fingers.h"

#include <QTimer>

namespace bench {

namespace {

constexpr int kPause = 300;           // ms between two keys
constexpr int kShortPress = 200;      // ms
constexpr int kLongestPress = 600000; // ms

} // namespace

QString readKeyPress(const QString &text, QList<KeyPress> *presses)
{
    bool isKey = false;
    bool isTime = true;
    const QString time = text.section(QLatin1Char(':'), 1);
    const int key = text.section(QLatin1Char(':'), 0, 0).toInt(&isKey, 0);
    const int milliseconds = time.isNull() ? kShortPress : time.toInt(&isTime);
    if (!isKey || key < 0 || key > 255 || !isTime || milliseconds < 1 ||
        milliseconds > kLongestPress)
        return QStringLiteral("a key code from 0 to 255, and after a colon the milliseconds that "
                              "it is held, 1 to 600000, not '%1'")
            .arg(text);
    presses->append({static_cast<quint8>(key), milliseconds});
    return {};
}

Fingers::Fingers(VirtualCar *car, const QList<KeyPress> &presses)
    : QObject(car)
    , mCar(car)
    , mPresses(presses)
{
}

void Fingers::begin()
{
    if (!mBegun)
        QTimer::singleShot(kPause, this, [this] { pressNext(); });
    mBegun = true;
}

void Fingers::pressNext()
{
    if (mPresses.isEmpty())
        return;
    const KeyPress press = mPresses.takeFirst();
    mCar->pressKey(press.key);
    QTimer::singleShot(press.milliseconds, this, [this] {
        mCar->releaseKey();
        QTimer::singleShot(kPause, this, [this] { pressNext(); });
    });
}

} // namespace bench
