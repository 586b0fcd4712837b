// The operations of processor.h on x86-64: each one instruction or a short fixed sequence of them,
// of the baseline (SSE2). Nothing here regroups, fuses or approximates, except where the name says
// so.
#pragma once

#include "exact.h"

#include <emmintrin.h>

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>

#define QVR_HAS_ESTIMATES 1

namespace qvr {

struct _vec4 {
    __m128 lanes;
};
struct IntegerLanes {
    __m128i lanes;
};

// A product that is rounded before anything is added to it. For a processor with fused operations
// g++ would otherwise make one rounding of the two, unless told -ffp-contract=off; an empty
// instruction that may have changed the product keeps them apart and costs nothing.
QVR_INLINE __m128 rounded(__m128 product) noexcept
{
#if defined(__FMA__) || defined(__FMA4__) || defined(__AVX512F__)
    asm("" : "+x"(product));
#endif
    return product;
}

// Four bit patterns, which lie in memory as one object for each distinct four.
template <std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t>
QVR_INLINE _vec4 patterns(std::uint32_t const (&bits)[4]) noexcept
{
    return {_mm_load_ps(reinterpret_cast<float const*>(bits))};
}

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
// The same in x and y, and zeros behind them.
QVR_INLINE _vec4 pairOf(float value) noexcept
{
    return {_mm_unpacklo_ps(_mm_set_ss(value), _mm_set_ss(value))};
}
QVR_INLINE _vec4 lanes(float x, float y, float z, float w) noexcept
{
    return {_mm_setr_ps(x, y, z, w)};
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

QVR_INLINE _vec4 operator+(_vec4 a, _vec4 b) noexcept { return {_mm_add_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 operator-(_vec4 a, _vec4 b) noexcept { return {_mm_sub_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 operator*(_vec4 a, _vec4 b) noexcept
{
    return {rounded(_mm_mul_ps(a.lanes, b.lanes))};
}
QVR_INLINE _vec4 operator/(_vec4 a, _vec4 b) noexcept { return {_mm_div_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 squareRoot(_vec4 v) noexcept { return {_mm_sqrt_ps(v.lanes)}; }

QVR_INLINE _vec4 bitAnd(_vec4 a, _vec4 b) noexcept { return {_mm_and_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 bitOr(_vec4 a, _vec4 b) noexcept { return {_mm_or_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 bitXor(_vec4 a, _vec4 b) noexcept { return {_mm_xor_ps(a.lanes, b.lanes)}; }
// The bits of v that mask has not.
QVR_INLINE _vec4 bitAndNot(_vec4 mask, _vec4 v) noexcept
{
    return {_mm_andnot_ps(mask.lanes, v.lanes)};
}

// Ordered comparisons, false for NaN; a lane of the result is all ones or all zeros.
QVR_INLINE _vec4 equal(_vec4 a, _vec4 b) noexcept { return {_mm_cmpeq_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 less(_vec4 a, _vec4 b) noexcept { return {_mm_cmplt_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 lessEqual(_vec4 a, _vec4 b) noexcept { return {_mm_cmple_ps(a.lanes, b.lanes)}; }
// Unordered ones: true for NaN.
QVR_INLINE _vec4 notEqual(_vec4 a, _vec4 b) noexcept { return {_mm_cmpneq_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 notLess(_vec4 a, _vec4 b) noexcept { return {_mm_cmpnlt_ps(a.lanes, b.lanes)}; }
QVR_INLINE bool holdsInAll(_vec4 comparison) noexcept
{
    return _mm_movemask_ps(comparison.lanes) == 15;
}
QVR_INLINE bool holdsInAny(_vec4 comparison) noexcept
{
    return _mm_movemask_ps(comparison.lanes) != 0;
}

// v itself: where one of two ways is taken, v is for that way alone. Of loops that take both of
// them, see compiler_vectors.h.
QVR_INLINE _vec4 onTheWay(bool, _vec4 v) noexcept { return v; }

// a < b ? a : b and a > b ? a : b: a NaN on either side, and two zeros of either sign, give b.
QVR_INLINE _vec4 minimum(_vec4 a, _vec4 b) noexcept { return {_mm_min_ps(a.lanes, b.lanes)}; }
QVR_INLINE _vec4 maximum(_vec4 a, _vec4 b) noexcept { return {_mm_max_ps(a.lanes, b.lanes)}; }

// The whole number nearest to each lane, ties to even, by way of 32-bit integers: what none is
// near, NaN and the infinities among it, becomes -2^31. Never -0.
QVR_INLINE _vec4 nearest(_vec4 v) noexcept { return {_mm_cvtepi32_ps(_mm_cvtps_epi32(v.lanes))}; }
// To such integers, towards zero; and from them, rounded to nearest.
QVR_INLINE IntegerLanes toIntegersTruncating(_vec4 v) noexcept
{
    return {_mm_cvttps_epi32(v.lanes)};
}
QVR_INLINE _vec4 toFloats(IntegerLanes v) noexcept { return {_mm_cvtepi32_ps(v.lanes)}; }
QVR_INLINE IntegerLanes integerLanes(std::int32_t x, std::int32_t y, std::int32_t z,
                                     std::int32_t w) noexcept
{
    return {_mm_setr_epi32(x, y, z, w)};
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

// The processor's estimates of 1 / v and 1 / sqrt(v), relative error at most 1.5 * 2^-12. Their
// bits differ between makers. Zeros and subnormals give an infinity of their sign.
QVR_INLINE _vec4 estimatedReciprocal(_vec4 v) noexcept { return {_mm_rcp_ps(v.lanes)}; }
QVR_INLINE _vec4 estimatedReciprocalRoot(_vec4 v) noexcept { return {_mm_rsqrt_ps(v.lanes)}; }

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
QVR_INLINE float estimatedReciprocalRoot(float v) noexcept
{
    return _mm_cvtss_f32(_mm_rsqrt_ss(inLane0(v)));
}

// One lane.

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

// The same value, of which the compiler no longer knows how it came about. g++ would otherwise
// trace what is known of a minimum with a constant into jumps.
template <std::floating_point T> QVR_INLINE T opaque(T v) noexcept
{
    asm("" : "+x"(v));
    return v;
}

// Correctly rounded; NaN below zero, -0 for -0.
QVR_INLINE float squareRoot(float v) noexcept { return _mm_cvtss_f32(_mm_sqrt_ss(inLane0(v))); }
QVR_INLINE double squareRoot(double v) noexcept
{
    __m128d const lanes = inLane0(v);
    return _mm_cvtsd_f64(_mm_sqrt_sd(lanes, lanes));
}
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

// To a 32-bit integer as above, towards zero.
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

}  // namespace qvr
