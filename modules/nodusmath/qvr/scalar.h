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

// -1, +0 or 1; +0 for zeros and NaN. The masks of the comparisons, read as integers, are -1 and 0:
// no sum of floats, whose zero would have its sign from the rounding mode.
QVR_INLINE float signum(float v) noexcept
{
    __m128 const lanes = inLane0(v), zero = _mm_setzero_ps();
    __m128i const below = _mm_castps_si128(_mm_cmplt_ss(lanes, zero));
    __m128i const above = _mm_castps_si128(_mm_cmplt_ss(zero, lanes));
    return _mm_cvtss_f32(_mm_cvtepi32_ps(_mm_sub_epi32(below, above)));
}
QVR_INLINE double signum(double v) noexcept
{
    __m128d const lanes = inLane0(v), zero = _mm_setzero_pd();
    __m128i const below = _mm_castpd_si128(_mm_cmplt_sd(lanes, zero));
    __m128i const above = _mm_castpd_si128(_mm_cmplt_sd(zero, lanes));
    return _mm_cvtsd_f64(_mm_cvtepi32_pd(_mm_sub_epi32(below, above)));
}

// A zero of either sign, by the bits: one test instead of an ordered and an unordered one.
QVR_INLINE bool isZero(float v) noexcept { return std::bit_cast<std::uint32_t>(v) << 1 == 0; }
QVR_INLINE bool isZero(double v) noexcept { return std::bit_cast<std::uint64_t>(v) << 1 == 0; }

// To a 32-bit integer, ties to even or towards zero. What no such integer is near, NaN and the
// infinities among it, gives kNoInteger.
inline constexpr std::int32_t kNoInteger = std::numeric_limits<std::int32_t>::min();
QVR_INLINE std::int32_t toIntTruncating(float v) noexcept { return _mm_cvttss_si32(_mm_set_ss(v)); }

// What is left of v without the whole part, by way of such an integer: +0 for whole numbers.
QVR_INLINE float withoutWhole(float v) noexcept
{
    __m128 const lanes = _mm_set_ss(v);
    return _mm_cvtss_f32(_mm_sub_ss(lanes, _mm_cvtepi32_ps(_mm_cvttps_epi32(lanes))));
}
QVR_INLINE double withoutWhole(double v) noexcept
{
    __m128d const lanes = _mm_set_sd(v);
    return _mm_cvtsd_f64(_mm_sub_sd(lanes, _mm_cvtepi32_pd(_mm_cvttpd_epi32(lanes))));
}

// Correctly rounded; NaN below zero, -0 for -0.
QVR_INLINE float squareRoot(float v) noexcept { return _mm_cvtss_f32(_mm_sqrt_ss(inLane0(v))); }
QVR_INLINE double squareRoot(double v) noexcept
{
    __m128d const lanes = inLane0(v);
    return _mm_cvtsd_f64(_mm_sqrt_sd(lanes, lanes));
}

// Whole numbers by way of such an integer; never -0. The nearest is at most one off.
QVR_INLINE float wholeNearest(float v) noexcept
{
    return _mm_cvtss_f32(_mm_cvtepi32_ps(_mm_cvtps_epi32(inLane0(v))));
}
QVR_INLINE float wholeBelow(float v) noexcept
{
    // In floats, where one less than kNoInteger does not wrap around. The comparison's mask, read
    // as an integer, is the -1 that is wanted.
    __m128 const lanes = inLane0(v), nearest = _mm_cvtepi32_ps(_mm_cvtps_epi32(lanes));
    __m128i const over = _mm_castps_si128(_mm_cmplt_ss(lanes, nearest));
    return _mm_cvtss_f32(_mm_add_ss(_mm_cvtepi32_ps(over), nearest));
}
QVR_INLINE float wholeAbove(float v) noexcept
{
    // One more than kNoInteger is rounded to the same float again.
    __m128 const lanes = inLane0(v);
    __m128i const nearest = _mm_cvtps_epi32(lanes);
    __m128i const under = _mm_castps_si128(_mm_cmplt_ss(_mm_cvtepi32_ps(nearest), lanes));
    return _mm_cvtss_f32(_mm_cvtepi32_ps(_mm_sub_epi32(nearest, under)));
}

// The estimate of 1 / sqrt(v), at most 1.5 * 2^-12 off, relative: an infinity of v's sign for zeros
// and subnormals, NaN below them, +0 for the infinity.
QVR_INLINE float reciprocalSquareRootEstimate(float v) noexcept
{
    return reciprocalSquareRootLane0(inLane0(v));
}

}  // namespace qvr
