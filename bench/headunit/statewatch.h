// What the host sees of the service's state, from signal to signal.
#pragma once

#include "bench/headunit/getters.h"

#include <QVector>

namespace bench {

struct Change
{
    int getter;
    Value before, after;
    QString unitBefore, unitAfter;

    QString beforeText() const { return bench::getter(getter).text(before, unitBefore); }
    QString afterText() const { return bench::getter(getter).text(after, unitAfter); }
};

/// Turns signals into changes of state: a signal has those getters read that it can announce, and
/// no others. The signal of the link announces none.
class StateWatch
{
public:
    /// Reads everything once.
    void begin(CanServiceBase *service);
    void end() { mService = nullptr; }
    bool isWatching() const { return mService != nullptr; }

    /// What changed with a signal, given by its place among interfaceSignals().
    QVector<Change> changesWith(int signal);
    /// What may change without a signal of its own; to be asked after a frame.
    QVector<Change> lookAround();

    /// As it was last read.
    const Value &value(int getter) const { return mSeen.at(getter).value; }
    const QString &unit(int getter) const { return mSeen.at(getter).unit; }
    const Value &value(const char *name) const;
    QString text(const char *name) const;
    bool isOn(const char *name) const { return numberOf(value(name)) > 0; }

private:
    struct Seen
    {
        Value value;
        QString unit;
    };

    QVector<Change> look(const QVector<int> &getters);

    CanServiceBase *mService = nullptr;
    QVector<Seen> mSeen;
};

/// The getters that a signal may change, given by its place among interfaceSignals().
const QVector<int> &announcedBy(int signal);

} // namespace bench
