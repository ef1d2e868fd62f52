// The head unit's side of the plug-in.
#pragma once

#include "bench/headunit/value.h"

#include <canservicebase.h>

#include <QPluginLoader>
#include <QStringList>
#include <QVector>

#include <memory>

namespace bench {

/// A signal of the interface, as its meta-object has it.
struct SignalInfo
{
    QString name;
    int method;            ///< In the meta-object.
    QVector<int> types;    ///< QMetaType::Type of the arguments.
    QStringList arguments; ///< Their names.
};

/// All signals of the interface, in the order of their declaration.
const QVector<SignalInfo> &interfaceSignals();

/// The link code's signal, which comes with every good frame.
int linkSignal();
/// -1 for an unknown name.
int findSignal(const QString &name);

/// Loads the plug-in from its file as a head unit does and listens to all of its signals. One at a
/// time in a process: the plug-in has one service.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    explicit PluginHost(QObject *parent = nullptr);
    ~PluginHost() override;

    /// Loads \p file, or the plug-in of this build if it is empty, and makes the service, which
    /// opens its serial port now. \returns an empty text, or why it cannot be done.
    QString load(const QString &file);
    /// Destroys the service. Every start needs its stop before.
    void unload();

    /// Null while nothing is loaded.
    CanServiceBase *service() const { return mService; }

signals:
    /// One signal of the service: its place among interfaceSignals().
    void event(int signal, const QVector<bench::Value> &arguments);

private:
    class Tap;

    QPluginLoader mLoader;
    CanServiceBase *mService = nullptr;
    std::unique_ptr<Tap> mTap;
};

} // namespace bench
