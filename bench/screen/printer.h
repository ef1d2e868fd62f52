// Events and summaries on standard output, as lines of text or of JSON.
#pragma once

#include "session.h"

namespace bench {

/// An event in one line: the time, its name, and what it means or what changed with it.
QString eventLine(const Event &event, const Snapshot &state);

class EventPrinter
{
public:
    enum Format { Text, Json };

    explicit EventPrinter(Format format)
        : mFormat(format)
    {
    }

    /// Leaves out link codes that only repeat the one before.
    void setTerse(bool on) { mTerse = on; }

    /// One line, at once. \p state is the state after the event.
    void print(const Event &event, const Snapshot &state);
    /// A heading between events; nothing in JSON.
    void heading(const QString &text);
    void print(const Summary &summary, double seconds);
    /// Further counts under a name.
    void print(const QString &name, const QVector<QPair<QString, qint64>> &counts);

private:
    void write(const QString &line);
    void printText(const Summary &summary, double seconds);
    void writeFrames(const char *what, const LineCounts &counts, QString (*nameOf)(quint8));
    void writeCount(int indent, const QString &what, qint64 count);
    void printJson(const Summary &summary, double seconds);

    const Format mFormat;
    bool mTerse = false;
    int mLinkCode = -1;
};

} // namespace bench
