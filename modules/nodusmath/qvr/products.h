// Sums of products: the dot product, the cross product, and the normalisation that they carry.
#pragma once

#include "estimates.h"

namespace qvr {

inline constexpr _simd_splat<0x3F000000u> kHalf;   // 0.5
inline constexpr _simd_splat<0x40400000u> kThree;  // 3

// What:   a . b over all four lanes, in every lane; lanes x and z sum it as (p0 + p1) + (p2 + p3),
//         lanes y and w as (p1 + p2) + (p3 + p0), so neighbours may differ in the last bit.
// Range:  every input; nothing guards the squares against overflow or underflow.
// Error:  a rounding of each product and two of sums: 3 * 2^-24 of |a| |b|.
// Edge:   a NaN, or infinities that cancel, in any lane gives NaN in every lane.
QVR_INLINE _vec4 dot4(_vec4 a, _vec4 b) noexcept
{
    _vec4 const products = a * b;
    _vec4 const pairs = products + shuffle<1, 2, 3, 0>(products);
    return pairs + shuffle<2, 3, 0, 1>(pairs);
}

// What:   a x b in x, y and z; every product is rounded before the difference.
// Range:  every input; w lanes never reach x, y or z.
// Error:  three roundings, and cancellation between nearly parallel vectors.
// Edge:   w is a.w * b.w - a.w * b.w: +0, or NaN when that product is not finite.
QVR_INLINE _vec4 cross(_vec4 a, _vec4 b) noexcept
{
    _vec4 const zxy = a * shuffle<1, 2, 0, 3>(b) - shuffle<1, 2, 0, 3>(a) * b;
    return shuffle<1, 2, 0, 3>(zxy);
}

// What:   v over its length, by the processor's estimate and one Newton step.
// Range:  squared lengths from 2^-126, the smallest normal number, to below 2^128.
// Error:  the length is 1 within 3e-7, most of it the square of the estimate's error.
// Edge:   no zero test: a squared length of 0 or infinity, or a NaN, gives NaN in all four lanes.
QVR_INLINE _vec4 normalizeFast(_vec4 v) noexcept
{
    _vec4 const squaredLength = dot4(v, v);
    _vec4 const e = reciprocalSquareRootEstimate(squaredLength);
    _vec4 const refined = (e * (kThree - (e * e) * squaredLength)) * kHalf;
    return v * refined;
}

}  // namespace qvr
