// One direction of the serial line, cut into frames, receipts and noise.
#pragma once

#include "protocol/frame.h"

#include <QByteArray>
#include <QMap>
#include <QObject>

namespace bench {

/// What one direction of the line has carried.
struct LineCounts
{
    QMap<quint8, qint64> frames; ///< Good frames by data type.
    qint64 badChecksums = 0;
    qint64 goodReceipts = 0; ///< 0xFF between frames.
    qint64 badReceipts = 0;  ///< 0xF0 between frames.
    qint64 noiseBytes = 0;   ///< Any other byte between frames.

    qint64 frameTotal() const;
};

struct LineItem
{
    enum Kind { Frame, BadChecksum, Incomplete, GoodReceipt, BadReceipt, Noise };

    Kind kind;
    quint8 dataType = 0; ///< Of a frame, good, bad or incomplete.
    QByteArray bytes;    ///< A frame's payload; else the bytes on the line.
    quint8 received = 0; ///< Checksums of a bad frame.
    quint8 expected = 0;
};

/// The one reader of the line, by the rules of who listens there. Chunks have no relation to
/// frames; neighbouring noise bytes of a chunk are one item.
class LineCutter : public QObject
{
    Q_OBJECT

public:
    enum Listener {
        /// As the service reads what comes from the box: receipts mean nothing; a frame that is
        /// open when a chunk comes is given up 500 ms later, unless a good frame ends before; a
        /// frame of length 0 never ends and swallows what follows.
        Host,
        /// As a box reads what comes from the host: receipts count, a frame may be without payload,
        /// and one is given up after 500 ms without a byte.
        Box,
    };

    explicit LineCutter(Listener listener, QObject *parent = nullptr);

    /// A chunk at \p time, in microseconds, and all of its items.
    void feed(const QByteArray &bytes, qint64 time);
    /// A chunk whose items come from cutFrame() and cutAll().
    void take(const QByteArray &bytes, qint64 time);
    /// Cuts to the end of the next frame, good or bad.
    void cutFrame();
    void cutAll();
    /// No more bytes come: cuts all, and gives up a frame that is open.
    void finish();
    /// The line was interrupted: forgets a frame that is open.
    void reset();

    bool isFrameOpen() const { return !mOpen.isEmpty(); }
    const LineCounts &counts() const { return mCounts; }

signals:
    void item(const bench::LineItem &item);

private:
    bool cutNext();
    void cutBetweenFrames(quint8 byte);
    int missingBytes() const;
    void endFrame();
    void flushNoise();
    void giveUp();

    const Listener mListener;
    QByteArray mChunk; ///< From mNext on still to be cut.
    int mNext = 0;
    QByteArray mOpen; ///< The bytes of the frame that is open, from its head on.
    QByteArray mNoise;
    qint64 mLastByte = 0;  ///< When the latest chunk came.
    qint64 mGiveUpAt = -1; ///< When the host gives up; -1 for not.
    LineCounts mCounts;
};

} // namespace bench
