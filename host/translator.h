// The host's texts by number.
#pragma once

#include "hostexport.h"

#include <QString>

class CANSERVICE_EXPORT Translator
{
public:
    /// The text with the given id in the host's language; empty for an unknown id.
    static QString translate(int id);
};
