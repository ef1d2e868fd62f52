// The host's texts by number.
#pragma once

#include "hostexport.h"

#include <QString>

/// The host's texts by number. A service asks for units: 339, 989, 990, 992, 993, 997, 1002, 1006,
/// 1007.
class CANSERVICE_EXPORT Translator
{
public:
    /// The text with the given id in the host's language; empty for an unknown id.
    static QString translate(int id);
};
