// Recordings of the serial line: text, a chunk of bytes a line.
//
//   (<seconds>.<6 digits>) <port> <R|T> <HEX>
//
// R is from the box, T is to it. Blank lines and lines that begin with # carry nothing.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>
#include <optional>

namespace bench {

/// What one read or one write carried.
struct TraceLine
{
    qint64 time = 0; ///< Microseconds. A recording counts from 1970; any other start will do.
    QByteArray port; ///< Printable ASCII without blanks.
    bool fromBox = true;
    QByteArray bytes; ///< 1 to kMaxTraceBytes.
};

/// The car that was selected in the head unit, from the comment `# car model 22 index 7`.
struct TraceCar
{
    int model;
    int index;
};

constexpr int kMaxTraceBytes = 4096;
constexpr int kMaxTracePort = 255;
constexpr int kMaxTraceText = 2 * kMaxTraceBytes + kMaxTracePort + 32;

/// The line with its line end.
QByteArray traceText(const TraceLine &line);

/// The comment without its line end.
QByteArray traceText(const TraceCar &car);

class PcapngReader;

/// Reads a recording line by line, whatever the file holds, in memory that does not grow with it.
/// What `export` made of a recording is one, too.
class TraceReader
{
public:
    enum Content {
        Recording,
        RawBytes, ///< Of the box, without times.
    };

    /// Opens \p file; `-` is the standard input.
    explicit TraceReader(const QString &file, Content content = Recording);
    ~TraceReader();

    /// \returns false at the end and at the first error, which problem() tells then.
    bool next(TraceLine *line);
    /// Back to the first line, with all being well. \returns false for a file that cannot go back,
    /// such as a pipe.
    bool rewind();

    /// Whether the next line may be still to come, from a pipe.
    bool isWaiting() const { return mFile.isSequential() && mFile.bytesAvailable() == 0; }
    /// How much of the file is read, 0 to 1; -1 for a pipe.
    double progress() const;
    /// `FILE:LINE: ...`; empty while all is well.
    QString problem() const { return mProblem; }
    /// What is strange and yet can be read; empty for nothing.
    QString note() const;
    /// The car of the recording, if a comment before its first line tells.
    const std::optional<TraceCar> &car() const { return mCar; }

private:
    bool read(TraceLine *line);
    bool readPacket(TraceLine *line);
    bool readRaw(TraceLine *line);
    bool isInOrder(const TraceLine &line);
    void readComment(const QByteArray &text);
    bool readText();
    bool fail(const QString &what);

    const QString mName;
    const Content mContent;
    QFile mFile;
    std::unique_ptr<PcapngReader> mPackets; ///< Null for a text.
    char mText[kMaxTraceText +
               3]; ///< A line: one byte more than a good one, its end, and Qt's mark.
    qint64 mSize = 0;
    std::optional<TraceLine> mAhead; ///< The first line, read with what is before it.
    std::optional<TraceCar> mCar;
    qint64 mNumber = 0;      ///< Of the latest line, counted from 1.
    bool mLineEnded = false; ///< The latest line has its line end.
    qint64 mTime = 0;
    qint64 mBackwardSteps = 0;
    qint64 mFirstBackward = 0;
    QString mProblem;
};

} // namespace bench
