#include "bench/language/expectation.h"

#include "bench/language/stage.h"
#include "bench/language/steps.h"
#include "bench/wire/tables.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace bench {

namespace {

struct BenchRow
{
    const char *name;
    Value (*read)(const Stage &stage);
    Observable::Kind kind = Observable::Text;
    int needs = NeedsBox;
};

int clipped(qint64 count)
{
    return static_cast<int>(std::min<qint64>(count, std::numeric_limits<int>::max()));
}

constexpr BenchRow kBenchRows[] = {
    {"link", [](const Stage &s) { return Value(s.host->linkCode()); }, Observable::Number,
     NeedsHost},
    {"cluster.source", [](const Stage &s) { return Value(s.box->car().cluster().source); }},
    {"cluster.line1", [](const Stage &s) { return Value(s.box->car().cluster().lines[0]); }},
    {"cluster.line2", [](const Stage &s) { return Value(s.box->car().cluster().lines[1]); }},
    {"cluster.clock", [](const Stage &s) { return Value(s.box->car().cluster().clock); }},
    // What the box has heard of the host.
    {"box.bad_receipts",
     [](const Stage &s) { return Value(clipped(s.box->box().received().badReceipts)); },
     Observable::Number},
    {"box.resent", [](const Stage &s) { return Value(clipped(s.box->box().resent())); },
     Observable::Number},
    {"box.car_index", [](const Stage &s) { return Value(s.box->box().carIndex()); },
     Observable::Number},
};

// By what a comparison of two numbers gives, as compare() does.
constexpr struct
{
    const char *name;
    Comparison comparison;
    bool (*holds)(int difference);
} kComparisons[] = {
    {"==", Comparison::Equal, [](int difference) { return difference == 0; }},
    {"!=", Comparison::NotEqual, [](int difference) { return difference != 0; }},
    {"<", Comparison::Less, [](int difference) { return difference < 0; }},
    {"<=", Comparison::AtMost, [](int difference) { return difference <= 0; }},
    {">", Comparison::Greater, [](int difference) { return difference > 0; }},
    {">=", Comparison::AtLeast, [](int difference) { return difference >= 0; }},
};
static_assert(isInEnumOrder(kComparisons, [](const auto &row) { return row.comparison; }));

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
    return kComparisons[static_cast<int>(comparison)].holds(difference);
}

bool isOrder(Comparison comparison)
{
    return comparison != Comparison::Equal && comparison != Comparison::NotEqual;
}

// A value that is shown without a reading.
bool isNoReading(const QString &text)
{
    return text.isEmpty() || text == QLatin1String("none") || text == QLatin1String("--");
}

} // namespace

Observable Observable::find(const QString &name)
{
    if (const BenchRow *row = findNamed(kBenchRows, name))
        return {name, row->needs, row->kind, row->read,
                [row](const Stage &stage) { return plainText(row->read(stage)); }};
    const int index = findGetter(name);
    if (index < 0)
        return {};
    const Getter &row = getter(index);
    Observable found{name, NeedsHost,
                     row.isQuantity()      ? Quantity
                     : row.read.isText()   ? Text
                     : row.read.isSwitch() ? Switch
                                           : Number,
                     [&row](const Stage &stage) { return row.read(stage.host->service()); },
                     [&row](const Stage &stage) { return row.textOf(stage.host->service()); }};
    for (const Word &word : row.words)
        found.words.append({word.name, double(word.raw)});
    if (found.kind == Switch && found.words.isEmpty())
        found.words = {{QStringLiteral("off"), 0}, {QStringLiteral("on"), 1}};
    found.isOrdered = false; // Neither low nor high nor none is a number of degrees.
    return found;
}

Observable Observable::ofCar(const QString &name)
{
    const std::optional<ValueId> id = findValue(name);
    if (!id)
        return {};
    const Field &field = fieldOf(*id);
    const auto number = [&field](int raw) { return *field.unit ? field.value(raw) : raw; };
    Observable found{name, NeedsBox, Number,
                     [id, number](const Stage &stage) {
                         return Value(static_cast<float>(number(stage.box->car().raw(*id))));
                     },
                     [id](const Stage &stage) { return stage.box->car().text(*id); }};
    for (const Word &word : field.words)
        found.words.append({word.name, number(word.raw)});
    return found;
}

QStringList Observable::names()
{
    QStringList names = namesOf(kBenchRows);
    for (int i = 0; i < getterCount(); ++i)
        names += QLatin1String(getter(i).name);
    return names;
}

bool Observable::numberOfWord(const QString &word, double *number) const
{
    const auto found = std::find_if(words.begin(), words.end(), [&word](const auto &row) {
        return word.compare(row.first, Qt::CaseInsensitive) == 0;
    });
    const Word *row = kind == Switch ? findNamed(kSwitchWords, word) : nullptr;
    if (found != words.end())
        *number = found->second;
    else if (row)
        *number = row->raw;
    return found != words.end() || row;
}

QString Observable::possible() const
{
    QStringList parts;
    if (kind != Switch)
        parts += QLatin1String(kind == Text ? "a text" : "a number");
    for (const auto &row : words)
        parts += row.first;
    if (kind == Quantity)
        parts += QStringLiteral("none");
    return parts.join(QStringLiteral(", "));
}

QString Expectation::text() const
{
    return QStringLiteral("%1 %2 %3")
        .arg(observable.name, kComparisons[static_cast<int>(comparison)].name,
             expected.isEmpty() ? QStringLiteral("\"\"") : expected);
}

bool Expectation::isMetBy(const Value &actual) const
{
    const bool isDifferent = comparison == Comparison::NotEqual;
    if (observable.kind == Observable::Quantity) {
        const std::optional<Quantity> shown = quantityIn(plainText(actual));
        const std::optional<Quantity> wanted = quantityIn(expected);
        if (!shown || !wanted)
            return !isOrder(comparison) && (!shown && !wanted) != isDifferent;
        if (!wanted->unit.isEmpty() && wanted->unit != shown->unit)
            return isDifferent;
        return holds(comparison, compare(shown->number, wanted->number));
    }
    if (bench::isText(actual))
        return (plainText(actual) == expected) != isDifferent;
    double number = numberOf(actual);
    const auto &words = observable.words;
    if (isOrder(comparison) && !observable.isOrdered &&
        std::any_of(words.begin(), words.end(), [&](auto &row) { return row.second == number; }))
        return false;
    if (!observable.numberOfWord(expected, &number))
        number = expected.toDouble();
    return holds(comparison, compare(numberOf(actual), number));
}

QString Expectation::problem() const
{
    const QString name = observable.name;
    const bool isQuantity = observable.kind == Observable::Quantity;
    if (observable.kind == Observable::Text)
        return isOrder(comparison)
                   ? QStringLiteral("%1 is a text; compare it by == or !=").arg(name)
                   : QString();
    double number = 0;
    const bool isWord =
        isQuantity ? isNoReading(expected) : observable.numberOfWord(expected, &number);
    bool isNumber = isQuantity && quantityIn(expected).has_value();
    if (!isNumber && !isQuantity && observable.kind != Observable::Switch) {
        const double given = expected.toDouble(&isNumber);
        isNumber = isNumber && std::isfinite(given);
    }
    if (!isWord && !isNumber)
        return QStringLiteral("%1 cannot be '%2'; possible: %3")
            .arg(name, expected, observable.possible());
    // Words that stand for numbers have no order of their own.
    if (isOrder(comparison) && !isNumber)
        return observable.kind == Observable::Switch
                   ? QStringLiteral("%1 is %2; compare it by == or !=")
                         .arg(name, observable.possible().replace(", ", " or "))
                   : QStringLiteral("'%1' is a word; compare it by == or !=").arg(expected);
    return {};
}

QString SignalExpectation::text() const
{
    if (arguments.isEmpty())
        return name;
    return QStringLiteral("%1(%2)").arg(name, arguments.join(QStringLiteral(", ")));
}

bool SignalExpectation::isMetBy(const QString &signal, const QVector<Value> &actual) const
{
    if (signal != name)
        return false;
    return arguments.isEmpty() ||
           std::equal(arguments.begin(), arguments.end(), actual.begin(), actual.end(),
                      [](const QString &wanted, const Value &value) {
                          return wanted == plainText(value);
                      });
}

QString signalText(const QString &name, const QVector<Value> &arguments)
{
    return arguments.isEmpty() ? name : QStringLiteral("%1(%2)").arg(name, plainText(arguments));
}

bool parseComparison(const QString &text, Comparison *comparison)
{
    const auto *row = findNamed(kComparisons, text);
    if (row)
        *comparison = row->comparison;
    return row;
}

} // namespace bench
