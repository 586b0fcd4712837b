// Rotations as quaternions: x, y, z the vector part, w the scalar part, (0, 0, 0, 1) no rotation.
// A unit quaternion q rotates v as q v q*, so of a product the right factor is applied first.
#pragma once

#include "qvr/polynomials.h"
#include "qvr/products.h"

namespace qvr {

inline constexpr _simd_const<0x80000000u, 0x80000000u, 0x80000000u, 0u> kVectorSigns;

// What:   the bare product of two quaternions, not normalised.
// Range:  every input.
// Error:  each lane one rounding a product and one a sum, always in the order written here.
// Edge:   x, y and z are summed with opposite signs and flipped at the end, so that all four lanes
//         subtract alike: where all terms of one cancel to zero, it is -0.
QVR_INLINE _vec4 hamiltonProduct(_vec4 a, _vec4 b) noexcept
{
    _vec4 sum = shuffle<2, 0, 1, 3>(a) * shuffle<1, 2, 0, 3>(b);
    sum = sum - shuffle<1, 3, 2, 0>(a) * shuffle<2, 1, 3, 0>(b);
    sum = sum - shuffle<3, 1, 0, 2>(a) * shuffle<0, 3, 1, 2>(b);
    sum = sum - shuffle<0, 2, 3, 1>(a) * shuffle<3, 0, 2, 1>(b);
    return bitXor(sum, kVectorSigns);
}

// The opposite rotation of a unit quaternion; by the sign bits, so 0 becomes -0.
QVR_INLINE _vec4 conjugate(_vec4 q) noexcept { return bitXor(q, kVectorSigns); }

}  // namespace qvr
