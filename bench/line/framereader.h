// What goes over one direction of the serial line, cut into frames, receipts and noise.
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

/// Reads a byte stream of either direction; chunks have no relation to frames. A frame without
/// payload is a frame here, so that tools can show it.
class FrameReader : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void feed(const QByteArray &bytes);
    /// Gives up a frame that is open.
    void reset() { mState = Idle; }
    bool isFrameOpen() const { return mState != Idle; }
    const LineCounts &counts() const { return mCounts; }

signals:
    void frame(quint8 dataType, const QByteArray &payload);
    /// A frame whose checksum byte was \p received instead of \p expected.
    void badFrame(quint8 dataType, const QByteArray &payload, quint8 received, quint8 expected);
    void receipt(bool good);
    void noise(quint8 byte);

private:
    enum State { Idle, DataType, Length, Payload, CheckSum };

    void feedByte(quint8 byte);
    void betweenFrames(quint8 byte);
    void finish(quint8 received);

    State mState = Idle;
    quint8 mDataType = 0;
    int mLength = 0;
    QByteArray mPayload;
    LineCounts mCounts;
};

} // namespace bench
