// Recordings of the serial line: text, a chunk of bytes a line.
//
//   (<seconds>.<6 digits>) <port> <R|T> <HEX>
//
// R is from the box, T is to it. Blank lines and lines that begin with # carry nothing.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace bench {

/// What one read or one write carried.
struct TraceLine
{
    qint64 time = 0; ///< Microseconds. A recording counts from 1970; any other start will do.
    QByteArray port; ///< Printable ASCII without blanks.
    bool fromBox = true;
    QByteArray bytes; ///< 1 to kMaxTraceBytes.
};

constexpr int kMaxTraceBytes = 4096;
constexpr int kMaxTracePort = 255;

/// The line with its line end.
QByteArray traceText(const TraceLine &line);

/// Reads a line without its line end. \returns an empty text, or what is wrong and what would be
/// right.
QString parseTraceText(const QByteArray &text, TraceLine *line);

/// Reads a recording line by line, whatever the file holds, in memory that does not grow with it.
class TraceReader
{
public:
    /// Opens \p file; `-` is the standard input.
    explicit TraceReader(const QString &file);

    /// \returns false at the end and at the first error, which problem() tells then.
    bool next(TraceLine *line);
    /// Back to the first line, with all being well. \returns false for a file that cannot go back,
    /// such as a pipe.
    bool rewind();

    /// `FILE:LINE: ...`; empty while all is well.
    QString problem() const { return mProblem; }
    /// What is strange and yet can be read; empty for nothing.
    QString note() const;

private:
    bool readText(QByteArray *text);
    bool fail(const QString &what);

    const QString mName;
    QFile mFile;
    qint64 mNumber = 0;      ///< Of the latest line, counted from 1.
    bool mLineEnded = false; ///< The latest line has its line end.
    qint64 mTime = 0;
    qint64 mBackwardSteps = 0;
    qint64 mFirstBackward = 0;
    QString mProblem;
};

} // namespace bench
