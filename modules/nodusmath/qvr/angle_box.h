// The rotation nearest to another among those whose angles lie in ranges.
#pragma once

#include "range.h"
#include "rotation.h"
#include "scalar.h"

#include <cstdint>

namespace qvr::angleBox {

// Ends farther away than this are no ends: sines of such angles mean nothing.
inline constexpr double kFarthest = 0x1p19;
inline Range withUsableEnds(Range const& range) noexcept
{
    Range usable;
    if (magnitude(range.lowest) <= kFarthest)
        usable.lowest = range.lowest;
    if (magnitude(range.highest) <= kFarthest)
        usable.highest = range.highest;
    return usable;
}

// Whether there is nothing outside, where a period has so many turns.
inline bool isWhole(Range const& range, double turns = 1) noexcept
{
    return range.highest - range.lowest >= turns * (2 * kPiDouble);
}

// Brings an angle into a range with usable ends by whole periods of so many turns, and says whether
// there are such.
bool bringInto(Range const& range, double& angle, double turns = 1) noexcept;

// Ranges with usable ends of the angles about X, Y and Z, none of them empty.
struct Box {
    std::int32_t order;
    Range ranges[3];
};

// What is no farther outside than this many radians is inside.
inline constexpr double kInside = 0x1p-48;

// The angle triple in the ranges whose rotation is nearest to a unit quaternion.
Eulerd nearestAngles(Box const& box, Quatd const& q) noexcept;

}  // namespace qvr::angleBox
