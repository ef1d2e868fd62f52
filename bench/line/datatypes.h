// The names of the frames, for a person to read.
#pragma once

#include <QString>

namespace bench {

/// `climate` for 0x21; "unknown" for a data type that the box does not send.
QString inboundName(quint8 dataType);
/// `climate command` for 0xC6; "unknown" for a data type that the service does not send.
QString outboundName(quint8 dataType);

/// `0x21`.
QString hexByte(quint8 byte);

} // namespace bench
