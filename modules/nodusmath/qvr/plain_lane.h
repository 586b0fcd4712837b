// The operations of processor.h on one lane in plain C++: for any processor, and for loops over
// many lanes, of which compilers make vectors. x86_64.h says what each of them is.
#pragma once

#include "exact.h"

#include <concepts>
#include <cstdint>
#include <limits>

namespace qvr {

// Of a conversion to an integer and back g++ makes a truncation, whose zeros have the number's
// sign: there is no such pair here where that sign would show.

inline constexpr std::int32_t kNoInteger = std::numeric_limits<std::int32_t>::min();

// Of both types: what is inside, kNoInteger included, and no NaN.
template <std::floating_point T> QVR_INLINE bool hasInteger(T v) noexcept
{
    return T{-0x1p31} - 1 < v && v < T{0x1p31};
}
template <std::floating_point T> QVR_INLINE std::int32_t toIntTruncating(T v) noexcept
{
    return hasInteger(v) ? static_cast<std::int32_t>(v) : kNoInteger;
}
template <std::floating_point T> QVR_INLINE T opaque(T v) noexcept { return v; }
QVR_INLINE float squareRoot(float v) noexcept { return __builtin_sqrtf(v); }
QVR_INLINE double squareRoot(double v) noexcept { return __builtin_sqrt(v); }
template <std::floating_point T> QVR_INLINE T signum(T v) noexcept
{
    return static_cast<T>((v > 0) - (v < 0));
}
template <std::floating_point T> QVR_INLINE T withoutWhole(T v) noexcept
{
    return v == 0 ? v : v - static_cast<T>(toIntTruncating(v));
}
#if defined(QVR_PLAIN_LANES) && defined(__x86_64__)
// By the conversion of the processor, which g++ has for vectors, too.
QVR_INLINE float wholeNearest(float v) noexcept { return static_cast<float>(__builtin_irintf(v)); }
#else
// Ties to even: from 2^23 on every float is whole, and below a sum with that is rounded to one.
QVR_INLINE float wholeNearest(float v) noexcept
{
    float const size = __builtin_fabsf(v);
    float const whole = size < 0x1p23f ? (size + 0x1p23f) - 0x1p23f : size;
    return hasInteger(v) ? __builtin_copysignf(whole, v) + 0.0f : -0x1p31f;
}
#endif
QVR_INLINE float wholeBelow(float v) noexcept
{
    float const nearest = wholeNearest(v);
    return v < nearest ? nearest - 1 : nearest;
}
QVR_INLINE float wholeAbove(float v) noexcept
{
    float const nearest = wholeNearest(v);
    return nearest < v ? nearest + 1 : nearest;
}

}  // namespace qvr
