// The keys of the live view: each is a step of the language.
#pragma once

#include "bench/wire/span.h"

namespace bench {

struct ViewKey
{
    char key;
    const char *help;
    const char *steps; ///< Several are separated by line feeds.
};

Span<ViewKey> viewKeys();

} // namespace bench
