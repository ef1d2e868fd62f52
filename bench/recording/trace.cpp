#include "bench/recording/trace.h"

#include <algorithm>
#include <utility>

namespace bench {

namespace {

constexpr qint64 kMicroseconds = 1'000'000;
constexpr int kFraction = 6;          // Digits.
constexpr int kMaxSecondsDigits = 12; // Some 30000 years: no sum of such times overflows.
constexpr int kMaxText = 2 * kMaxTraceBytes + kMaxTracePort + 32;

const QLatin1String kExample("a line reads like (12.500000) canbox R 2E6102053C5B");

bool isAll(const QByteArray &text, bool (*isGood)(char))
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), isGood);
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isHexDigit(char c) { return isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }
bool isPrintable(char c) { return c > ' ' && c <= '~'; }
bool isControl(char c) { return (quint8(c) < ' ' && c != '\t') || c == 0x7F; }

// A part of a line for a message: short, and without what a terminal would obey.
QString quoted(QByteArray text)
{
    constexpr int kShown = 24;
    std::replace_if(
        text.begin(), text.end(), [](char c) { return !isPrintable(c); }, '?');
    if (text.size() > kShown)
        text = text.left(kShown) + "...";
    return QLatin1Char('\'') + QString::fromLatin1(text) + QLatin1Char('\'');
}

// Reads `(12.500000)`.
bool parseTime(const QByteArray &text, qint64 *time)
{
    if (!text.startsWith('(') || !text.endsWith(')'))
        return false;
    const QByteArray number = text.mid(1, text.size() - 2);
    const int point = number.indexOf('.');
    const QByteArray whole = number.left(point);
    const QByteArray fraction = number.mid(point + 1);
    if (point < 1 || whole.size() > kMaxSecondsDigits || fraction.size() != kFraction ||
        !isAll(whole, isDigit) || !isAll(fraction, isDigit))
        return false;
    *time = whole.toLongLong() * kMicroseconds + fraction.toLongLong();
    return true;
}

} // namespace

QByteArray traceText(const TraceLine &line)
{
    const QByteArray fraction = QByteArray::number(line.time % kMicroseconds);
    return '(' + QByteArray::number(line.time / kMicroseconds) + '.' +
           fraction.rightJustified(kFraction, '0') + ") " + line.port +
           (line.fromBox ? " R " : " T ") + line.bytes.toHex().toUpper() + '\n';
}

QByteArray traceText(const TraceCar &car)
{
    return "# car model " + QByteArray::number(car.model) + " index " +
           QByteArray::number(car.index);
}

QString parseTraceText(const QByteArray &text, TraceLine *line)
{
    const QList<QByteArray> fields = text.simplified().split(' ');
    if (fields.size() != 4)
        return QStringLiteral("%1 fields instead of 4; %2").arg(fields.size()).arg(kExample);
    const QByteArray &direction = fields.at(2);
    const QByteArray &hex = fields.at(3);
    if (!parseTime(fields.at(0), &line->time))
        return QStringLiteral("%1 is no time; it has seconds and 6 digits, as in (12.500000)")
            .arg(quoted(fields.at(0)));
    if (!isAll(fields.at(1), isPrintable) || fields.at(1).size() > kMaxTracePort)
        return QStringLiteral("%1 is no port; its name has 1 to %2 letters of ASCII")
            .arg(quoted(fields.at(1)))
            .arg(kMaxTracePort);
    if (direction != "R" && direction != "T")
        return QStringLiteral("%1 is no direction; R is from the box and T is to it")
            .arg(quoted(direction));
    if (!isAll(hex, isHexDigit))
        return QStringLiteral("%1 are no bytes; each is two of 0 to 9 and A to F").arg(quoted(hex));
    if (hex.size() % 2 != 0)
        return QStringLiteral("%1 hexadecimal digits; each byte needs two").arg(hex.size());
    if (hex.size() / 2 > kMaxTraceBytes)
        return QStringLiteral("%1 bytes; a line holds at most %2")
            .arg(hex.size() / 2)
            .arg(kMaxTraceBytes);
    line->port = fields.at(1);
    line->fromBox = direction == "R";
    line->bytes = QByteArray::fromHex(hex);
    return {};
}

TraceReader::TraceReader(const QString &file)
    : mName(file == QLatin1String("-") ? QStringLiteral("standard input") : file)
    , mFile(file)
{
    const bool isOpen = file == QLatin1String("-") ? mFile.open(stdin, QIODevice::ReadOnly)
                                                   : mFile.open(QIODevice::ReadOnly);
    if (!isOpen)
        mProblem = QStringLiteral("%1: %2").arg(mName, mFile.errorString());
    TraceLine first;
    if (read(&first))
        mAhead = first;
}

bool TraceReader::next(TraceLine *line)
{
    if (!mAhead)
        return read(line);
    *line = *std::exchange(mAhead, std::nullopt);
    return true;
}

bool TraceReader::read(TraceLine *line)
{
    QByteArray text;
    while (mProblem.isEmpty() && readText(&text)) {
        const QByteArray content = text.trimmed();
        if (content.isEmpty() || content.startsWith('#')) {
            mLineEnded = true; // There is nothing to be cut.
            readComment(content);
            continue;
        }
        const QString problem = parseTraceText(content, line);
        if (!problem.isEmpty())
            return fail(mLineEnded ? problem
                                   : QStringLiteral("the file ends in this line: ") + problem);
        if (line->time < mTime && mBackwardSteps++ == 0)
            mFirstBackward = mNumber;
        mTime = line->time;
        return true;
    }
    // Even digits may be half of a line: only its end tells.
    if (mProblem.isEmpty() && mNumber > 0 && !mLineEnded)
        fail(QStringLiteral("the file ends without a line end: the recording was cut here, or the "
                            "line end is missing"));
    return false;
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

bool TraceReader::readText(QByteArray *text)
{
    *text = mFile.readLine(kMaxText + 2); // One more than a good line, and one for Qt's end mark.
    if (text->isEmpty()) {
        if (mFile.error() != QFileDevice::NoError)
            fail(mFile.errorString());
        return false;
    }
    ++mNumber;
    mLineEnded = text->endsWith('\n');
    if (!mLineEnded && text->size() > kMaxText)
        return fail(QStringLiteral("the line is longer than %1 bytes, the longest that a recording "
                                   "has; %2")
                        .arg(kMaxText)
                        .arg(kExample));
    if (mNumber == 1 && text->startsWith("\xEF\xBB\xBF"))
        text->remove(0, 3);
    const QByteArray content = text->trimmed();
    if (std::any_of(content.begin(), content.end(), isControl))
        return fail(QStringLiteral("this is no text, and so no recording; %1").arg(kExample));
    return true;
}

bool TraceReader::rewind()
{
    if (!mFile.seek(0))
        return false;
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
