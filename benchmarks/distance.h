// How far a peer's results are from the kernel's: who computes something else cannot be compared.
#pragma once

#include "cases.h"

namespace nodus::bench {

// The largest difference of any lane of any output: as a number, and in units in the last place of
// the lane's type (which means little near zero). Both are kIncomparable when one side has a NaN
// where the other has none.
struct Distance {
    double absolute, ulps;
};
inline constexpr double kIncomparable = 1e99;

// Over a fixed set of inputs. A Quaternion is as near as the nearer of q and -q, which are one
// rotation. Both functions take two pointers.
Distance distanceBetween(Case const& what, void* kernel, void* peer);

}  // namespace nodus::bench
