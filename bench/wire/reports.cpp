#include "bench/wire/reports.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace bench {

namespace {

// Ascending, for binary search.
constexpr int kTwoCodeModels[] = {1,  11, 27, 30, 35, 39, 47, 51, 55,  58,  65, 68,
                                  69, 76, 79, 82, 86, 92, 97, 98, 111, 112, 119};

bool isSwitch(const Field &field) { return field.words.count == 2 && field.high < 0; }

template <typename Rows>
QString nameIn(const Rows &rows, quint8 dataType)
{
    for (const auto &row : rows)
        if (static_cast<quint8>(row.type) == dataType)
            return QLatin1String(row.name);
    return QStringLiteral("unknown");
}

} // namespace

std::optional<ValueId> findValue(const QString &name)
{
    const int index = valueNames().indexOf(name);
    return index < 0 ? std::nullopt : std::optional<ValueId>(ValueId{index});
}

QStringList valueNames()
{
    static const QStringList names = [] {
        QStringList list;
        for (const Report &report : kReports)
            list += namesOf(report.fields);
        return list;
    }();
    return names;
}

const Field &fieldOf(ValueId id) { return *placeOf(id).field; }

const Report &reportOf(ValueId id) { return *placeOf(id).report; }

bool isReport(Inbound type, int size)
{
    const Report *report = findReport(type);
    return report && (report->size == size || report->size == kAnySize);
}

QString frameName(bool fromBox, quint8 dataType)
{
    return fromBox ? nameIn(kReports, dataType) : nameIn(kCommands, dataType);
}

QString hexByte(quint8 byte)
{
    return QStringLiteral("0x%1").arg(QString::number(byte, 16).toUpper(), 2, QLatin1Char('0'));
}

std::optional<int> rawIn(const Field &field, const QByteArray &payload, bool twoCodes)
{
    if (field.selector >= 0 && canbox::byteAt(payload, 0) != field.selector)
        return std::nullopt;
    if (twoCodes && field.pair[0] >= 0)
        return std::min(canbox::byteAt(payload, field.pair[0]),
                        canbox::byteAt(payload, field.pair[1]));
    int raw = 0;
    for (int k = 0; k <= (field.bits - 1) / 8; ++k)
        raw = raw << 8 | canbox::byteAt(payload, field.byte + k);
    return raw >> field.shift & field.mask();
}

void pack(const Field &field, int raw, bool twoCodes, QByteArray *payload)
{
    const auto add = [payload](int byte, int bits) {
        (*payload)[byte] = static_cast<char>(canbox::byteAt(*payload, byte) | bits);
    };
    if (field.selector >= 0)
        (*payload)[0] = static_cast<char>(field.selector);
    if (twoCodes && field.pair[0] >= 0) {
        for (const int byte : field.pair)
            add(byte, raw);
        return;
    }
    const int last = (field.bits - 1) / 8;
    for (int k = 0; k <= last; ++k)
        add(field.byte + k, (raw >> 8 * (last - k) & 0xFF) << field.shift);
}

QString numberText(double value) { return QString::number(std::round(value * 100) / 100, 'g', 10); }

QString valueText(const Field &field, int raw)
{
    if (const Word *word = wordOf(field.words, raw))
        return QLatin1String(word->name);
    const QString text = numberText(field.value(raw));
    return *field.unit ? text + QLatin1Char(' ') + QString::fromUtf8(field.unit) : text;
}

QString valueRange(const Field &field)
{
    QStringList parts;
    if (field.low <= field.high)
        parts += QStringLiteral("%1 to %2 %3")
                     .arg(numberText(field.value(field.low)), numberText(field.value(field.high)),
                          QString::fromUtf8(field.unit))
                     .trimmed();
    parts += namesOf(field.words);
    return parts.join(QLatin1String(", "));
}

bool parseValue(const Field &field, const QString &text, int *raw, QString *error)
{
    for (const Word &word : field.words)
        if (text.compare(QLatin1String(word.name), Qt::CaseInsensitive) == 0) {
            *raw = word.raw;
            return true;
        }
    // A switch is on as its second word says, or its first if that is the word "on".
    if (isSwitch(field)) {
        const bool isInverted = isSameText(field.words[0].name, "on");
        if (const Word *word = findNamed(kSwitchWords, text)) {
            *raw = isInverted ? 1 - word->raw : word->raw;
            return true;
        }
    }
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    const double step = std::round((value - field.offset) / field.scale);
    if (isNumber && step >= field.low && step <= field.high) {
        *raw = static_cast<int>(step);
        return true;
    }
    *error = QStringLiteral("%1 cannot be '%2'; possible: %3")
                 .arg(QLatin1String(field.name), text, valueRange(field));
    return false;
}

bool hasTwoCodesPerSensor(int carModelId)
{
    return std::binary_search(std::begin(kTwoCodeModels), std::end(kTwoCodeModels), carModelId);
}

} // namespace bench
