#include "scenarioexpectation.h"

#include "session.h"

#include <QMetaMethod>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace bench {

namespace {

struct Observable
{
    const char *name;
    QVariant (*read)(Session &session);
    QVariant::Type type;
};

const Observable kObservables[] = {
    {"link", [](Session &s) { return QVariant(s.linkCode()); }, QVariant::Int},
    {"cluster.source", [](Session &s) { return QVariant(s.car().cluster().source); },
     QVariant::String},
    {"cluster.line1", [](Session &s) { return QVariant(s.car().cluster().lines[0]); },
     QVariant::String},
    {"cluster.line2", [](Session &s) { return QVariant(s.car().cluster().lines[1]); },
     QVariant::String},
    {"cluster.clock", [](Session &s) { return QVariant(s.car().cluster().clock); },
     QVariant::String},
    // What the box has heard of the host.
    {"box.bad_receipts", [](Session &s) { return QVariant(s.box().received().badReceipts); },
     QVariant::LongLong},
    {"box.resent", [](Session &s) { return QVariant(s.box().resent()); }, QVariant::LongLong},
};

constexpr struct
{
    const char *text;
    Comparison comparison;
} kComparisons[] = {
    {"==", Comparison::Equal},  {"!=", Comparison::NotEqual}, {"<", Comparison::Less},
    {"<=", Comparison::AtMost}, {">", Comparison::Greater},   {">=", Comparison::AtLeast},
};

const Observable *findObservable(const QString &name)
{
    const auto *row =
        std::find_if(std::begin(kObservables), std::end(kObservables),
                     [&](const Observable &o) { return name == QLatin1String(o.name); });
    return row == std::end(kObservables) ? nullptr : row;
}

bool isText(const QVariant &value) { return value.type() == QVariant::String; }
bool isSwitch(const QVariant &value) { return value.type() == QVariant::Bool; }

// Less than, equal to or greater than zero, as of two numbers; zero within a float's precision.
int compare(double actual, double expected)
{
    constexpr double kPrecision = 1e-5;
    if (std::abs(actual - expected) <= kPrecision * std::max(1.0, std::abs(expected)))
        return 0;
    return actual < expected ? -1 : 1;
}

bool holds(Comparison comparison, int difference)
{
    switch (comparison) {
    case Comparison::Equal:
        return difference == 0;
    case Comparison::NotEqual:
        return difference != 0;
    case Comparison::Less:
        return difference < 0;
    case Comparison::AtMost:
        return difference <= 0;
    case Comparison::Greater:
        return difference > 0;
    case Comparison::AtLeast:
        return difference >= 0;
    }
    return false;
}

} // namespace

QString Expectation::text() const
{
    const auto *row = std::find_if(std::begin(kComparisons), std::end(kComparisons),
                                   [this](const auto &c) { return c.comparison == comparison; });
    return QStringLiteral("%1 %2 %3")
        .arg(name, QLatin1String(row->text),
             expected.isEmpty() ? QStringLiteral("\"\"") : expected);
}

bool Expectation::isMetBy(const QVariant &actual) const
{
    if (isText(actual) || isSwitch(actual))
        return holds(comparison, valueText(actual) == expected ? 0 : 1);
    return holds(comparison, compare(actual.toDouble(), expected.toDouble()));
}

QString Expectation::problemWith(const QVariant &sample) const
{
    const bool isOrder = comparison != Comparison::Equal && comparison != Comparison::NotEqual;
    bool isNumber = false;
    const double number = expected.toDouble(&isNumber);
    if (isSwitch(sample)) {
        if (isOrder || (expected != QLatin1String("true") && expected != QLatin1String("false")))
            return QStringLiteral("%1 is a switch; compare it by == or != with true or false")
                .arg(name);
    } else if (isText(sample)) {
        if (isOrder)
            return QStringLiteral("%1 is a text; compare it by == or !=").arg(name);
    } else if (!isNumber || !std::isfinite(number)) {
        return QStringLiteral("%1 is a number, and '%2' is none").arg(name, expected);
    }
    return {};
}

QString SignalExpectation::text() const
{
    if (arguments.isEmpty())
        return name;
    return QStringLiteral("%1(%2)").arg(name, arguments.join(QStringLiteral(", ")));
}

bool SignalExpectation::isMetBy(const QString &signal, const QVariantList &actual) const
{
    if (signal != name)
        return false;
    return arguments.isEmpty() ||
           std::equal(arguments.begin(), arguments.end(), actual.begin(), actual.end(),
                      [](const QString &wanted, const QVariant &value) {
                          return wanted == valueText(value);
                      });
}

QString signalText(const QString &name, const QVariantList &arguments)
{
    QStringList texts;
    for (const QVariant &argument : arguments)
        texts += valueText(argument);
    return SignalExpectation{name, texts}.text();
}

QStringList observableNames()
{
    QStringList names;
    for (const Observable &row : kObservables)
        names += QLatin1String(row.name);
    for (int i = 0; i < getterCount(); ++i)
        names += QLatin1String(getter(i).name);
    return names;
}

Snapshot::Value observe(Session &session, const QString &name)
{
    if (const Observable *row = findObservable(name))
        return {row->read(session), {}};
    const Getter &row = getter(findGetter(name));
    return {row.read(session.service()), row.unit ? row.unit(session.service()) : QString()};
}

QVariant benchSample(const QString &name)
{
    const Observable *row = findObservable(name);
    return row ? QVariant(row->type) : QVariant();
}

QStringList signalNames()
{
    QStringList names{QStringLiteral("device"), QStringLiteral("cluster")};
    const QMetaObject &meta = CanServiceBase::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        if (meta.method(i).methodType() == QMetaMethod::Signal)
            names += QString::fromLatin1(meta.method(i).name());
    return names;
}

int signalArgumentCount(const QString &name)
{
    const QMetaObject &meta = CanServiceBase::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        if (name == QLatin1String(meta.method(i).name()))
            return meta.method(i).parameterCount();
    return -1;
}

bool parseComparison(const QString &text, Comparison *comparison)
{
    for (const auto &row : kComparisons)
        if (text == QLatin1String(row.text)) {
            *comparison = row.comparison;
            return true;
        }
    return false;
}

} // namespace bench
