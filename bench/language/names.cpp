#include "bench/language/names.h"

#include "bench/headunit/session.h"
#include "bench/language/expectation.h"
#include "bench/language/operations.h"
#include "bench/wire/linefaults.h"
#include "bench/wire/tables.h"

#include <set>

namespace bench {

namespace {

QString signalOf(const bench::Getter &row)
{
    for (int signal = 0; signal < interfaceSignals().size(); ++signal)
        if (announcedBy(signal).contains(findGetter(QLatin1String(row.name))))
            return interfaceSignals().at(signal).name;
    return {};
}

// The whole numbers that a host shows for all that the wire can say, with the getter's words:
// "1 to 5, 7, none".
QString numbersShown(ValueId id, const bench::Getter &row)
{
    constexpr int kInt = 1;
    constexpr int kModel = 0; // Of no car with rules of its own.
    if (row.read.type != kInt || !row.meaning)
        return {};
    std::set<int> numbers;
    QStringList parts, words;
    for (int raw = 0; raw <= fieldOf(id).mask(); ++raw) {
        QByteArray payload(reportOf(id).size, '\0');
        pack(fieldOf(id), raw, false, &payload);
        if (const auto value = row.meaning(PayloadWire(reportOf(id).type, payload, kModel)))
            numbers.insert(static_cast<int>(numberOf(*value)));
    }
    for (const Word &word : row.words)
        if (numbers.erase(word.raw) > 0)
            words += QLatin1String(word.name);
    for (auto at = numbers.begin(); at != numbers.end();) {
        const int first = *at;
        int last = first;
        while (++at != numbers.end() && *at == last + 1)
            last = *at;
        parts += last == first ? QString::number(first)
                               : QStringLiteral("%1 to %2").arg(first).arg(last);
    }
    return (parts + words).join(QStringLiteral(", "));
}

NameRow carRow(ValueId id)
{
    const Field &field = fieldOf(id);
    NameRow row{
        NameRow::CarValue, field.name,   valueRange(field), {}, valueText(field, field.initial),
        field.unit,        &reportOf(id)};
    const int index = findGetter(row.name);
    row.isExpected = index >= 0;
    if (index < 0)
        return row;
    row.signal = signalOf(getter(index));
    row.shown = numbersShown(id, getter(index));
    if (row.shown == row.values)
        row.shown.clear();
    return row;
}

NameRow observedRow(const QString &name)
{
    const Observable observable = Observable::find(name);
    const int index = findGetter(name);
    NameRow row{NameRow::OfBench, name, observable.possible()};
    if (index < 0)
        return row;
    row.kind = getter(index).alias ? NameRow::OldName : NameRow::Getter;
    row.report = findReport(getter(index).report);
    row.signal = signalOf(getter(index));
    return row;
}

QStringList keyCodes()
{
    QStringList codes;
    for (int code = 0; code <= 0xFF; ++code)
        codes += QString::number(code);
    return codes;
}

QStringList faultWords() { return QStringList("all") + faultNames(); }

QStringList frameTypes() { return namesOf(kReports); }

// Those that differ from the others on the wire.
QStringList specialModels()
{
    QStringList models;
    for (int model = 0; model <= 0xFF; ++model)
        if (hasTwoCodesPerSensor(model))
            models += QString::number(model);
    return models;
}

const struct
{
    const char *name;
    QStringList (*words)();
} kWords[] = {
    {"set", valueNames},      {"expect", Observable::names}, {"signal", eventNames},
    {"call", operationNames}, {"faults", faultWords},        {"press", keyCodes},
    {"only", frameTypes},     {"model", specialModels},      {"of", wordedOptions},
};

// Of one value of the car; for a number, what it is at first.
QStringList valueWords(ValueId id)
{
    const Field &field = fieldOf(id);
    QStringList words = namesOf(field.words);
    if (field.low <= field.high)
        words += numberText(field.value(field.initial));
    return words;
}

} // namespace

QVector<NameRow> nameRows()
{
    QVector<NameRow> rows;
    for (int index = 0; index < kValueCount; ++index)
        rows += carRow(ValueId{index});
    QVector<NameRow> observed;
    for (const QString &name : Observable::names())
        if (!findValue(name))
            observed += observedRow(name);
    for (const auto kind : {NameRow::Getter, NameRow::OfBench, NameRow::OldName})
        for (const NameRow &row : qAsConst(observed))
            if (row.kind == kind)
                rows += row;
    for (const QString &name : eventNames()) {
        const QString arguments = eventArguments(name).join(", ");
        rows.append({NameRow::Signal, name, arguments.isEmpty() ? "no arguments" : arguments});
    }
    return rows;
}

QStringList wordsFor(const QString &what)
{
    if (const auto *row = findNamed(kWords, what))
        return row->words();
    const std::optional<ValueId> id = findValue(what);
    return id ? valueWords(*id) : QStringList();
}

QStringList wordedOptions() { return namesOf(kWords); }

} // namespace bench
