// Four single-precision lanes: the vector type, its constants, and the operations on it.
//
// Each function is one instruction or a short fixed sequence of them, on baseline x86-64. Nothing
// here regroups, fuses or approximates, except where the name says "Estimate". The lanes are called
// x, y, z and w, or 0 to 3, in memory order.
#pragma once

#include "exact.h"
#include "scalar.h"

#include <emmintrin.h>

#include <cstdint>

namespace qvr {

struct _vec4 {
    __m128 lanes;
};
static_assert(alignof(_vec4) == 16);

// A constant by its four bit patterns, from lane 0 to lane 3; one object for each distinct pattern.
template <std::uint32_t x, std::uint32_t y, std::uint32_t z, std::uint32_t w> class _simd_const {
public:
    QVR_INLINE operator _vec4() const noexcept
    {
        return {_mm_load_ps(reinterpret_cast<float const*>(s_bits))};
    }

private:
    // Nothing writes them, yet they are not const: GCC replaces a const whose lanes are equal by a
    // scalar load and a shuffle at every use, where a plain memory operand would do.
    alignas(16) static inline constinit std::uint32_t s_bits[4] = {x, y, z, w};
};
template <std::uint32_t bits> using _simd_splat = _simd_const<bits, bits, bits, bits>;

inline constexpr _simd_splat<0x80000000u> kSignBits;
inline constexpr _simd_splat<0x7FFFFFFFu> kMagnitudeBits;

// Loading and storing. load and store want 16-byte alignment. The pairs and triples touch 8 and 12
// bytes and no more; lanes that are not there are loaded as +0.
QVR_INLINE _vec4 load(float const* from) noexcept { return {_mm_load_ps(from)}; }
QVR_INLINE void store(float* to, _vec4 v) noexcept { _mm_store_ps(to, v.lanes); }
QVR_INLINE _vec4 loadUnaligned(float const* from) noexcept { return {_mm_loadu_ps(from)}; }
QVR_INLINE void storeUnaligned(float* to, _vec4 v) noexcept { _mm_storeu_ps(to, v.lanes); }

// Two lanes as one object that may lie anywhere: the optimiser can follow it, unlike an intrinsic.
using LanePair [[gnu::may_alias, gnu::aligned(4)]] = double;

QVR_INLINE _vec4 loadPair(float const* from) noexcept
{
    return {_mm_castpd_ps(_mm_set_sd(*reinterpret_cast<LanePair const*>(from)))};
}
QVR_INLINE void storePair(float* to, _vec4 v) noexcept
{
    *reinterpret_cast<LanePair*>(to) = _mm_cvtsd_f64(_mm_castps_pd(v.lanes));
}
QVR_INLINE _vec4 loadTriple(float const* from) noexcept
{
    return {_mm_movelh_ps(loadPair(from).lanes, _mm_load_ss(from + 2))};
}
QVR_INLINE _vec4 loadPairs(float const* first, float const* last) noexcept
{
    return {_mm_movelh_ps(loadPair(first).lanes, loadPair(last).lanes)};
}
QVR_INLINE void storeTriple(float* to, _vec4 v) noexcept
{
    storePair(to, v);
    _mm_store_ss(to + 2, _mm_movehl_ps(v.lanes, v.lanes));
}

QVR_INLINE _vec4 zero() noexcept { return {_mm_setzero_ps()}; }
QVR_INLINE _vec4 broadcast(float value) noexcept { return {_mm_set1_ps(value)}; }
// One number in every lane of a float or of four, for formulas that serve both.
template <typename Lanes> Lanes splat(float value) noexcept = delete;
template <> QVR_INLINE float splat<float>(float value) noexcept { return value; }
template <> QVR_INLINE _vec4 splat<_vec4>(float value) noexcept { return broadcast(value); }
// The same in x and y, and zeros behind them.
QVR_INLINE _vec4 pairOf(float value) noexcept
{
    return {_mm_unpacklo_ps(_mm_set_ss(value), _mm_set_ss(value))};
}
QVR_INLINE float lane0(_vec4 v) noexcept { return _mm_cvtss_f32(v.lanes); }
template <int lane> QVR_INLINE float laneOf(_vec4 v) noexcept { return v.lanes[lane]; }

// Lane i of the result is lane i-th argument of v: shuffle<1, 2, 0, 3> gives (y, z, x, w).
template <int x, int y, int z, int w> QVR_INLINE _vec4 shuffle(_vec4 v) noexcept
{
    // Unlike the float shuffle it needs no copy of v.
    __m128i const words = _mm_castps_si128(v.lanes);
    return {_mm_castsi128_ps(_mm_shuffle_epi32(words, _MM_SHUFFLE(w, z, y, x)))};
}
template <int lane> QVR_INLINE _vec4 broadcastLane(_vec4 v) noexcept
{
    return shuffle<lane, lane, lane, lane>(v);
}

QVR_INLINE _vec4 operator+(_vec4 a, _vec4 b) noexcept { return {_mm_add_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 operator-(_vec4 a, _vec4 b) noexcept { return {_mm_sub_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 operator*(_vec4 a, _vec4 b) noexcept
{
    return {rounded(_mm_mul_ps(a.lanes, b.lanes))};
}
QVR_INLINE _vec4 operator/(_vec4 a, _vec4 b) noexcept { return {_mm_div_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 operator*(_vec4 v, float scalar) noexcept { return v * broadcast(scalar); }

QVR_INLINE _vec4 bitAnd(_vec4 a, _vec4 b) noexcept { return {_mm_and_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 bitOr(_vec4 a, _vec4 b) noexcept { return {_mm_or_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 bitXor(_vec4 a, _vec4 b) noexcept { return {_mm_xor_ps(a.lanes, b.lanes)}; }
// The bits of v that mask has not.
QVR_INLINE _vec4 bitAndNot(_vec4 mask, _vec4 v) noexcept
{
    return {_mm_andnot_ps(mask.lanes, v.lanes)};
}

// Sign bits only: NaN and zero lanes keep everything else.
QVR_INLINE _vec4 signOf(_vec4 v) noexcept { return bitAnd(v, kSignBits); }
QVR_INLINE _vec4 negate(_vec4 v) noexcept { return bitXor(v, kSignBits); }
QVR_INLINE _vec4 magnitude(_vec4 v) noexcept { return bitAnd(v, kMagnitudeBits); }

// Ordered comparisons, false for NaN; a lane of the result is all ones or all zeros.
QVR_INLINE _vec4 equal(_vec4 a, _vec4 b) noexcept { return {_mm_cmpeq_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 less(_vec4 a, _vec4 b) noexcept { return {_mm_cmplt_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 lessEqual(_vec4 a, _vec4 b) noexcept { return {_mm_cmple_ps(a.lanes, b.lanes)}; }
// The one unordered comparison: true for NaN.
QVR_INLINE _vec4 notEqual(_vec4 a, _vec4 b) noexcept { return {_mm_cmpneq_ps(a.lanes, b.lanes)}; }

// Of lane masks.
QVR_INLINE _vec4 both(_vec4 a, _vec4 b) noexcept { return bitAnd(a, b); }
QVR_INLINE _vec4 either(_vec4 a, _vec4 b) noexcept { return bitOr(a, b); }

// The sign bits of the four lanes, lane 0 in bit 0: 15 when a comparison held in every lane.
QVR_INLINE int laneMask(_vec4 comparison) noexcept { return _mm_movemask_ps(comparison.lanes); }

// a < b ? a : b and a > b ? a : b: a NaN on either side, and two zeros of either sign, give b.
QVR_INLINE _vec4 minimum(_vec4 a, _vec4 b) noexcept { return {_mm_min_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 maximum(_vec4 a, _vec4 b) noexcept { return {_mm_max_ps(a.lanes, b.lanes)}; }

QVR_INLINE _vec4 squareRoot(_vec4 v) noexcept { return {_mm_sqrt_ps(v.lanes)}; }

// Estimates by the source that estimates.h gives, relative error at most 1.5 * 2^-12. The
// processor's bits differ between makers. Zeros and subnormals give an infinity of their sign.
QVR_INLINE _vec4 reciprocalEstimate(_vec4 v) noexcept { return {reciprocalLanes(v.lanes)}; }
QVR_INLINE _vec4 reciprocalSquareRootEstimate(_vec4 v) noexcept
{
    return {reciprocalSquareRootLanes(v.lanes)};
}

// The whole number nearest to each lane, ties to even, by way of 32-bit integers: what does not fit
// one becomes -2^31.
QVR_INLINE _vec4 nearest(_vec4 v) noexcept { return {_mm_cvtepi32_ps(_mm_cvtps_epi32(v.lanes))}; }

QVR_INLINE _vec4 lanes(float x, float y, float z, float w) noexcept
{
    return {_mm_setr_ps(x, y, z, w)};
}

// Lanes of two vectors: (a[i], a[j], b[k], b[l]); the first or last pairs of both; both in turns.
template <int i, int j, int k, int l> QVR_INLINE _vec4 shuffle(_vec4 a, _vec4 b) noexcept
{
    return {_mm_shuffle_ps(a.lanes, b.lanes, _MM_SHUFFLE(l, k, j, i))};
}
QVR_INLINE _vec4 firstPairs(_vec4 a, _vec4 b) noexcept { return {_mm_movelh_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 lastPairs(_vec4 a, _vec4 b) noexcept { return {_mm_movehl_ps(b.lanes, a.lanes)}; }
QVR_INLINE _vec4 interleaveFirst(_vec4 a, _vec4 b) noexcept
{
    return {_mm_unpacklo_ps(a.lanes, b.lanes)};
}
QVR_INLINE _vec4 interleaveLast(_vec4 a, _vec4 b) noexcept
{
    return {_mm_unpackhi_ps(a.lanes, b.lanes)};
}

// Two lanes of v in front of two zeros.
QVR_INLINE _vec4 firstPair(_vec4 v) noexcept
{
    return {_mm_castsi128_ps(_mm_move_epi64(_mm_castps_si128(v.lanes)))};
}
QVR_INLINE _vec4 lastPair(_vec4 v) noexcept
{
    return {_mm_castsi128_ps(_mm_srli_si128(_mm_castps_si128(v.lanes), 8))};
}

// The bits of a where mask has ones, those of b elsewhere.
QVR_INLINE _vec4 select(_vec4 mask, _vec4 a, _vec4 b) noexcept
{
    return bitXor(bitAnd(bitXor(a, b), mask), b);
}

inline constexpr _simd_const<0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0u> kVectorLanes;
inline constexpr _simd_const<0u, 0u, 0u, 0x3F800000u> kIdentity;  // 1 in w, and the quaternion

}  // namespace qvr
