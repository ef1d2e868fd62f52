// Recordings in the formats of other tools.
#pragma once

#include "bench/recording/trace.h"

#include <QIODevice>

namespace bench {

struct ExportOptions
{
    QString title;               ///< Of a page.
    QString plugin;              ///< For a page; empty: the plug-in of this build.
    std::optional<int> carModel; ///< For a page; none: the recording's, or 1.
};

/// Writes a recording as a log of CAN frames, as `candump -l` does: a chunk becomes one frame for
/// each 8 bytes. The identifier tells the rest, so that nothing is lost:
///   100 the first frame of a chunk from the box, 101 the frames that continue it,
///   200 and 201 the same to the box.
/// The port is the CAN interface.
/// \returns an empty text, or why \p out took no more. What was wrong in the recording is the
/// reader's to tell.
QString exportCandump(TraceReader &trace, QIODevice &out, const ExportOptions &options);

/// Writes a recording as a pcapng file of one section: a packet for each chunk, with its direction
/// in the packet flags (inbound is from the box), and an interface of link type USER0 (147) for
/// each port.
/// \returns as exportCandump(); more than 256 ports are an error.
QString exportPcapng(TraceReader &trace, QIODevice &out, const ExportOptions &options);

/// Takes the recording through the plug-in and writes a page of plots. A recording that is damaged
/// is plotted up to the damage, which the page tells.
/// \returns an empty text, or why there is no page.
QString exportHtml(TraceReader &trace, QIODevice &out, const ExportOptions &options);

} // namespace bench
