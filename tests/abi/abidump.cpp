// Prints what a compiled host sees of the plug-in beside its symbols: metadata, meta-objects and
// record layouts. tests/abi/check compares it.
#include <canservicebase.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaMethod>
#include <QPluginLoader>

#include <cstddef>
#include <cstdio>

namespace {

void print(const QMetaObject &object)
{
    std::printf("\n# Meta-object of %s, which is a %s\n", object.className(),
                object.superClass()->className());
    std::printf("properties %d, enumerators %d, class infos %d, constructors %d\n",
                object.propertyCount() - object.propertyOffset(),
                object.enumeratorCount() - object.enumeratorOffset(),
                object.classInfoCount() - object.classInfoOffset(), object.constructorCount());
    static constexpr const char *kAccess[] = {"private", "protected", "public"};
    static constexpr const char *kTypes[] = {"method", "signal", "slot", "constructor"};
    for (int i = object.methodOffset(); i < object.methodCount(); ++i) {
        const QMetaMethod method = object.method(i);
        std::printf("%d %s %s %s %s (%s)\n", i - object.methodOffset(), kAccess[method.access()],
                    kTypes[method.methodType()], method.typeName(),
                    method.methodSignature().constData(),
                    method.parameterNames().join(", ").constData());
    }
}

#define RECORD(type) std::printf("%s: size %zu, align %zu\n", #type, sizeof(type), alignof(type))
#define MEMBER(type, member) std::printf("  %s at %zu\n", #member, offsetof(type, member))

void printRecords()
{
    std::printf("\n# Records\n");
    RECORD(FuelConsumptionData);
    MEMBER(FuelConsumptionData, reserved);
    RECORD(DrivingData);
    MEMBER(DrivingData, speed);
    MEMBER(DrivingData, range);
    MEMBER(DrivingData, reserved2);
    MEMBER(DrivingData, consumption);
    MEMBER(DrivingData, odometer);
    MEMBER(DrivingData, reserved5);
    RECORD(OtherInfoData);
    MEMBER(OtherInfoData, reserved);
    MEMBER(OtherInfoData, flag);
    RECORD(UnitData);
    MEMBER(UnitData, reserved);
    MEMBER(UnitData, values);
    MEMBER(UnitData, texts);
    RECORD(AmbientLightData);
    MEMBER(AmbientLightData, reserved0);
    MEMBER(AmbientLightData, level);
    MEMBER(AmbientLightData, colour);
    MEMBER(AmbientLightData, reserved3);
    RECORD(EvrData);
    MEMBER(EvrData, reserved0);
    MEMBER(EvrData, reserved1);
    MEMBER(EvrData, reserved2);
    MEMBER(EvrData, reserved3);
    RECORD(CarSettingData);
    MEMBER(CarSettingData, ambient);
    MEMBER(CarSettingData, evr);
    RECORD(GPSTime);
    MEMBER(GPSTime, field0);
    MEMBER(GPSTime, field1);
    MEMBER(GPSTime, field2);
    MEMBER(GPSTime, field3);
    MEMBER(GPSTime, year);
    RECORD(GPSTimePacket);
    MEMBER(GPSTimePacket, reserved0);
    MEMBER(GPSTimePacket, reserved1);
    MEMBER(GPSTimePacket, reserved2);
    MEMBER(GPSTimePacket, reserved3);
    MEMBER(GPSTimePacket, reserved4);
    MEMBER(GPSTimePacket, reserved5);
    MEMBER(GPSTimePacket, reserved6);
    RECORD(CameraData);
    MEMBER(CameraData, reserved0);
    MEMBER(CameraData, reserved1);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 2) {
        std::fprintf(stderr, "Usage: abidump PLUGIN\n");
        return 2;
    }
    QPluginLoader loader(QString::fromLocal8Bit(arguments[1]));
    QJsonObject metadata = loader.metaData();
    for (const char *key : {"version", "archreq"}) // Of the Qt that it is built with.
        metadata.remove(QLatin1String(key));
    std::printf("\n# Plug-in metadata\n%s\n",
                QJsonDocument(metadata).toJson(QJsonDocument::Compact).constData());

    const QObject *service = loader.instance();
    if (!service) {
        std::fprintf(stderr, "%s\n", qPrintable(loader.errorString()));
        return 1;
    }
    print(*service->metaObject());
    print(CanServiceBase::staticMetaObject);
    printRecords();
    loader.unload();
    return 0;
}
