// Recordings that were exported as pcapng, read again.
#pragma once

#include "bench/recording/trace.h"

#include <QIODevice>
#include <QVector>

namespace bench {

/// Whether a file that begins so is a pcapng file.
bool isPcapng(const QByteArray &firstFour);

/// Reads packets of link type USER0 with their direction in the flags, as exportPcapng() writes
/// them: a packet is a chunk. Blocks of other kinds are passed over.
class PcapngReader
{
public:
    /// \returns false at the end, and when \p problem is set.
    bool next(QIODevice &file, TraceLine *line, QString *problem);
    /// Of the latest section.
    const QByteArray &comment() const { return mComment; }
    /// The file is read from its beginning again.
    void restart() { mPorts.clear(); }

private:
    QString takeInterface(const QByteArray &body);
    QString takePacket(const QByteArray &body, TraceLine *line) const;

    QVector<QByteArray> mPorts; ///< By number of the interface.
    QByteArray mComment;
};

} // namespace bench
