// One direction of a recorded line, cut into what a person wants to see.
#pragma once

#include "framereader.h"

namespace bench {

struct LineItem
{
    enum Kind { Frame, BadChecksum, Incomplete, GoodReceipt, BadReceipt, Noise };

    Kind kind;
    quint8 dataType = 0; ///< Of a frame, be it good or bad.
    QByteArray bytes;    ///< A frame's payload; else the bytes on the line.
    quint8 received = 0; ///< Checksums of a bad frame.
    quint8 expected = 0;
};

/// Neighbouring noise bytes of a chunk are one item. A frame that stays open for 500 ms beyond the
/// chunk after it is given up, as the service does.
class LineCutter : public QObject
{
    Q_OBJECT

public:
    /// \param hasReceipts whether 0xFF and 0xF0 between frames mean something in this direction.
    explicit LineCutter(bool hasReceipts, QObject *parent = nullptr);

    /// A chunk at \p time, in microseconds. Its items come from the two below.
    void take(const QByteArray &bytes, qint64 time);
    /// Cuts to the end of the next frame, good or bad.
    void cutFrame();
    /// Cuts all there is.
    void cutAll();
    /// No more bytes come.
    void finish();

    LineCounts counts() const;

signals:
    void item(const bench::LineItem &item);

private:
    void cutByte();
    void flushNoise();
    void giveUp();

    const bool mHasReceipts;
    FrameReader mReader;
    QByteArray mWaiting;
    QByteArray mOpen; ///< The bytes of the frame that is open.
    QByteArray mNoise;
    qint64 mGiveUpAt = -1;
    bool mFrameEnded = false;
};

} // namespace bench
