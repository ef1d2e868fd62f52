// What a host that is compiled elsewhere relies on: slots, records and plug-in entry.
#include "servicetest.h"

#include <QLibrary>

#include <tuple>

struct VehicleMaintenanceData
{
    int value;
};

// The interface as a host declares it. Its virtual table is all that it has in common with the
// service's own declaration.
class HostView : public QObject
{
public:
#define OP(result, name, arguments, expected) virtual result name arguments = 0;
#include "operations.inc"
#undef OP
};

namespace {

QString text(int value) { return QString::number(value); }
QString text(float value) { return QString::number(static_cast<double>(value)); }
QString text(bool value) { return value ? "true" : "false"; }
QString text(const QString &value) { return value.isNull() ? "null" : "'" + value + "'"; }
template <typename... Numbers>
QString list(Numbers... numbers)
{
    return QStringList{QString::number(numbers)...}.join(' ');
}
QString text(const GPSTimePacket &p)
{
    return list(p.reserved0, p.reserved1, p.reserved2, p.reserved3, p.reserved4, p.reserved5,
                p.reserved6);
}
QString text(const CarSettingData &data)
{
    const AmbientLightData &a = data.ambient;
    const EvrData &e = data.evr;
    return list(a.reserved0, a.level, a.colour, a.reserved3[0], a.reserved3[1]) + ' ' +
           e.reserved0 + ' ' +
           list(e.reserved1, e.reserved2[0], e.reserved2[1], e.reserved2[2], e.reserved3);
}

// An argument of each type.
template <typename Type>
Type sample()
{
    if constexpr (std::is_same_v<Type, int>)
        return 5;
    else if constexpr (std::is_same_v<Type, GPSTime>)
        return {1, 2, 3, 4, 2025};
    else if constexpr (std::is_same_v<Type, QByteArray>)
        return hex("0102");
    else
        return Type{};
}

// A call by slot. That the object is of no class the caller knows is the point: the sanitizer's
// objection is off.
template <typename Result, typename... Arguments>
QString call(HostView &host, Result (HostView::*operation)(Arguments...))
{
    auto arguments = std::make_tuple(sample<std::decay_t<Arguments>>()...);
    return std::apply(
        [&](auto &...argument) __attribute__((no_sanitize("vptr"))) {
            if constexpr (std::is_void_v<Result>) {
                (host.*operation)(argument...);
                return QString();
            } else {
                return text((host.*operation)(argument...));
            }
        },
        arguments);
}

struct Operation
{
    const char *name;
    QString (*call)(HostView &host);
    const char *expected;
};

const Operation kOperations[] = {
#define OP(result, name, arguments, expected)                                                      \
    {#name, [](HostView &host) { return call(host, &HostView::name); }, expected},
#include "operations.inc"
#undef OP
};

} // namespace

class ContractTest : public QObject
{
    Q_OBJECT

private slots:
    void hostCallsBySlot()
    {
        selectCar(2);
        for (const Operation &operation : kOperations) {
            ServiceTest test;
            for (const char *frame : {"2e210ac8852930a8000000620024", "2e23080102080e00000000bb",
                                      "2e2208141a001f0000000088", "2e2407a80000000000002c",
                                      "2e631201020303e795000102030400000000120700e2",
                                      "2e6905fe000000ff94", "2e3002563146", "2e6102053c5b"})
                test.receive(hex(frame));
            test.take();

            auto *host = reinterpret_cast<HostView *>(static_cast<QObject *>(&test.service));
            QStringList outcome{operation.call(*host)};
            outcome += test.take();
            outcome.removeAll(QString());
            QCOMPARE(operation.name + (": " + outcome.join("; ")),
                     operation.name + (": " + QString::fromUtf8(operation.expected)));
        }
    }

    void castsByName()
    {
        canservice::SimpleService service;
        for (const char *name : {"canservice::SimpleService", "com.quendal.canservicebase/1.0",
                                 "CanServiceBase", "QObject"})
            QCOMPARE(service.qt_metacast(name), static_cast<void *>(&service));
        QCOMPARE(service.qt_metacast(nullptr), nullptr);
        QCOMPARE(service.qt_metacast("SimpleService"), nullptr);
        QCOMPARE(qobject_cast<CanServiceBase *>(static_cast<QObject *>(&service)), &service);
    }

    void oneInstanceAtATime()
    {
        // The loader keeps the instance that it has seen; the entry itself does not.
        QLibrary library(PLUGIN_FILE);
        const auto instance =
            reinterpret_cast<QObject *(*)()>(library.resolve("qt_plugin_instance"));
        QVERIFY2(instance, qPrintable(library.errorString()));

        QPointer<QObject> first = instance();
        auto *host = qobject_cast<CanServiceBase *>(first.data());
        QVERIFY(host);
        QCOMPARE(instance(), first.data());
        QMetaObject::invokeMethod(first, "onDataReady", Q_ARG(QByteArray, hex("2e3002563146")));
        QCOMPARE(host->version(), QString("V1"));

        delete first;
        host = qobject_cast<CanServiceBase *>(instance());
        QVERIFY(host);
        QCOMPARE(host->version(), QString());
        delete host;
    }
};

QTEST_GUILESS_MAIN(ContractTest)
#include "tst_contract.moc"
