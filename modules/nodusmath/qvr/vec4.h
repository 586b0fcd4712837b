// Four single-precision lanes: constants, and operations made of those of processor.h, where the
// others stand. The lanes are called x, y, z and w, or 0 to 3, in memory order.
#pragma once

#include "processor.h"
#include "scalar.h"

#include <cstdint>

namespace qvr {

static_assert(sizeof(_vec4) == 16);
static_assert(alignof(_vec4) == 16);

// A constant by its four bit patterns, from lane 0 to lane 3; one object for each distinct pattern.
template <std::uint32_t x, std::uint32_t y, std::uint32_t z, std::uint32_t w> class _simd_const {
public:
    QVR_INLINE operator _vec4() const noexcept { return patterns<x, y, z, w>(s_bits); }

private:
    // Nothing writes them, yet they are not const: GCC replaces a const whose lanes are equal by a
    // scalar load and a shuffle at every use, where a plain memory operand would do.
    alignas(16) static inline constinit std::uint32_t s_bits[4] = {x, y, z, w};
};
template <std::uint32_t bits> using _simd_splat = _simd_const<bits, bits, bits, bits>;

inline constexpr _simd_splat<0x80000000u> kSignBits;
inline constexpr _simd_splat<0x7FFFFFFFu> kMagnitudeBits;
inline constexpr _simd_const<0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0u> kVectorLanes;
inline constexpr _simd_const<0u, 0u, 0u, 0x3F800000u> kIdentity;  // 1 in w, and the quaternion

// One number in every lane of a float or of four, for formulas that serve both.
template <typename Lanes> Lanes splat(float value) noexcept = delete;
template <> QVR_INLINE float splat<float>(float value) noexcept { return value; }
template <> QVR_INLINE _vec4 splat<_vec4>(float value) noexcept { return broadcast(value); }
template <int lane> QVR_INLINE _vec4 broadcastLane(_vec4 v) noexcept
{
    return shuffle<lane, lane, lane, lane>(v);
}

QVR_INLINE _vec4 operator*(_vec4 v, float scalar) noexcept { return v * broadcast(scalar); }

// Sign bits only: NaN and zero lanes keep everything else.
QVR_INLINE _vec4 signOf(_vec4 v) noexcept { return bitAnd(v, kSignBits); }
QVR_INLINE _vec4 negate(_vec4 v) noexcept { return bitXor(v, kSignBits); }
QVR_INLINE _vec4 magnitude(_vec4 v) noexcept { return bitAnd(v, kMagnitudeBits); }

// Of lane masks.
QVR_INLINE _vec4 both(_vec4 a, _vec4 b) noexcept { return bitAnd(a, b); }
QVR_INLINE _vec4 either(_vec4 a, _vec4 b) noexcept { return bitOr(a, b); }
// The bits of a where mask has ones, those of b elsewhere.
QVR_INLINE _vec4 select(_vec4 mask, _vec4 a, _vec4 b) noexcept
{
    return bitXor(bitAnd(bitXor(a, b), mask), b);
}

}  // namespace qvr
