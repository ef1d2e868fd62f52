#include "bench/headunit/statewatch.h"

#include "bench/headunit/pluginhost.h"

#include <QMetaMethod>

namespace bench {

namespace {

// A row a signal, and a last one for what changes quietly.
const QVector<QVector<int>> &announcements()
{
    static const QVector<QVector<int>> announced = [] {
        QVector<QVector<int>> lists(interfaceSignals().size() + 1);
        for (int index = 0; index < getterCount(); ++index) {
            const Getter &row = getter(index);
            const int method =
                row.announcement ? QMetaMethod::fromSignal(row.announcement).methodIndex() : -1;
            for (int signal = 0; signal < interfaceSignals().size(); ++signal)
                if (interfaceSignals().at(signal).method == method)
                    lists[signal] += index;
            if (row.quiet)
                lists.last() += index;
        }
        return lists;
    }();
    return announced;
}

} // namespace

const QVector<int> &announcedBy(int signal) { return announcements().at(signal); }

void StateWatch::begin(CanServiceBase *service)
{
    mService = service;
    mSeen.clear();
    mSeen.reserve(getterCount());
    for (int index = 0; index < getterCount(); ++index)
        mSeen.append({getter(index).read(*service), getter(index).unitOf(*service)});
}

QVector<Change> StateWatch::changesWith(int signal) { return look(announcedBy(signal)); }

QVector<Change> StateWatch::lookAround() { return look(announcements().last()); }

QVector<Change> StateWatch::look(const QVector<int> &getters)
{
    QVector<Change> changes;
    if (!mService)
        return changes;
    for (const int index : getters) {
        const Getter &row = getter(index);
        Seen now{row.read(*mService), row.unitOf(*mService)};
        Seen &before = mSeen[index];
        if (now.value == before.value && now.unit == before.unit)
            continue;
        if (!row.alias)
            changes.append({index, before.value, now.value, before.unit, now.unit});
        before = std::move(now);
    }
    return changes;
}

const Value &StateWatch::value(const char *name) const
{
    static const Value none = QString();
    const int index = findGetter(QLatin1String(name));
    return index >= 0 && index < mSeen.size() ? mSeen.at(index).value : none;
}

QString StateWatch::text(const char *name) const
{
    const int index = findGetter(QLatin1String(name));
    return index >= 0 && index < mSeen.size()
               ? getter(index).text(mSeen.at(index).value, mSeen.at(index).unit)
               : QString();
}

} // namespace bench
