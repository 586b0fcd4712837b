// Four 32-bit integers beside four floats: conversions both ways, and lanes as table indices.
#pragma once

#include "vec4.h"

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace qvr {

struct IntegerLanes {
    __m128i lanes;
};

// Rounded to nearest, as each conversion of an integer to a float is.
QVR_INLINE _vec4 toFloats(IntegerLanes v) noexcept { return {_mm_cvtepi32_ps(v.lanes)}; }
QVR_INLINE _vec4 fromIntegers(std::int32_t x, std::int32_t y, std::int32_t z,
                              std::int32_t w) noexcept
{
    return toFloats({_mm_setr_epi32(x, y, z, w)});
}

// Towards zero; lanes that have no 32-bit integer, NaN included, become kNoInteger.
QVR_INLINE IntegerLanes toIntegersTruncating(_vec4 v) noexcept
{
    return {_mm_cvttps_epi32(v.lanes)};
}
QVR_INLINE bool anyLaneIs(std::int32_t value, IntegerLanes v) noexcept
{
    return _mm_movemask_epi8(_mm_cmpeq_epi32(v.lanes, _mm_set1_epi32(value))) != 0;
}

// The lowest byte of a lane: the lane modulo 256, also for a negative one.
template <int lane> QVR_INLINE std::size_t lowByte(IntegerLanes v) noexcept
{
    return static_cast<std::size_t>(_mm_extract_epi16(v.lanes, 2 * lane)) & 0xFFu;
}

}  // namespace qvr
