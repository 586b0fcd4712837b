// One lane: what C++ leaves open or undefined about a float, by the processor's instruction or by
// the bits.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstdint>

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
QVR_INLINE float magnitude(float v) noexcept
{
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(v) & 0x7FFFFFFFu);
}
QVR_INLINE double magnitude(double v) noexcept
{
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) & 0x7FFFFFFFFFFFFFFFu);
}

}  // namespace qvr
