// A range of values from lowest to highest, both within.
#pragma once

#include <limits>

namespace qvr {

// Everything without limits; lowest > highest, or NaN at an end, is an empty range.
struct Range {
    double lowest = -std::numeric_limits<double>::infinity();
    double highest = std::numeric_limits<double>::infinity();
};

inline bool isEmpty(Range const& range) noexcept { return !(range.lowest <= range.highest); }

}  // namespace qvr
