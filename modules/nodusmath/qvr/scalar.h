// One lane: operations beside those of processor.h, under the names that four lanes have.
#pragma once

#include "processor.h"

#include <bit>
#include <concepts>
#include <cstdint>

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

// A zero of either sign, by the bits: one test instead of an ordered and an unordered one.
QVR_INLINE bool isZero(float v) noexcept { return std::bit_cast<std::uint32_t>(v) << 1 == 0; }
QVR_INLINE bool isZero(double v) noexcept { return std::bit_cast<std::uint64_t>(v) << 1 == 0; }

// Comparisons: ordered, false for NaN, except notEqual, true for NaN.
template <typename T> QVR_INLINE bool equal(T a, T b) noexcept { return a == b; }
template <typename T> QVR_INLINE bool notEqual(T a, T b) noexcept { return a != b; }
template <typename T> QVR_INLINE bool less(T a, T b) noexcept { return a < b; }
template <typename T> QVR_INLINE bool lessEqual(T a, T b) noexcept { return a <= b; }
QVR_INLINE bool both(bool a, bool b) noexcept { return a && b; }
QVR_INLINE bool either(bool a, bool b) noexcept { return a || b; }

// The processor's minimum and maximum, which compilers make of exactly these expressions: a NaN on
// either side, and two zeros of either sign, give b.
template <std::floating_point T> QVR_INLINE T minimum(T a, T b) noexcept { return a < b ? a : b; }
template <std::floating_point T> QVR_INLINE T maximum(T a, T b) noexcept { return a > b ? a : b; }

}  // namespace qvr
