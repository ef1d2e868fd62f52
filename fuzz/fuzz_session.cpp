// Whole lives of a service on a serial device: bytes through the device, time-outs, calls of the
// host, writes and slots that let the next bytes in, the cable pulled and plugged in again.
#include "comparison.h"

#include "bench/box/pseudoterminal.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

namespace {

// Time stands still but for the time-outs that the input asks for.
class FrozenClock : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override { return event->type() == QEvent::Timer; }
};

class Session
{
public:
    explicit Session(int carModel)
        : both(carModel)
    {
        QObject::connect(canservice::SerialMonitor::instance(),
                         &canservice::SerialMonitor::received, &both.test.service,
                         [this](const QByteArray &chunk) {
                             mReceived += chunk;
                             both.model.receive(chunk);
                         });
        both.model.afterEvent = [this] { letIn(mNestedModel, both.model); };
        both.test.afterEvent = [this] { letIn(mNestedService, both.test); };
    }

    /// Bytes straight to the service or through a device, in any pieces: but they must arrive.
    void receive(bench::PseudoTerminal *device, const QByteArray &bytes)
    {
        mAwkward = true;
        if (device)
            receiveThrough(*device, bytes);
        else
            both.receive(bytes);
        mAwkward = false;
    }

    /// The cable is pulled. The service notices now, or later: at a write or at its end.
    void unplug(bench::PseudoTerminal &device, bool notice)
    {
        QSignalSpy lost(canservice::SerialMonitor::instance(),
                        &canservice::SerialMonitor::connectionChanged);
        device.unplug();
        const QDeadlineTimer deadline(20000);
        while (notice && lost.isEmpty() && !deadline.hasExpired())
            QCoreApplication::processEvents();
        if (notice && lost.isEmpty())
            fail({QStringLiteral("still open")}, {QStringLiteral("lost")});
    }

    /// The next write or signal that bytes or a time-out cause lets \p chunk in before it returns.
    void nest(const QByteArray &chunk) { mNestedModel = mNestedService = chunk; }

    void fire(ServiceModel::Timer timer)
    {
        mAwkward = true;
        both.fire(timer);
        mAwkward = false;
    }

    Comparison both;

private:
    void receiveThrough(bench::PseudoTerminal &device, const QByteArray &bytes)
    {
        mReceived.clear();
        device.write(bytes);
        const QDeadlineTimer deadline(20000);
        while (mReceived.size() < bytes.size() && !deadline.hasExpired())
            QCoreApplication::processEvents();
        if (mReceived != bytes)
            fail({QString::fromLatin1(mReceived.toHex())}, {QString::fromLatin1(bytes.toHex())});
    }

    template <typename Side>
    void letIn(QByteArray &nested, Side &side)
    {
        const QByteArray chunk = mAwkward ? std::exchange(nested, QByteArray()) : QByteArray();
        if (!chunk.isEmpty())
            side.receive(chunk);
    }

    bool mAwkward = false; ///< Bytes and time-outs alone let bytes in: the model sees all they do.
    QByteArray mReceived, mNestedModel, mNestedService;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, size_t size)
{
    prepareProcess(false);
    static FrozenClock clock;
    static bench::PseudoTerminal device;
    static bool open = false;
    static const auto watch =
        QObject::connect(canservice::SerialMonitor::instance(),
                         &canservice::SerialMonitor::connectionChanged, [](bool on) { open = on; });
    qApp->installEventFilter(&clock);

    FuzzedDataProvider data(bytes, size);
    // Opening a device takes as long as fifty lives without one. It may fail: another program may
    // hold the lock of a device that had this one's number.
    open = false;
    const bool onDevice = data.ConsumeIntegralInRange(0, 15) == 15;
    canservice::SerialPort::setDefaultDevice(onDevice ? device.path() : QString());

    auto session = std::make_unique<Session>(randomCar(data));
    QByteArray stream;
    const auto chunk = [&] {
        if (stream.isEmpty())
            stream = data.ConsumeIntegralInRange(0, 7) > 0
                         ? randomFrame(data)
                         : QByteArray::fromStdString(data.ConsumeRandomLengthString(64));
        const bool whole = data.ConsumeIntegralInRange(0, 3) > 0;
        const QByteArray first =
            stream.left(whole ? stream.size() : data.ConsumeIntegral<quint8>());
        stream.remove(0, first.size());
        return first;
    };

    int step = 0;
    while (data.remaining_bytes() > 0) {
        switch (data.ConsumeIntegralInRange(0, 11)) {
        case 0:
        case 1:
        case 2:
        case 3:
            session->receive(open && device.isPlugged() ? &device : nullptr, chunk());
            break;
        case 4:
        case 5:
            session->nest(chunk());
            break;
        case 6:
            session->both.call(data);
            break;
        case 7:
            if (open && device.isPlugged())
                session->unplug(device, data.ConsumeBool());
            break;
        case 8:
            session.reset();
            if (!device.isPlugged() && !device.plug())
                fail({device.errorString()}, {});
            session = std::make_unique<Session>(randomCar(data));
            break;
        default:
            session->fire(data.PickValueInArray({ServiceModel::Check, ServiceModel::Knock,
                                                 ServiceModel::Watchdog, ServiceModel::CarType,
                                                 ServiceModel::LongPress, ServiceModel::ParseOut}));
            break;
        }
        session->both.compareJournal();
        if (++step % 4 == 0)
            session->both.compareState();
    }
    session->both.compareState();
    session.reset();
    if (!device.isPlugged() && !device.plug())
        fail({device.errorString()}, {});
    return 0;
}
