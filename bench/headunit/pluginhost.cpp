#include "bench/headunit/pluginhost.h"

#include "bench/headunit/pluginfile.h"

#include <configmanager.h>

#include <QMetaMethod>

#include <algorithm>

namespace bench {

namespace {

QVector<SignalInfo> readSignals()
{
    QVector<SignalInfo> rows;
    const QMetaObject &meta = CanServiceBase::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() != QMetaMethod::Signal)
            continue;
        SignalInfo row{QString::fromLatin1(method.name()), i, {}, {}};
        for (int k = 0; k < method.parameterCount(); ++k) {
            row.types += method.parameterType(k);
            row.arguments += QString::fromLatin1(method.parameterNames().at(k));
        }
        rows += row;
    }
    return rows;
}

Value readArgument(int type, const void *argument)
{
    switch (type) {
    case QMetaType::Bool:
        return *static_cast<const bool *>(argument);
    case QMetaType::Int:
        return *static_cast<const int *>(argument);
    case QMetaType::Float:
        return *static_cast<const float *>(argument);
    default: // What QVariant can make a text of.
        return QVariant(type, argument).toString();
    }
}

} // namespace

const QVector<SignalInfo> &interfaceSignals()
{
    static const QVector<SignalInfo> rows = readSignals();
    return rows;
}

int findSignal(const QString &name)
{
    const QVector<SignalInfo> &rows = interfaceSignals();
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&name](const SignalInfo &row) { return row.name == name; });
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

int linkSignal()
{
    static const int index = findSignal(QStringLiteral("notifyCanbusStatus"));
    return index;
}

// Receives every signal of a service: a slot for each, behind those that its meta-object has, so
// that no signal has to be named here.
class PluginHost::Tap : public QObject
{
public:
    Tap(CanServiceBase *service, PluginHost *host)
        : mHost(host)
    {
        const QVector<SignalInfo> &rows = interfaceSignals();
        for (int i = 0; i < rows.size(); ++i)
            QMetaObject::connect(service, rows.at(i).method, this,
                                 QObject::staticMetaObject.methodCount() + i, Qt::DirectConnection);
    }

    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override
    {
        id = QObject::qt_metacall(call, id, arguments);
        if (id < 0 || call != QMetaObject::InvokeMetaMethod)
            return id;
        const SignalInfo &row = interfaceSignals().at(id);
        QVector<Value> values;
        values.reserve(row.types.size());
        for (int k = 0; k < row.types.size(); ++k)
            values += readArgument(row.types.at(k), arguments[k + 1]);
        emit mHost->event(id, values);
        return -1;
    }

private:
    PluginHost *const mHost;
};

PluginHost::PluginHost(QObject *parent)
    : QObject(parent)
{
}

PluginHost::~PluginHost() { unload(); }

QString PluginHost::load(const QString &file)
{
    unload();
    const PluginFile plugin = examinePlugin(file.isEmpty() ? defaultPluginFile() : file);
    QString problem = plugin.problem;
    if (problem.isEmpty()) {
        canservice::ConfigManager::instance()->setPluginFullPath(plugin.path);
        mLoader.setFileName(plugin.path);
        QObject *root = mLoader.instance();
        mService = qobject_cast<CanServiceBase *>(root);
        if (!root)
            problem = mLoader.errorString();
        else if (!mService)
            problem = QStringLiteral("its object does not offer the interface '%1'")
                          .arg(QLatin1String(qobject_interface_iid<CanServiceBase *>()));
    }
    if (mService)
        mTap = std::make_unique<Tap>(mService, this);
    else
        mLoader.unload();
    return problem.isEmpty() ? QString()
                             : QStringLiteral("%1 cannot be loaded: %2").arg(plugin.path, problem);
}

void PluginHost::unload()
{
    if (!mService)
        return;
    mService = nullptr;
    mLoader.unload();
    mTap.reset(); // It hears the service's last words.
}

} // namespace bench
