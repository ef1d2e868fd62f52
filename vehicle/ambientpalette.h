// The box's ambient colour codes and the host's colour indices, one table for both directions.
#pragma once

#include "plugin/idset.h"

#include <array>

namespace canservice {

/// The colours of one car: both codes and indices are 0 to 7.
struct AmbientPalette
{
    std::array<quint8, 8> indexOfCode;

    /// The host's index for the box's code; 0 for a code that no car has.
    constexpr quint8 indexOf(unsigned code) const
    {
        return code < indexOfCode.size() ? indexOfCode[code] : 0;
    }

    /// The box's code for the host's index; 0 for an index that no car has.
    constexpr quint8 codeOf(unsigned index) const
    {
        for (unsigned code = 0; code < indexOfCode.size(); ++code)
            if (indexOfCode[code] == index)
                return static_cast<quint8>(code);
        return 0;
    }

    /// Whether the two directions are inverse.
    constexpr bool isPermutation() const
    {
        for (unsigned code = 0; code < indexOfCode.size(); ++code)
            if (indexOfCode[code] >= indexOfCode.size() || codeOf(indexOfCode[code]) != code)
                return false;
        return true;
    }
};

/// Models with a palette of their own.
constexpr ModelSet kOwnPaletteModels{97, 98, 99, 100, 101, 102};

constexpr AmbientPalette kOwnPalette{{7, 6, 1, 5, 3, 0, 2, 4}};
constexpr AmbientPalette kCommonPalette{{7, 1, 3, 2, 4, 5, 0, 6}};
static_assert(kOwnPalette.isPermutation() && kCommonPalette.isPermutation());

} // namespace canservice
