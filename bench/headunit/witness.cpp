#include "valuewitness.h"

#include "decode.h"

#include <serialport.h>

#include <algorithm>

namespace bench {

namespace {

QString statement(const QString &name, const QString &value)
{
    return QStringLiteral("%1 is %2").arg(name, value);
}

QString statement(int index, const Snapshot::Value &value)
{
    return statement(QLatin1String(getter(index).name), value.text());
}

void collect(const Event &event, QSet<QString> *values)
{
    for (const Snapshot::Change &change : event.changes) {
        values->insert(statement(change.getter, change.before));
        values->insert(statement(change.getter, change.after));
    }
    if (event.name == QLatin1String("keyEvent"))
        values->insert(statement(QStringLiteral("the key"), event.arguments.first().toString()));
}

} // namespace

ValueWitness::ValueWitness(Session *session, QObject *parent)
    : QObject(parent)
{
    connect(session, &Session::happened, this,
            [this](const Event &event) { collect(event, &mShown); });
    connect(&session->box(), &VirtualBox::frameSent, this, [this](quint8, const QByteArray &frame) {
        if (mIsSent.contains(frame))
            return;
        mIsSent.insert(frame);
        mSent.append(frame);
    });
    connect(&mReceived, &LineCutter::item, this, [this](const LineItem &item) {
        const QByteArray frame = canbox::buildFrame(item.dataType, item.bytes);
        if (item.kind == LineItem::Frame && !mIsSent.contains(frame))
            mDamaged.insert(frame);
    });
    connect(canservice::SerialMonitor::instance(), &canservice::SerialMonitor::received, this,
            [this, session](const QByteArray &bytes) {
                mReceived.take(bytes, static_cast<qint64>(session->seconds() * 1e6));
                mReceived.cutAll();
            });
}

QString ValueWitness::judge(const QString &plugin, int carModel, Verdict *verdict) const
{
    TraceDecoder decoder;
    const QString problem = decoder.open(plugin, carModel);
    if (!problem.isEmpty())
        return problem;
    QSet<QString> meant;
    for (int i = 0; i < getterCount(); ++i)
        meant.insert(statement(i, decoder.state().at(i)));
    connect(&decoder, &TraceDecoder::happened,
            [&meant](const Event &event) { collect(event, &meant); });
    const auto neverMeant = [&] { return QSet<QString>(mShown).subtract(meant); };

    for (const QByteArray &frame : mSent)
        decoder.feed({0, "-", true, frame});
    const int neverSent = neverMeant().size();
    for (const QByteArray &frame : mDamaged)
        decoder.feed({0, "-", true, frame});
    QStringList unexplained = neverMeant().values();
    std::sort(unexplained.begin(), unexplained.end());

    *verdict = {mShown.size(), neverSent, neverSent - unexplained.size(), unexplained};
    return {};
}

} // namespace bench
