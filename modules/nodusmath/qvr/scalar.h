// One lane: what C++ leaves open or undefined about a float, by the processor's instruction or by
// the bits.
#pragma once

#include "estimates.h"

#include <emmintrin.h>

#include <bit>
#include <concepts>
#include <cstdint>
#include <limits>

#define QVR_INLINE [[gnu::always_inline]] inline

namespace qvr {

// The sign bit alone: a NaN stays the same NaN, a zero changes its sign.
QVR_INLINE float negate(float v) noexcept
{
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(v) ^ 0x80000000u);
}
QVR_INLINE double negate(double v) noexcept
{
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) ^ 0x8000000000000000u);
}
QVR_INLINE float magnitude(float v) noexcept { return __builtin_fabsf(v); }
QVR_INLINE double magnitude(double v) noexcept { return __builtin_fabs(v); }

// v in lane 0 and anything in the others. g++ would clear those by way of an integer register.
QVR_INLINE __m128 inLane0(float v) noexcept
{
#ifdef __clang__
    return _mm_set_ss(v);
#else
    __m128 lanes;
    asm("" : "=x"(lanes) : "0"(v));
    return lanes;
#endif
}
QVR_INLINE __m128d inLane0(double v) noexcept
{
#ifdef __clang__
    return _mm_set_sd(v);
#else
    __m128d lanes;
    asm("" : "=x"(lanes) : "0"(v));
    return lanes;
#endif
}

// The comparisons of vec4.h for one lane: ordered, false for NaN, except notEqual, true for NaN.
template <typename T> QVR_INLINE bool equal(T a, T b) noexcept { return a == b; }
template <typename T> QVR_INLINE bool notEqual(T a, T b) noexcept { return a != b; }
template <typename T> QVR_INLINE bool less(T a, T b) noexcept { return a < b; }
template <typename T> QVR_INLINE bool lessEqual(T a, T b) noexcept { return a <= b; }
QVR_INLINE bool both(bool a, bool b) noexcept { return a && b; }
QVR_INLINE bool either(bool a, bool b) noexcept { return a || b; }

// The same value, of which the compiler no longer knows how it came about. g++ would otherwise
// trace what is known of a minimum with a constant into jumps.
template <std::floating_point T> QVR_INLINE T opaque(T v) noexcept
{
    asm("" : "+x"(v));
    return v;
}

// minss, maxss and their kin, which compilers make of exactly these expressions: a NaN on either
// side, and two zeros of either sign, give b.
template <std::floating_point T> QVR_INLINE T minimum(T a, T b) noexcept { return a < b ? a : b; }
template <std::floating_point T> QVR_INLINE T maximum(T a, T b) noexcept { return a > b ? a : b; }

// 1 when a < b, else +0, NaN included; a mask instead of a branch.
QVR_INLINE float oneIfLess(float a, float b) noexcept
{
    __m128 const mask = _mm_cmplt_ss(inLane0(a), inLane0(b));
    return _mm_cvtss_f32(_mm_and_ps(mask, _mm_set_ss(1.0f)));
}
QVR_INLINE double oneIfLess(double a, double b) noexcept
{
    __m128d const mask = _mm_cmplt_sd(inLane0(a), inLane0(b));
    return _mm_cvtsd_f64(_mm_and_pd(mask, _mm_set_sd(1.0)));
}

// result, but +0 when v is a zero of either sign.
QVR_INLINE float zeroForZero(float v, float result) noexcept
{
    __m128 const mask = _mm_cmpneq_ss(inLane0(v), _mm_setzero_ps());
    return _mm_cvtss_f32(_mm_and_ps(mask, inLane0(result)));
}
QVR_INLINE double zeroForZero(double v, double result) noexcept
{
    __m128d const mask = _mm_cmpneq_sd(inLane0(v), _mm_setzero_pd());
    return _mm_cvtsd_f64(_mm_and_pd(mask, inLane0(result)));
}

// To a 32-bit integer, ties to even or towards zero. What no such integer is near, NaN and the
// infinities among it, gives kNoInteger.
inline constexpr std::int32_t kNoInteger = std::numeric_limits<std::int32_t>::min();
QVR_INLINE std::int32_t toIntTruncating(float v) noexcept { return _mm_cvttss_si32(inLane0(v)); }
QVR_INLINE std::int32_t toIntTruncating(double v) noexcept { return _mm_cvttsd_si32(inLane0(v)); }

// Correctly rounded; NaN below zero, -0 for -0.
QVR_INLINE float squareRoot(float v) noexcept { return _mm_cvtss_f32(_mm_sqrt_ss(inLane0(v))); }
QVR_INLINE double squareRoot(double v) noexcept
{
    __m128d const lanes = inLane0(v);
    return _mm_cvtsd_f64(_mm_sqrt_sd(lanes, lanes));
}

// Whole numbers by way of such an integer; never -0.
QVR_INLINE __m128 nearestWhole(__m128 v) noexcept { return _mm_cvtepi32_ps(_mm_cvtps_epi32(v)); }
// -1 in lane 0 when it is less, else +0: the comparison's mask, read as an integer, is the number.
QVR_INLINE __m128 minusOneIfLess(__m128 a, __m128 b) noexcept
{
    return _mm_cvtepi32_ps(_mm_castps_si128(_mm_cmplt_ss(a, b)));
}
QVR_INLINE float wholeNearest(float v) noexcept { return _mm_cvtss_f32(nearestWhole(inLane0(v))); }
// The nearest is at most one off, and +0 added or taken away changes nothing.
QVR_INLINE float wholeBelow(float v) noexcept
{
    __m128 const lanes = inLane0(v), nearest = nearestWhole(lanes);
    return _mm_cvtss_f32(_mm_add_ss(minusOneIfLess(lanes, nearest), nearest));
}
QVR_INLINE float wholeAbove(float v) noexcept
{
    __m128 const lanes = inLane0(v), nearest = nearestWhole(lanes);
    return _mm_cvtss_f32(_mm_sub_ss(nearest, minusOneIfLess(nearest, lanes)));
}

// The estimate of 1 / sqrt(v), at most 1.5 * 2^-12 off, relative: an infinity of v's sign for zeros
// and subnormals, NaN below them, +0 for the infinity.
QVR_INLINE float reciprocalSquareRootEstimate(float v) noexcept
{
    return reciprocalSquareRootLane0(inLane0(v));
}

}  // namespace qvr
