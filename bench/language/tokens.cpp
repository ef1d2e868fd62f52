#include "bench/language/tokens.h"

#include <cmath>

namespace bench {

namespace {

bool isOperator(QChar c) { return QStringLiteral("=!<>").contains(c); }
bool isPunctuation(QChar c) { return QStringLiteral(",()").contains(c); }
bool isSign(const QString &text) { return isOperator(text.at(0)) || isPunctuation(text.at(0)); }
bool endsWord(QChar c)
{
    return c.isSpace() || c == QLatin1Char('#') || c == QLatin1Char('"') || isOperator(c) ||
           isPunctuation(c);
}

// Reads from behind the opening quote to behind the closing one. \returns whether there is one.
bool cutQuoted(const QString &line, int *at, QString *text)
{
    while (*at < line.size()) {
        QChar c = line.at((*at)++);
        if (c == QLatin1Char('"'))
            return true;
        if (c == QLatin1Char('\\') && *at < line.size())
            c = line.at((*at)++);
        text->append(c);
    }
    return false;
}

// Decimal, or 0x and hexadecimal digits.
bool readInt(const QString &word, int *result)
{
    bool isNumber = false;
    const bool isHex = word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    *result = isHex ? word.mid(2).toInt(&isNumber, 16) : word.toInt(&isNumber, 10);
    return isNumber;
}

} // namespace

QVector<Token> cutLine(const QString &line, Mistake *mistake)
{
    QVector<Token> tokens;
    int at = 0;
    while (at < line.size()) {
        const QChar c = line.at(at);
        const int begin = at;
        if (c == QLatin1Char('#'))
            break;
        if (c.isSpace()) {
            ++at;
        } else if (c == QLatin1Char('"')) {
            QString text;
            ++at;
            if (!cutQuoted(line, &at, &text)) {
                mistake->column = begin + 1;
                mistake->text = QStringLiteral("this quote has no end; put a '\"' behind the text");
                return tokens;
            }
            tokens.append({text, begin + 1, at + 1, true});
        } else {
            ++at;
            if (isOperator(c))
                while (at < line.size() && isOperator(line.at(at)))
                    ++at;
            else if (!isPunctuation(c))
                while (at < line.size() && !endsWord(line.at(at)))
                    ++at;
            tokens.append({line.mid(begin, at - begin), begin + 1, at + 1, false});
        }
    }
    return tokens;
}

LineReader::LineReader(const QVector<Token> &tokens, int line)
    : mTokens(tokens)
    , mMistake{line, 0, {}}
{
}

bool LineReader::peek(const char *word) const
{
    return !failed() && !atEnd() && !mTokens.at(mNext).quoted &&
           mTokens.at(mNext).text == QLatin1String(word);
}

bool LineReader::follows(const char *word) const
{
    return mNext + 1 < mTokens.size() && !mTokens.at(mNext + 1).quoted &&
           mTokens.at(mNext + 1).text == QLatin1String(word);
}

bool LineReader::accept(const char *word)
{
    const bool found = peek(word);
    mNext += found ? 1 : 0;
    return found;
}

void LineReader::expect(const char *word)
{
    if (!accept(word))
        wants(QStringLiteral("'%1'").arg(QLatin1String(word)));
}

QString LineReader::take(const char *what, bool isWanted)
{
    if (goesOn() && isWanted)
        return mTokens.at(mNext++).text;
    wants(QLatin1String(what));
    return {};
}

QString LineReader::text(const char *what)
{
    return take(what, !atEnd() && (mTokens.at(mNext).quoted || !isSign(mTokens.at(mNext).text)));
}

QString LineReader::comparison(const char *what)
{
    return take(what,
                !atEnd() && !mTokens.at(mNext).quoted && isOperator(mTokens.at(mNext).text.at(0)));
}

int LineReader::time()
{
    constexpr struct
    {
        const char *unit;
        double milliseconds;
    } kUnits[] = {{"ms", 1}, {"min", 60000}, {"s", 1000}};
    constexpr double kLongest = 3600000;

    const QString word = text("a time (200ms, 1.5s, 2min)");
    for (const auto &row : kUnits) {
        if (!word.endsWith(QLatin1String(row.unit)))
            continue;
        bool isNumber = false;
        const QString digits = word.left(word.size() - static_cast<int>(qstrlen(row.unit)));
        const double result = digits.toDouble(&isNumber) * row.milliseconds;
        if (!isNumber || !(result >= 0 && result <= kLongest))
            break;
        return static_cast<int>(std::lround(result));
    }
    fail(QStringLiteral("'%1' is not a time up to 60min (200ms, 1.5s, 2min)").arg(word));
    return 0;
}

int LineReader::number(const char *what, int low, int high)
{
    const QString word = text(what);
    int result = 0;
    if (!readInt(word, &result) || result < low || result > high)
        fail(QStringLiteral("'%1' is not %2 from %3 to %4")
                 .arg(word, QLatin1String(what))
                 .arg(low)
                 .arg(high));
    return result;
}

int LineReader::wholeNumber(const char *what)
{
    const QString word = text(what);
    int result = 0;
    if (!readInt(word, &result))
        fail(QStringLiteral("'%1' is not %2: a whole number").arg(word, QLatin1String(what)));
    return result;
}

double LineReader::share(const char *what)
{
    const QString word = text(what);
    const bool isPercent = word.endsWith(QLatin1Char('%'));
    bool isNumber = false;
    const double value = (isPercent ? word.chopped(1) : word).toDouble(&isNumber);
    const double result = isPercent ? value / 100 : value;
    if (!isNumber || !(result >= 0 && result <= 1))
        fail(QStringLiteral("'%1' is not %2 from 0 to 1, or 0% to 100%")
                 .arg(word, QLatin1String(what)));
    return result;
}

QByteArray LineReader::bytes(const char *what)
{
    QByteArray result;
    while (goesOn())
        result.append(static_cast<char>(number(what, 0, 255)));
    return result;
}

void LineReader::end()
{
    if (!goesOn())
        return;
    ++mNext;
    fail(QStringLiteral("'%1' is too much here; the step ends before it")
             .arg(mTokens.at(mNext - 1).text));
}

int LineReader::column() const { return mTokens.at(mNext > 0 ? mNext - 1 : 0).column; }

void LineReader::fail(const QString &problem) { failAt(column(), problem); }

void LineReader::failAt(int column, const QString &problem)
{
    if (failed())
        return;
    mMistake.column = column;
    mMistake.text = problem;
}

void LineReader::wants(const QString &what)
{
    if (atEnd())
        return failAt(mTokens.last().endColumn,
                      QStringLiteral("the line ends where %1 belongs").arg(what));
    failAt(mTokens.at(mNext).column,
           QStringLiteral("'%1' is where %2 belongs").arg(mTokens.at(mNext).text, what));
}

} // namespace bench
