// The arc tangent as a fixed quotient of polynomials.
#pragma once

#include "polynomials.h"

namespace qvr {

// atan(z) = (z + p z^3) / (1 + q z^2 + r z^4), fitted on [-1, 1].
inline constexpr _simd_splat<0x3EDCF805u> kTangentP;  // 0.43157974
inline constexpr _simd_splat<0x3F43B24Eu> kTangentQ;  // 0.76443946
inline constexpr _simd_splat<0x3D6EE04Du> kTangentR;  // 0.05831938

// What:   atan(r) where inside, else pi/2 - atan(1/r): the same angle for r >= 1, pi more for
//         r <= -1.
// Range:  inside must be all ones where |r| < 1 and zero elsewhere.
// Error:  7e-6.
// Edge:   infinities give pi/2; NaN gives NaN.
QVR_INLINE _vec4 arctangentFolded(_vec4 r, _vec4 inside) noexcept
{
    // r / 1 or 1 / r: where r is used as it is, it may be zero, and nothing is divided by that.
    _vec4 const exchange = bitAnd(bitXor(r, kOne), inside);
    _vec4 const z = bitXor(kOne, exchange) / bitXor(r, exchange);
    _vec4 const numerator = ((kTangentP * z) * z) * z + z;
    _vec4 const denominator = z * (z * (kTangentQ + (kTangentR * z) * z)) + kOne;
    _vec4 const angle = numerator / denominator;
    return select(inside, angle, kHalfPi - angle);
}

// What:   the angle of the point (den, num), in [-pi, pi].
// Range:  every pair but (0, 0).
// Error:  7e-6.
// Edge:   both zero, both infinite, or a NaN give NaN; signs are by comparison, so -0 counts as 0
//         and (-0 over a negative) is pi.
QVR_INLINE _vec4 arctangent2(_vec4 num, _vec4 den) noexcept
{
    _vec4 const r = num / den;
    _vec4 const inside = less(magnitude(r), kOne);
    _vec4 const below = less(num, zero());
    _vec4 const left = less(den, zero());

    // By how much the folded angle is too large. Inside: where den is negative, pi with the sign
    // that num has not. Outside: pi where num is negative. Elsewhere +0, which changes not even -0.
    _vec4 const differ = bitAnd(bitXor(left, below), inside);
    _vec4 const signedPi = bitXor(bitAnd(differ, kSignBits), kPi);
    return arctangentFolded(r, inside) - bitAnd(bitXor(differ, below), signedPi);
}

}  // namespace qvr
