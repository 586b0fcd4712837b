// Sine, cosine, arc cosine and arc sine as fixed polynomials: the same bits in every build.
//
// Angles are in radians; inside, circular functions count in turns, where reducing an angle is
// taking the nearest whole number off.
#pragma once

#include "products.h"

namespace qvr {

inline constexpr _simd_splat<0x3E22F983u> kTurnsPerRadian;  // 0.15915494: 1 / (2 pi)
inline constexpr _simd_splat<0x3E800000u> kQuarterTurn;     // 0.25
inline constexpr _simd_splat<0xBE800000u> kQuarterBack;     // -0.25
inline constexpr _simd_splat<0x3F800000u> kOne;             // 1
inline constexpr _simd_splat<0x3FC90FDBu> kHalfPi;          // 1.5707964: pi / 2
inline constexpr _simd_splat<0x40490FDBu> kPi;              // 3.1415927: pi

// sin(2 pi y) = y (k1 + y^2 (k3 + y^2 (k5 + y^2 k7))), fitted on a quarter turn to both sides. The
// first three are near the Taylor coefficients 2 pi, -(2 pi)^3 / 3! and (2 pi)^5 / 5!; the last
// takes up the rest of the series.
inline constexpr _simd_splat<0x40C90FDBu> kSine1;  // 6.2831855
inline constexpr _simd_splat<0xC2255B5Au> kSine3;  // -41.339211
inline constexpr _simd_splat<0x42A2C81Bu> kSine5;  // 81.390831
inline constexpr _simd_splat<0xC28EAF74u> kSine7;  // -71.342682

// acos(1 - u) = sqrt(2 u) (1 + u (k1 + u (k2 + u (k3 + u k4)))), fitted on [0, 1]. The first is
// near 1 / 12, the coefficient of the series at u = 0.
inline constexpr _simd_splat<0x3DAA7682u> kArc1;  // 0.08323385
inline constexpr _simd_splat<0x3CA6E318u> kArc2;  // 0.020371959
inline constexpr _simd_splat<0x3A4F4241u> kArc3;  // 0.00079062959
inline constexpr _simd_splat<0x3BCF3C0Eu> kArc4;  // 0.0063242977

// What:   the cosine of an angle in turns.
// Range:  turns in (-2^31, 2^31); beyond, the angle is not reduced and the value means nothing.
// Error:  1.7e-6; taking whole turns off adds nothing to it.
// Edge:   infinities and NaN give no finite value; even, and exactly 0 at odd quarter turns.
QVR_INLINE _vec4 cosOfTurns(_vec4 turns) noexcept
{
    _vec4 const y = kQuarterTurn - magnitude(turns - nearest(turns));
    _vec4 const yy = y * y;
    return y * (kSine1 + yy * (kSine3 + yy * (kSine5 + yy * kSine7)));
}

// What:   the sine of an angle in radians.
// Range:  |angle| below 2^31 turns.
// Error:  1.7e-6 on [-pi, pi]; further out the rounding of the angle itself grows with it.
// Edge:   0 gives +0 for both signs of zero; infinities and NaN give no finite value.
QVR_INLINE _vec4 sinPoly(_vec4 angle) noexcept
{
    return cosOfTurns(angle * kTurnsPerRadian + kQuarterBack);
}

// What:   the cosine of an angle in radians.
// Range:  |angle| below 2^31 turns.
// Error:  1.7e-6 on [-pi, pi]; further out the rounding of the angle itself grows with it.
// Edge:   0 gives exactly 1; infinities and NaN give no finite value.
QVR_INLINE _vec4 cosPoly(_vec4 angle) noexcept { return cosOfTurns(angle * kTurnsPerRadian); }

// What:   the arc sine of a magnitude, in [0, pi/2].
// Range:  [0, 1].
// Error:  2.25e-5.
// Edge:   0 gives exactly 0; x > 1 and NaN give NaN.
QVR_INLINE _vec4 asinOfMagnitude(_vec4 x) noexcept
{
    _vec4 const u = kOne - x;
    _vec4 const series = kOne + u * (kArc1 + u * (kArc2 + u * (kArc3 + u * kArc4)));
    return kHalfPi - squareRoot(u + u) * series;
}

// What:   the arc sine, in [-pi/2, pi/2].
// Range:  [-1, 1].
// Error:  2.25e-5.
// Edge:   the sign bit of x, that of -0 too, becomes the sign; |x| > 1 and NaN give NaN.
QVR_INLINE _vec4 asinPoly(_vec4 x) noexcept
{
    return bitXor(asinOfMagnitude(magnitude(x)), signOf(x));
}

// What:   the arc cosine, in [0, pi].
// Range:  [-1, 1].
// Error:  2.25e-5.
// Edge:   1 gives exactly 0; |x| > 1 and NaN give NaN.
QVR_INLINE _vec4 acosPoly(_vec4 x) noexcept { return kHalfPi - asinPoly(x); }

}  // namespace qvr
