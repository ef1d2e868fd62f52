#include "bench/headunit/witness.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace bench {

namespace {

constexpr int kKey = -1;

QByteArray frameKey(Inbound type, const QByteArray &payload)
{
    return static_cast<char>(type) + payload;
}

QString versionText(const QByteArray &payload)
{
    return QString::fromUtf8(
        payload.constData(),
        static_cast<int>(qstrnlen(payload.constData(), static_cast<uint>(payload.size()))));
}

} // namespace

Witness::Witness(Session *session, Scope scope, QObject *parent)
    : QObject(parent)
    , mSession(session)
    , mScope(scope)
{
    connect(session, &Session::received, this, &Witness::onReceived);
    if (scope == Present)
        return;
    connect(session, &Session::happened, this, &Witness::onEvent);
    connect(&session->boxEnd()->box(), &VirtualBox::frameSent, this, &Witness::onSent);
}

QStringList Witness::differences() const
{
    QStringList texts;
    BoxEnd &end = *mSession->boxEnd();
    const Wire wire{[&end](ValueId id) { return end.car().raw(id); }, mSession->options().carModel};
    for (int index = 0; index < getterCount(); ++index) {
        const Getter &row = getter(index);
        if (!row.meaning || !mReceived.contains(static_cast<int>(row.report)) ||
            end.box().isForeign(row.report))
            continue;
        const std::optional<Value> expected = row.meaning(wire);
        const Value answer = row.read(mSession->service());
        const QString unit = row.unitOf(mSession->service());
        if (expected && !(*expected == answer))
            texts += QStringLiteral("%1 is %2 instead of %3")
                         .arg(QLatin1String(row.name), row.text(answer, unit),
                              row.text(*expected, unit));
    }
    return texts;
}

bool Witness::isComparable() const
{
    BoxEnd &end = *mSession->boxEnd();
    return mSession->isStarted() && mSession->linkCode() == 3 && end.isPlugged() &&
           end.box().isStarted() && !end.box().isSilent() && !end.box().awaitsHost() &&
           mSession->isQuiet();
}

bool Witness::settle(int milliseconds) const
{
    const QDeadlineTimer deadline(milliseconds);
    while (!isComparable()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop loop;
        QTimer::singleShot(5, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

QVector<QPair<QString, qint64>> Witness::summary(const QStringList &differences) const
{
    return {{QStringLiteral("shown by the host"), mHistory.shown},
            {QStringLiteral("reports taken"), mHistory.reports},
            {QStringLiteral("reports taken, never sent"), mHistory.unsent},
            {QStringLiteral("shown for these alone"), mHistory.damaged},
            {QStringLiteral("shown, which no frame said"), mHistory.unexplained.size()},
            {QStringLiteral("other than the car's at the end"), differences.size()}};
}

QVector<Witness::Statement> Witness::meaningOf(Inbound type, const QByteArray &payload) const
{
    if (!isReport(type, payload.size()))
        return {};
    if (type == Inbound::Version)
        return {{findGetter(QStringLiteral("version")), versionText(payload)}};
    if (type == Inbound::SteeringWheelKey)
        return {{kKey, QString::number(canbox::byteAt(payload, 0))}};
    QVector<Statement> statements;
    const PayloadWire wire(type, payload, mSession->options().carModel);
    for (int index = 0; index < getterCount(); ++index) {
        const Getter &row = getter(index);
        if (!row.meaning || row.report != type)
            continue;
        if (const std::optional<Value> value = row.meaning(wire))
            statements.append({index, plainText(*value)});
    }
    return statements;
}

void Witness::onSent(Inbound type, const QByteArray &payload)
{
    const QByteArray key = frameKey(type, payload);
    if (mSent.contains(key))
        return;
    mSent.insert(key);
    for (const Statement &statement : meaningOf(type, payload))
        mMeant.insert(statement);
}

void Witness::onReceived(const LineItem &item)
{
    const Inbound type{item.dataType};
    if (item.kind != LineItem::Frame || !isReport(type, item.bytes.size()))
        return;
    mReceived.insert(item.dataType);
    ++mHistory.reports;
    if (mScope == Present || mSent.contains(frameKey(type, item.bytes)))
        return;
    ++mHistory.unsent;
    for (const Statement &statement : meaningOf(type, item.bytes))
        mMeantByDamage.insert(statement);
}

void Witness::onEvent(const Event &event)
{
    for (const Change &change : event.changes)
        note({change.getter, plainText(change.after)});
    if (event.name == QLatin1String("keyEvent"))
        note({kKey, plainText(event.arguments.first())});
}

void Witness::note(const Statement &statement)
{
    if (mShown.contains(statement))
        return;
    mShown.insert(statement);
    ++mHistory.shown;
    if (mMeant.contains(statement))
        return;
    if (mMeantByDamage.contains(statement)) {
        ++mHistory.damaged;
        return;
    }
    const QString name = statement.first == kKey ? QStringLiteral("the key")
                                                 : QLatin1String(getter(statement.first).name);
    mHistory.unexplained += QStringLiteral("%1 is %2").arg(name, statement.second);
}

} // namespace bench
