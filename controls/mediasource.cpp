// What plays in the head unit, reported to the car: the tuner as numbers, other sources as text.
#include "plugin/simpleservice.h"

#include "protocol/diagnostics.h"

#include <algorithm>
#include <cmath>

namespace canservice {

namespace {

enum SourceType { Tuner = 0, TextSource = 3, OtherTextSource = 4, FixedSource = 5 };

struct Band
{
    const char *name;
    quint8 code;
    int multiplier; // from the displayed frequency to the box's number
};

constexpr Band kBands[] = {
    {"FM1", 0x00, 100}, {"FM2", 0x01, 100}, {"FM3", 0x02, 100}, {"AM1", 0x10, 1}, {"AM2", 0x10, 1},
};
constexpr Band kUnknownBand{"", 0x00, 1};

constexpr quint8 kTunerReport = 0x01;
constexpr quint8 kFixedReport = 0x07;
constexpr int kUnitLength = 3; // MHz, KHz

/// The box's number for a displayed frequency, "87.50MHz": 0 for a text that is none and for a
/// number that no int holds.
int frequencyOf(const QString &text, int multiplier)
{
    const float shown = text.left(text.size() - kUnitLength).toFloat();
    const float frequency = static_cast<float>(multiplier) * shown;
    constexpr float kIntLimit = 2147483648.0F;
    return std::abs(frequency) < kIntLimit ? static_cast<int>(frequency) : 0;
}

constexpr int kMaxTextUnits = 125; // what a length byte can tell beside the five bytes before it
constexpr int kTextEntries = 3;    // of which the third is never sent

enum TextLine : quint8 { FirstLine = 0x01, SecondLine = 0x02 };

/// UTF-16, big-endian, cut to what a frame holds; never in the middle of a surrogate pair.
QByteArray encodeText(const QString &text)
{
    int size = std::min(text.size(), kMaxTextUnits);
    if (size < text.size() && text.at(size - 1).isHighSurrogate() && text.at(size).isLowSurrogate())
        --size;
    QByteArray bytes;
    bytes.reserve(2 * size);
    for (int unit = 0; unit < size; ++unit) {
        bytes.append(static_cast<char>(text.at(unit).row()));
        bytes.append(static_cast<char>(text.at(unit).cell()));
    }
    return bytes;
}

// Payload: [0] line, [1..4] zero, [5..] text.
QByteArray textFrame(TextLine line, const QByteArray &text)
{
    QByteArray payload(5, '\0');
    payload[0] = static_cast<char>(line);
    return canbox::buildFrame(static_cast<quint8>(canbox::Outbound::SourceText), payload + text);
}

} // namespace

void SimpleService::onRadioSourceInformation(QString source, QStringList info, int type)
{
    CHECK_THREAD();
    LOG_DEBUG() << "ttttttttttttttt" << source << info << type;
    sendRadioStatus(source, info, type);
    sendSourceStatus(source, info, type);
}

// Payload of the tuner's frame: [0] 1, [1] band, [2..3] frequency, low byte first, [4] zero.
void SimpleService::sendRadioStatus(QString source, QStringList info, int type)
{
    LOG_DEBUG() << "src type-->" << type;
    if (type == FixedSource) {
        mSerialPort.writeData(canbox::buildFrame(canbox::Outbound::Source, {kFixedReport}), true);
        return;
    }
    if (type != Tuner)
        return;

    const auto *found = std::find_if(std::begin(kBands), std::end(kBands), [&](const Band &band) {
        return source == QLatin1String(band.name);
    });
    const bool known = found != std::end(kBands);
    const Band &band = known ? *found : kUnknownBand;

    quint8 low = 0;
    quint8 high = 0;
    if (!info.isEmpty()) {
        const int frequency = frequencyOf(info.first(), band.multiplier);
        low = static_cast<quint8>(frequency);
        high = static_cast<quint8>(frequency >> 8);
        LOG_DEBUG() << int(band.code) << int(low) << int(high);
    }
    if (known) {
        const QByteArray frame =
            canbox::buildFrame(canbox::Outbound::Source, {kTunerReport, band.code, low, high, 0});
        mSerialPort.writeData(frame, true);
    }
}

void SimpleService::sendSourceStatus(QString, QStringList info, int type)
{
    LOG_DEBUG() << "src type-->" << type;
    if (type != TextSource && type != OtherTextSource)
        return;

    QByteArray first;
    QByteArray second;
    if (info.size() == kTextEntries) {
        first = encodeText(info.at(0));
        second = encodeText(info.at(1));
        LOG_DEBUG() << info.at(0) << first.size() << first.toHex();
        LOG_DEBUG() << info.at(1) << second.size() << second.toHex();
    }
    mSerialPort.writeData(textFrame(FirstLine, first), false);
    mSerialPort.writeData(textFrame(SecondLine, second), false);
}

} // namespace canservice
