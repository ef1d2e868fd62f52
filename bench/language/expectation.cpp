#include "bench/language/expectation.h"

#include "bench/language/stage.h"
#include "bench/language/steps.h"

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
    bool isText;
    int needs;
};

int clipped(qint64 count)
{
    return static_cast<int>(std::min<qint64>(count, std::numeric_limits<int>::max()));
}

const BenchRow kBenchRows[] = {
    {"link", [](const Stage &s) { return Value(s.host->linkCode()); }, false, NeedsHost},
    {"cluster.source", [](const Stage &s) { return Value(s.box->car().cluster().source); }, true,
     NeedsBox},
    {"cluster.line1", [](const Stage &s) { return Value(s.box->car().cluster().lines[0]); }, true,
     NeedsBox},
    {"cluster.line2", [](const Stage &s) { return Value(s.box->car().cluster().lines[1]); }, true,
     NeedsBox},
    {"cluster.clock", [](const Stage &s) { return Value(s.box->car().cluster().clock); }, true,
     NeedsBox},
    // What the box has heard of the host.
    {"box.bad_receipts",
     [](const Stage &s) { return Value(clipped(s.box->box().received().badReceipts)); }, false,
     NeedsBox},
    {"box.resent", [](const Stage &s) { return Value(clipped(s.box->box().resent())); }, false,
     NeedsBox},
    {"box.car_index", [](const Stage &s) { return Value(s.box->box().carIndex()); }, false,
     NeedsBox},
};

constexpr struct
{
    const char *text;
    Comparison comparison;
} kComparisons[] = {
    {"==", Comparison::Equal},  {"!=", Comparison::NotEqual}, {"<", Comparison::Less},
    {"<=", Comparison::AtMost}, {">", Comparison::Greater},   {">=", Comparison::AtLeast},
};

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

bool isOrder(Comparison comparison)
{
    return comparison != Comparison::Equal && comparison != Comparison::NotEqual;
}

// The number that a text such as "12.5km" begins with. \returns whether there is one.
bool leadingNumber(const QString &text, double *number)
{
    int size = 0;
    while (size < text.size() &&
           (text.at(size).isDigit() || text.at(size) == '.' || (size == 0 && text.at(size) == '-')))
        ++size;
    bool isNumber = false;
    *number = text.left(size).toDouble(&isNumber);
    return isNumber;
}

constexpr struct
{
    const char *word;
    int number;
} kSwitchWords[] = {{"on", 1}, {"true", 1}, {"open", 1}, {"off", 0}, {"false", 0}, {"closed", 0}};

} // namespace

Observable Observable::find(const QString &name)
{
    Observable found;
    found.mName = name;
    for (int i = 0; i < static_cast<int>(std::size(kBenchRows)); ++i)
        if (name == QLatin1String(kBenchRows[i].name)) {
            found.mSource = Bench;
            found.mIndex = i;
            return found;
        }
    found.mIndex = findGetter(name);
    found.mSource = found.mIndex >= 0 ? Getter : None;
    return found;
}

Observable Observable::ofCar(const QString &name)
{
    Observable found;
    found.mName = name;
    if (const std::optional<ValueId> id = findValue(name)) {
        found.mSource = Car;
        found.mIndex = static_cast<int>(*id);
    }
    return found;
}

QStringList Observable::names()
{
    QStringList names;
    for (const BenchRow &row : kBenchRows)
        names += QLatin1String(row.name);
    for (int i = 0; i < getterCount(); ++i)
        names += QLatin1String(getter(i).name);
    return names;
}

int Observable::needs() const
{
    return mSource == Bench ? kBenchRows[mIndex].needs : mSource == Car ? NeedsBox : NeedsHost;
}

Value Observable::value(const Stage &stage) const
{
    switch (mSource) {
    case Getter:
        return getter(mIndex).read(stage.host->service());
    case Bench:
        return kBenchRows[mIndex].read(stage);
    case Car: {
        const Field &field = fieldOf(ValueId{mIndex});
        const int raw = stage.box->car().raw(ValueId{mIndex});
        return static_cast<float>(*field.unit ? field.value(raw) : raw);
    }
    case None:
        break;
    }
    return QString();
}

QString Observable::text(const Stage &stage) const
{
    if (mSource == Car)
        return stage.box->car().text(ValueId{mIndex});
    return text(value(stage),
                mSource == Getter ? getter(mIndex).unitOf(stage.host->service()) : QString());
}

QString Observable::text(const Value &value, const QString &unit) const
{
    return mSource == Getter ? getter(mIndex).text(value, unit) : plainText(value);
}

bool Observable::isSwitch() const { return mSource == Getter && getter(mIndex).read.isSwitch(); }

bool Observable::isText() const
{
    return (mSource == Bench && kBenchRows[mIndex].isText) ||
           (mSource == Getter && getter(mIndex).read.isText());
}

bool Observable::isQuantity() const
{
    return mSource == Getter && isText() && findValue(mName).has_value();
}

bool Observable::numberOfWord(const QString &word, double *number) const
{
    if (isSwitch()) {
        bool isNumber = false;
        for (const auto &row : kSwitchWords)
            if (word == QLatin1String(row.word)) {
                *number = row.number;
                return true;
            }
        *number = word.toDouble(&isNumber);
        return isNumber && (*number == 0 || *number == 1);
    }
    const Span<Word> own = mSource == Getter ? getter(mIndex).words
                           : mSource == Car  ? fieldOf(ValueId{mIndex}).words
                                             : Span<Word>();
    for (const Word &row : own)
        if (word.compare(QLatin1String(row.text), Qt::CaseInsensitive) == 0) {
            const Field *field = mSource == Car ? &fieldOf(ValueId{mIndex}) : nullptr;
            *number = field && *field->unit ? field->value(row.raw) : row.raw;
            return true;
        }
    return false;
}

QStringList Observable::words() const
{
    QStringList words;
    const Span<Word> own = mSource == Getter ? getter(mIndex).words
                           : mSource == Car  ? fieldOf(ValueId{mIndex}).words
                                             : Span<Word>();
    for (const Word &row : own)
        words += QLatin1String(row.text);
    if (words.isEmpty() && isSwitch())
        words = QStringList{QStringLiteral("off"), QStringLiteral("on")};
    return words;
}

QString Expectation::text() const
{
    const auto *row = std::find_if(std::begin(kComparisons), std::end(kComparisons),
                                   [this](const auto &c) { return c.comparison == comparison; });
    return QStringLiteral("%1 %2 %3")
        .arg(observable.name(), QLatin1String(row->text),
             expected.isEmpty() ? QStringLiteral("\"\"") : expected);
}

bool Expectation::isMetBy(const Value &actual) const
{
    double number = 0;
    bool isNumber = false;
    const double given = expected.toDouble(&isNumber);
    if (bench::isText(actual)) {
        const QString text = std::get<QString>(actual);
        if (observable.isQuantity() && isNumber)
            return leadingNumber(text, &number) ? holds(comparison, compare(number, given))
                                                : comparison == Comparison::NotEqual;
        const bool isNone =
            observable.isQuantity() && expected == QLatin1String("none") && text == "--";
        return holds(comparison, text == expected || isNone ? 0 : 1);
    }
    if (!observable.numberOfWord(expected, &number))
        number = given;
    return holds(comparison, compare(numberOf(actual), number));
}

QString Expectation::problem() const
{
    double number = 0;
    bool isNumber = false;
    const QString name = observable.name();
    const double given = expected.toDouble(&isNumber);
    isNumber = isNumber && std::isfinite(given);
    if (observable.isQuantity())
        return isOrder(comparison) && !isNumber
                   ? QStringLiteral("%1 is compared so with a number, and '%2' is none")
                         .arg(name, expected)
                   : QString();
    if (observable.isText())
        return isOrder(comparison)
                   ? QStringLiteral("%1 is a text; compare it by == or !=").arg(name)
                   : QString();
    const bool isWord = observable.numberOfWord(expected, &number);
    if (observable.isSwitch())
        return isOrder(comparison) || !isWord
                   ? QStringLiteral("%1 is a switch; compare it by == or != with %2")
                         .arg(name, observable.words().join(QStringLiteral(" or ")))
                   : QString();
    if (isWord || isNumber)
        return {};
    const QStringList words = observable.words();
    return QStringLiteral("%1 is a number%2, and '%3' is none")
        .arg(name, words.isEmpty() ? QString() : QStringLiteral(" or ") + words.join(", "),
             expected);
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
    QStringList texts;
    for (const Value &argument : arguments)
        texts += plainText(argument);
    return SignalExpectation{name, texts}.text();
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
