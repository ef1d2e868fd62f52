// Events, frames and summaries on standard output: lines for a person, JSON or CSV for a program.
#pragma once

#include "bench/headunit/session.h"
#include "bench/screen/jsonline.h"

#include <functional>

namespace bench {

/// The climate in one line: `on, 21.5 °C | 22 °C, fan 3, mode 1, auto`.
QString climateLine(const StateWatch &state);
/// An event in one line: the time, its name, and what it means or what changed with it.
QString eventLine(const Event &event, const StateWatch &state);

/// What a line of JSON has for a program.
using Members = QVector<QPair<const char *, Value>>;

class Printer
{
public:
    enum Format { Text, Json, Csv };
    using Sink = std::function<void(const QByteArray &line)>;

    /// CSV begins with its head line, when the first row is written.
    /// \param sink gets what would go to standard output.
    explicit Printer(Format format, Sink sink = {})
        : mFormat(format)
        , mSink(std::move(sink))
    {
    }

    Format format() const { return mFormat; }
    /// Leaves out link codes that only repeat the one before.
    void setTerse(bool on) { mTerse = on; }
    /// Whether each line of text and each event goes out at once, for whoever follows; else lines
    /// go out as the buffer fills. On at first.
    void setLive(bool on) { mLive = on; }
    /// The moment from which seconds count, in microseconds since 1970.
    void setOrigin(qint64 microseconds) { mOrigin = microseconds; }

    /// \p state is the state after the event.
    void print(const Event &event, const StateWatch &state);
    /// Something on the line, with what it says where that is known.
    void print(bool fromBox, const LineItem &item, double seconds, const QString &meaning = {});
    /// Something else: \p text for a person, \p members for a program.
    void note(double seconds, const char *source, const QString &text, const Members &members);
    /// A heading between events.
    void heading(const QString &text, double seconds);
    /// An outcome: text for a person, and its members for a program.
    void outcome(const QString &text, const Members &members);
    void print(const Summary &summary, double seconds);
    /// Further counts under a name.
    void print(const char *name, const QVector<QPair<QString, qint64>> &counts);

private:
    void put(std::string_view lines);
    void put(const QString &line);
    void putBytes(std::string_view lines);
    bool isRepetition(const Event &event);
    void printJson(const Event &event);
    void printCsv(const Event &event);
    void printText(bool fromBox, const LineItem &item, double seconds, const QString &meaning);
    void printJson(bool fromBox, const LineItem &item, double seconds, const QString &meaning);
    void beginRow(double seconds, const char *source, const char *kind);
    void endRow();
    void printText(const Summary &summary, double seconds);
    void printFrames(const char *what, const LineCounts &counts, bool fromBox);
    void printCount(int indent, const QString &what, qint64 count);
    void printJson(const Summary &summary, double seconds);
    JsonLine &beginJson(double seconds);

    const Format mFormat;
    const Sink mSink;
    bool mTerse = false;
    bool mHasHead = false;
    int mLinkCode = -1;
    qint64 mOrigin = 0;
    bool mLive = true;
    JsonLine mJson;
    std::string mLine; ///< Used again for each line.
};

} // namespace bench
