#include "bench/recording/trace.h"

#include "bench/recording/pcapng.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace bench {

namespace {

constexpr qint64 kSecond = 1'000'000; // us
constexpr int kFraction = 6;          // Digits.
constexpr int kMaxSecondsDigits = 12; // Some 30000 years: no sum of such times overflows.

const QLatin1String kExample("a line reads like (12.500000) canbox R 2E6102053C5B");

const QString kNoText = QStringLiteral("this is no text, and so no recording; %1").arg(kExample);

using Text = std::string_view;

template <typename Condition>
bool isAll(Text text, Condition isGood)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), isGood);
}

constexpr auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
constexpr auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
constexpr auto isGraphic = [](char c) { return c > ' ' && c <= '~'; };
constexpr auto isControl = [](char c) { return (quint8(c) < ' ' && c != '\t') || c == 0x7F; };

// A part of a line for a message: short, and without what a terminal would obey.
QString quoted(Text field)
{
    constexpr int kShown = 24;
    QByteArray text(field.data(), static_cast<int>(field.size()));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return !isGraphic(c); }, '?');
    if (text.size() > kShown)
        text = text.left(kShown) + "...";
    return QLatin1Char('\'') + QString::fromLatin1(text) + QLatin1Char('\'');
}

// What a hexadecimal digit stands for; -1 for what is none.
constexpr auto kNibbles = [] {
    std::array<qint8, 256> nibbles{};
    for (int c = 0; c < 256; ++c)
        nibbles[static_cast<std::size_t>(c)] =
            static_cast<qint8>(c >= '0' && c <= '9'   ? c - '0'
                               : c >= 'A' && c <= 'F' ? c - 'A' + 10
                               : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                                      : -1);
    return nibbles;
}();

int nibble(char c) { return kNibbles[static_cast<quint8>(c)]; }

// \returns whether there are nothing but digits in \p hex, two for each of the bytes.
bool readBytes(Text hex, QByteArray *bytes)
{
    bytes->resize(static_cast<int>(hex.size() / 2)); // Keeps the memory.
    int all = 0;
    for (char &byte : *bytes) {
        const int high = nibble(hex[0]), low = nibble(hex[1]);
        hex.remove_prefix(2);
        all |= high | low;
        byte = static_cast<char>(high << 4 | low);
    }
    return all >= 0;
}

qint64 numberIn(Text digits)
{
    qint64 number = 0;
    for (const char c : digits)
        number = 10 * number + (c - '0');
    return number;
}

// Reads `(12.500000)`.
bool parseTime(Text text, qint64 *time)
{
    if (text.size() < 2 || text.front() != '(' || text.back() != ')')
        return false;
    const Text number = text.substr(1, text.size() - 2);
    const std::size_t point = number.find('.');
    if (point == Text::npos)
        return false;
    const Text whole = number.substr(0, point);
    const Text fraction = number.substr(point + 1);
    if (whole.size() > kMaxSecondsDigits || fraction.size() != kFraction ||
        !isAll(whole, isDigit) || !isAll(fraction, isDigit))
        return false;
    *time = numberIn(whole) * kSecond + numberIn(fraction);
    return true;
}

Text trimmed(Text text)
{
    constexpr auto isWhite = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isWhite(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isWhite(text.back()))
        text.remove_suffix(1);
    return text;
}

// Cuts the next field off.
Text takeField(Text *text)
{
    const char *first = std::find_if_not(text->begin(), text->end(), isBlank);
    const char *last = std::find_if(first, text->end(), isBlank);
    text->remove_prefix(static_cast<std::size_t>(last - text->begin()));
    return {first, static_cast<std::size_t>(last - first)};
}

// R or T, or nothing for another identifier.
Text directionOf(Text identifier)
{
    return identifier == "100" || identifier == "101"   ? "R"
           : identifier == "200" || identifier == "201" ? "T"
                                                        : "";
}

QString parseLine(Text text, TraceLine *line)
{
    Text fields[4];
    int count = 0;
    for (Text rest = trimmed(text); !rest.empty(); ++count) {
        const Text field = takeField(&rest);
        if (count < 4)
            fields[count] = field;
    }
    // A log of CAN frames, as `export` writes it: what is the direction here is an identifier
    // there.
    const std::size_t mark = fields[2].find('#');
    if (count == 3 && mark != Text::npos) {
        fields[3] = fields[2].substr(mark + 1);
        fields[2] = directionOf(fields[2].substr(0, mark));
        if (fields[2].empty())
            return QStringLiteral("this is no CAN frame of a chunk; 'export' gives them the "
                                  "identifiers 100, 101, 200 and 201");
        count = 4;
    }
    const auto [time, port, direction, hex] = fields;
    if (count != 4)
        return QStringLiteral("%1 fields instead of 4; %2").arg(qMax(count, 1)).arg(kExample);
    if (!parseTime(time, &line->time))
        return QStringLiteral("%1 is no time; it has seconds and 6 digits, as in (12.500000)")
            .arg(quoted(time));
    if (!isAll(port, isGraphic) || port.size() > kMaxTracePort)
        return QStringLiteral("%1 is no port; its name has 1 to %2 letters of ASCII")
            .arg(quoted(port))
            .arg(kMaxTracePort);
    if (direction != "R" && direction != "T")
        return QStringLiteral("%1 is no direction; R is from the box and T is to it")
            .arg(quoted(direction));
    if (hex.size() <= 2 * kMaxTraceBytes && hex.size() % 2 == 0 && readBytes(hex, &line->bytes)) {
        line->fromBox = direction == "R";
        if (Text(line->port.constData(), static_cast<std::size_t>(line->port.size())) != port)
            line->port = QByteArray(port.data(), static_cast<int>(port.size()));
        return {};
    }
    if (!isAll(hex, [](char c) { return nibble(c) >= 0; }))
        return QStringLiteral("%1 are no bytes; each is two of 0 to 9 and A to F").arg(quoted(hex));
    if (hex.size() % 2 != 0)
        return QStringLiteral("%1 hexadecimal digits; each byte needs two").arg(hex.size());
    return QStringLiteral("%1 bytes; a line holds at most %2")
        .arg(hex.size() / 2)
        .arg(kMaxTraceBytes);
}

} // namespace

QByteArray traceText(const TraceLine &line)
{
    const QByteArray fraction = QByteArray::number(line.time % kSecond);
    return '(' + QByteArray::number(line.time / kSecond) + '.' +
           fraction.rightJustified(kFraction, '0') + ") " + line.port +
           (line.fromBox ? " R " : " T ") + line.bytes.toHex().toUpper() + '\n';
}

QByteArray traceText(const TraceCar &car)
{
    return "# car model " + QByteArray::number(car.model) + " index " +
           QByteArray::number(car.index);
}

TraceReader::TraceReader(const QString &file, Content content)
    : mName(file == QLatin1String("-") ? QStringLiteral("standard input") : file)
    , mContent(content)
    , mFile(file)
{
    const bool isOpen = file == QLatin1String("-") ? mFile.open(stdin, QIODevice::ReadOnly)
                                                   : mFile.open(QIODevice::ReadOnly);
    if (!isOpen)
        mProblem = QStringLiteral("%1: %2").arg(mName, mFile.errorString());
    else if (mContent == Recording && isPcapng(mFile.peek(4)))
        mPackets = std::make_unique<PcapngReader>();
    TraceLine first;
    if (read(&first))
        mAhead = first;
}

TraceReader::~TraceReader() = default;

bool TraceReader::next(TraceLine *line)
{
    if (!mAhead)
        return read(line);
    *line = *std::exchange(mAhead, std::nullopt);
    return true;
}

bool TraceReader::read(TraceLine *line)
{
    if (!mProblem.isEmpty())
        return false;
    if (mContent == RawBytes)
        return readRaw(line);
    if (mPackets)
        return readPacket(line);
    while (mProblem.isEmpty() && readText()) {
        const Text content = trimmed({mText, static_cast<std::size_t>(mSize)});
        if (content.empty() || content.front() == '#') {
            mLineEnded = true; // There is nothing to be cut.
            if (std::any_of(content.begin(), content.end(), isControl))
                return fail(kNoText);
            readComment(QByteArray(content.data(), static_cast<int>(content.size())));
            continue;
        }
        const QString problem = parseLine(content, line);
        if (!problem.isEmpty())
            return fail(std::any_of(content.begin(), content.end(), isControl) ? kNoText
                        : mLineEnded                                           ? problem
                                     : QStringLiteral("the file ends in this line: ") + problem);
        return isInOrder(*line);
    }
    // Even digits may be half of a line: only its end tells.
    if (mProblem.isEmpty() && mNumber > 0 && !mLineEnded)
        fail(QStringLiteral("the file ends without a line end: the recording was cut here, or the "
                            "line end is missing"));
    return false;
}

bool TraceReader::readPacket(TraceLine *line)
{
    QString problem;
    ++mNumber;
    const bool isThere = mPackets->next(mFile, line, &problem);
    readComment(mPackets->comment());
    if (isThere)
        return isInOrder(*line);
    return problem.isEmpty() ? false : fail(problem);
}

bool TraceReader::readRaw(TraceLine *line)
{
    *line = {0, "raw", true, mFile.read(kMaxTraceBytes)};
    if (line->bytes.isEmpty() && mFile.error() != QFileDevice::NoError)
        return fail(mFile.errorString());
    return !line->bytes.isEmpty();
}

// Counts what goes back. \returns true.
bool TraceReader::isInOrder(const TraceLine &line)
{
    if (line.time < mTime && mBackwardSteps++ == 0)
        mFirstBackward = mNumber;
    mTime = line.time;
    return true;
}

void TraceReader::readComment(const QByteArray &text)
{
    const QList<QByteArray> words = text.simplified().split(' ');
    bool isModel = false, isIndex = false;
    if (mCar || words.size() != 6 || !text.startsWith("# car model ") || words.at(4) != "index")
        return;
    const TraceCar car{words.at(3).toInt(&isModel), words.at(5).toInt(&isIndex)};
    if (isModel && isIndex)
        mCar = car;
}

bool TraceReader::readText()
{
    mSize = mFile.readLine(mText, sizeof mText);
    if (mSize <= 0) {
        if (mFile.error() != QFileDevice::NoError)
            fail(mFile.errorString());
        return false;
    }
    ++mNumber;
    mLineEnded = mText[mSize - 1] == '\n';
    if (!mLineEnded && mSize > kMaxTraceText)
        return fail(QStringLiteral("the line is longer than %1 bytes, the longest that a recording "
                                   "has; %2")
                        .arg(kMaxTraceText)
                        .arg(kExample));
    constexpr Text kByteOrderMark("\xEF\xBB\xBF");
    if (mNumber == 1 && Text(mText, static_cast<std::size_t>(mSize)).substr(0, 3) == kByteOrderMark)
        std::fill_n(mText, kByteOrderMark.size(), ' ');
    return true;
}

double TraceReader::progress() const
{
    return mFile.isSequential() || mFile.size() == 0
               ? -1
               : static_cast<double>(mFile.pos()) / static_cast<double>(mFile.size());
}

bool TraceReader::rewind()
{
    if (!mFile.seek(0))
        return false;
    if (mPackets)
        mPackets->restart();
    mNumber = 0;
    mTime = 0;
    mBackwardSteps = 0;
    mAhead.reset();
    mProblem.clear();
    return true;
}

QString TraceReader::note() const
{
    return mBackwardSteps == 0
               ? QString()
               : QStringLiteral("%1:%2: the time goes back%3; what is earlier counts as of the "
                                "time before")
                     .arg(mName)
                     .arg(mFirstBackward)
                     .arg(
                         mBackwardSteps == 1
                             ? QString()
                             : QStringLiteral(", and in %1 further lines").arg(mBackwardSteps - 1));
}

bool TraceReader::fail(const QString &what)
{
    mProblem = QStringLiteral("%1:%2: %3").arg(mName).arg(mNumber).arg(what);
    return false;
}

} // namespace bench
