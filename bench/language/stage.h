// Who is there to be acted on.
#pragma once

#include "bench/headunit/session.h"
#include "bench/language/steps.h"

namespace bench {

/// A step needs one of them, or both.
struct Stage
{
    Session *host = nullptr; ///< Our own host; null where the host is somebody else's.
    BoxEnd *box = nullptr;   ///< The virtual box; null where the box is real.

    Stage() = default;
    explicit Stage(Session &session)
        : host(&session)
        , box(session.boxEnd())
    {
    }
    Stage(Session *theHost, BoxEnd *theBox)
        : host(theHost)
        , box(theBox)
    {
    }

    int present() const { return (host ? NeedsHost : Nobody) | (box ? NeedsBox : Nobody); }
    /// Everything that was sent has arrived and was answered.
    bool isQuiet() const
    {
        return host ? host->isQuiet() : !box || !box->isPlugged() || box->isQuiet();
    }
};

} // namespace bench
