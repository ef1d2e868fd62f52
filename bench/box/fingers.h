// Somebody at the steering wheel.
#pragma once

#include "virtualcar.h"

namespace bench {

struct KeyPress
{
    quint8 key;
    int milliseconds;
};

/// Reads `KEY` or `KEY:MS`, which is appended to \p presses.
/// \returns an empty text, or what is needed instead.
QString readKeyPress(const QString &text, QList<KeyPress> *presses);

/// Presses keys of the wheel one after the other. Belongs to the car.
class Fingers : public QObject
{
    Q_OBJECT

public:
    Fingers(VirtualCar *car, const QList<KeyPress> &presses);

    /// The first key goes down 0.3 s later. Only the first call counts.
    void begin();

private:
    void pressNext();

    VirtualCar *const mCar;
    QList<KeyPress> mPresses;
    bool mBegun = false;
};

} // namespace bench
