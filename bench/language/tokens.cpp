#include "bench/language/tokens.h"

#include <cmath>

namespace bench {

namespace {

bool isOperator(QChar c) { return QStringLiteral("=!<>").contains(c); }
bool isPunctuation(QChar c) { return QStringLiteral(",()").contains(c); }
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

bool LineReader::expect(const char *word)
{
    return accept(word) || wants(QStringLiteral("'%1'").arg(QLatin1String(word)));
}

bool LineReader::text(const char *what, QString *result)
{
    if (failed() || atEnd())
        return wants(QLatin1String(what));
    const Token &token = mTokens.at(mNext);
    if (!token.quoted && (isOperator(token.text.at(0)) || isPunctuation(token.text.at(0))))
        return wants(QLatin1String(what));
    *result = token.text;
    ++mNext;
    return true;
}

bool LineReader::comparison(const char *what, QString *result)
{
    if (failed() || atEnd() || mTokens.at(mNext).quoted ||
        !isOperator(mTokens.at(mNext).text.at(0)))
        return wants(QLatin1String(what));
    *result = mTokens.at(mNext++).text;
    return true;
}

bool LineReader::time(int *milliseconds)
{
    constexpr struct
    {
        const char *unit;
        double milliseconds;
    } kUnits[] = {{"ms", 1}, {"min", 60000}, {"s", 1000}};
    constexpr double kLongest = 3600000;

    QString word;
    if (!text("a time (200ms, 1.5s, 2min)", &word))
        return false;
    for (const auto &row : kUnits) {
        if (!word.endsWith(QLatin1String(row.unit)))
            continue;
        bool isNumber = false;
        const QString digits = word.left(word.size() - static_cast<int>(qstrlen(row.unit)));
        const double result = digits.toDouble(&isNumber) * row.milliseconds;
        if (!isNumber || !(result >= 0 && result <= kLongest))
            break;
        *milliseconds = static_cast<int>(std::lround(result));
        return true;
    }
    return fail(QStringLiteral("'%1' is not a time up to 60min (200ms, 1.5s, 2min)").arg(word));
}

bool LineReader::number(const char *what, int low, int high, int *result)
{
    QString word;
    if (!text(what, &word))
        return false;
    bool isNumber = false;
    const bool isHex = word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const int value = isHex ? word.mid(2).toInt(&isNumber, 16) : word.toInt(&isNumber, 10);
    if (!isNumber || value < low || value > high)
        return fail(QStringLiteral("'%1' is not %2 from %3 to %4")
                        .arg(word, QLatin1String(what))
                        .arg(low)
                        .arg(high));
    *result = value;
    return true;
}

bool LineReader::share(const char *what, double *result)
{
    QString word;
    if (!text(what, &word))
        return false;
    const bool isPercent = word.endsWith(QLatin1Char('%'));
    bool isNumber = false;
    const double value = (isPercent ? word.chopped(1) : word).toDouble(&isNumber);
    *result = isPercent ? value / 100 : value;
    if (isNumber && *result >= 0 && *result <= 1)
        return true;
    return fail(
        QStringLiteral("'%1' is not %2 from 0 to 1, or 0% to 100%").arg(word, QLatin1String(what)));
}

bool LineReader::bytes(const char *what, QByteArray *result)
{
    int byte = 0;
    while (!atEnd()) {
        if (!number(what, 0, 255, &byte))
            return false;
        result->append(static_cast<char>(byte));
    }
    return true;
}

bool LineReader::end()
{
    if (failed())
        return false;
    if (atEnd())
        return true;
    ++mNext;
    return fail(QStringLiteral("'%1' is too much here; the step ends before it")
                    .arg(mTokens.at(mNext - 1).text));
}

int LineReader::column() const { return mTokens.at(mNext > 0 ? mNext - 1 : 0).column; }

bool LineReader::fail(const QString &problem) { return failAt(column(), problem); }

bool LineReader::failAt(int column, const QString &problem)
{
    if (!failed()) {
        mMistake.column = column;
        mMistake.text = problem;
    }
    return false;
}

bool LineReader::wants(const QString &what)
{
    if (atEnd())
        return failAt(mTokens.last().endColumn,
                      QStringLiteral("the line ends where %1 belongs").arg(what));
    return failAt(mTokens.at(mNext).column,
                  QStringLiteral("'%1' is where %2 belongs").arg(mTokens.at(mNext).text, what));
}

} // namespace bench
