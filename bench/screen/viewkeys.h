// The keys of the live view, one table for what they do and for the help that lists them.
#pragma once

#include "session.h"

namespace bench {

struct ViewKey
{
    char key;
    const char *help;
    void (*act)(Session &session);
    bool needsBox; ///< Acts on the embedded box or its car, which a real device has not.
};

int viewKeyCount();
const ViewKey &viewKey(int index);
/// Null for a key that does nothing.
const ViewKey *findViewKey(char key);

} // namespace bench
