// One line of a scenario, cut into words, and what is wrong with it.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

namespace bench {

/// A place in a scenario, and what would be right there.
struct Mistake
{
    int line;   ///< From 1.
    int column; ///< From 1.
    QString text;
    QString file = {}; ///< Included; empty for the scenario itself.
};

/// A word, a quoted text, an operator, a comma or a parenthesis.
struct Token
{
    QString text;
    int column;    ///< From 1.
    int endColumn; ///< Of what follows it.
    bool quoted;
};

/// Cuts a line: blanks separate, a `#` outside quotes begins a comment, `\"` and `\\` are the
/// escapes inside quotes. \returns the tokens up to a mistake, which is left in \p mistake with its
/// column and text; its text is empty when there is none.
QVector<Token> cutLine(const QString &line, Mistake *mistake);

/// Takes the tokens of a line one after the other. The first mistake stands; after it every take
/// gives nothing or 0.
class LineReader
{
public:
    /// \param tokens at least one.
    LineReader(const QVector<Token> &tokens, int line);

    bool atEnd() const { return mNext == mTokens.size(); }
    /// The next token is this word, unquoted: takes it.
    bool accept(const char *word);
    bool peek(const char *word) const;
    /// The token after the next one is this word, unquoted.
    bool follows(const char *word) const;

    // Each says what it wants when it finds something else.
    void expect(const char *word);
    QString text(const char *what);                  ///< Any word or quoted text.
    QString comparison(const char *what);            ///< A word of `=`, `!`, `<` and `>`.
    int time();                                      ///< 200ms, 1.5s or 2min; up to an hour. In ms.
    int number(const char *what, int low, int high); ///< Decimal, or 0x and hex.
    int wholeNumber(const char *what);               ///< Any int.
    double share(const char *what);                  ///< 0 to 1, or 0% to 100%.
    QByteArray bytes(const char *what);              ///< To the end of the line.
    void end();                                      ///< Nothing more on the line.
    /// There is more to take.
    bool goesOn() const { return !failed() && !atEnd(); }

    int line() const { return mMistake.line; }
    /// Where the token taken last begins.
    int column() const;
    /// A mistake there.
    void fail(const QString &problem);
    bool failed() const { return !mMistake.text.isEmpty(); }
    const Mistake &mistake() const { return mMistake; }

private:
    void failAt(int column, const QString &problem);
    void wants(const QString &what);
    QString take(const char *what, bool isWanted);

    const QVector<Token> mTokens;
    int mNext = 0;
    Mistake mMistake;
};

} // namespace bench
