// The operations of processor.h by the compiler's vectors and plain C++, for any processor, or by
// plain C++ alone (QVR_PLAIN_LANES); x86_64.h says what each of them is. Results are the same bits,
// but for the payload of NaN. Products are rounded by themselves only with -ffp-contract=off, as
// the library's package asks for.
#pragma once

#include "plain_lane.h"

#include <bit>
#include <cstddef>
#include <cstdint>

#ifdef QVR_PLAIN_LANES
#include "plain_vectors.h"
#else
namespace qvr {

using FloatVector = float __attribute__((vector_size(16)));
using WordVector = std::int32_t __attribute__((vector_size(16)));

template <int i, int j, int k, int l>
QVR_INLINE FloatVector shuffled(FloatVector a, FloatVector b) noexcept
{
    return __builtin_shufflevector(a, b, i, j, k, l);
}

}  // namespace qvr
#endif

namespace qvr {

struct _vec4 {
    FloatVector lanes;
};
struct IntegerLanes {
    WordVector lanes;
};

QVR_INLINE WordVector bitsOf(_vec4 v) noexcept { return std::bit_cast<WordVector>(v.lanes); }
QVR_INLINE _vec4 fromBits(WordVector bits) noexcept { return {std::bit_cast<FloatVector>(bits)}; }

// Four bit patterns: not those in memory, so that the compiler sees them. Signs of some lanes are
// read there all the same in loops, of which compilers make vectors as long as all lanes go through
// the same operation: one that they saw to change nothing in a lane would be left out there.
template <std::uint32_t x, std::uint32_t y, std::uint32_t z, std::uint32_t w>
QVR_INLINE _vec4 patterns([[maybe_unused]] std::uint32_t const (&bits)[4]) noexcept
{
#ifdef QVR_PLAIN_LANES
    constexpr bool isSigns = ((x | y | z | w) & 0x7FFFFFFFu) == 0;
    if constexpr (isSigns && (x & y & z & w) == 0)
        return {FloatVector{std::bit_cast<float>(bits[0]), std::bit_cast<float>(bits[1]),
                            std::bit_cast<float>(bits[2]), std::bit_cast<float>(bits[3])}};
#endif
    return {FloatVector{std::bit_cast<float>(x), std::bit_cast<float>(y), std::bit_cast<float>(z),
                        std::bit_cast<float>(w)}};
}

QVR_INLINE _vec4 lanes(float x, float y, float z, float w) noexcept
{
    return {FloatVector{x, y, z, w}};
}
QVR_INLINE _vec4 loadUnaligned(float const* from) noexcept
{
    return lanes(from[0], from[1], from[2], from[3]);
}
QVR_INLINE void storeUnaligned(float* to, _vec4 v) noexcept
{
    to[0] = v.lanes[0];
    to[1] = v.lanes[1];
    to[2] = v.lanes[2];
    to[3] = v.lanes[3];
}
QVR_INLINE _vec4 load(float const* from) noexcept { return loadUnaligned(from); }
QVR_INLINE void store(float* to, _vec4 v) noexcept { storeUnaligned(to, v); }
QVR_INLINE _vec4 loadPair(float const* from) noexcept { return lanes(from[0], from[1], 0, 0); }
QVR_INLINE _vec4 loadTriple(float const* from) noexcept
{
    return lanes(from[0], from[1], from[2], 0);
}
QVR_INLINE _vec4 loadPairs(float const* first, float const* last) noexcept
{
    return lanes(first[0], first[1], last[0], last[1]);
}
QVR_INLINE void storePair(float* to, _vec4 v) noexcept
{
    to[0] = v.lanes[0];
    to[1] = v.lanes[1];
}
QVR_INLINE void storeTriple(float* to, _vec4 v) noexcept
{
    storePair(to, v);
    to[2] = v.lanes[2];
}

QVR_INLINE _vec4 zero() noexcept { return lanes(0, 0, 0, 0); }
QVR_INLINE _vec4 broadcast(float value) noexcept { return lanes(value, value, value, value); }
QVR_INLINE _vec4 pairOf(float value) noexcept { return lanes(value, value, 0, 0); }
QVR_INLINE float lane0(_vec4 v) noexcept { return v.lanes[0]; }
template <int lane> QVR_INLINE float laneOf(_vec4 v) noexcept { return v.lanes[lane]; }

template <int i, int j, int k, int l> QVR_INLINE _vec4 shuffle(_vec4 a, _vec4 b) noexcept
{
    return {shuffled<i, j, 4 + k, 4 + l>(a.lanes, b.lanes)};
}
template <int x, int y, int z, int w> QVR_INLINE _vec4 shuffle(_vec4 v) noexcept
{
    return shuffle<x, y, z, w>(v, v);
}
QVR_INLINE _vec4 firstPairs(_vec4 a, _vec4 b) noexcept { return shuffle<0, 1, 0, 1>(a, b); }
QVR_INLINE _vec4 lastPairs(_vec4 a, _vec4 b) noexcept { return shuffle<2, 3, 2, 3>(a, b); }
QVR_INLINE _vec4 interleaveFirst(_vec4 a, _vec4 b) noexcept
{
    return {shuffled<0, 4, 1, 5>(a.lanes, b.lanes)};
}
QVR_INLINE _vec4 interleaveLast(_vec4 a, _vec4 b) noexcept
{
    return {shuffled<2, 6, 3, 7>(a.lanes, b.lanes)};
}
QVR_INLINE _vec4 firstPair(_vec4 v) noexcept { return firstPairs(v, zero()); }
QVR_INLINE _vec4 lastPair(_vec4 v) noexcept { return shuffle<2, 3, 0, 1>(v, zero()); }

QVR_INLINE _vec4 operator+(_vec4 a, _vec4 b) noexcept { return {a.lanes + b.lanes}; }
QVR_INLINE _vec4 operator-(_vec4 a, _vec4 b) noexcept { return {a.lanes - b.lanes}; }
QVR_INLINE _vec4 operator*(_vec4 a, _vec4 b) noexcept { return {a.lanes * b.lanes}; }
QVR_INLINE _vec4 operator/(_vec4 a, _vec4 b) noexcept { return {a.lanes / b.lanes}; }

QVR_INLINE _vec4 bitAnd(_vec4 a, _vec4 b) noexcept { return fromBits(bitsOf(a) & bitsOf(b)); }
QVR_INLINE _vec4 bitOr(_vec4 a, _vec4 b) noexcept { return fromBits(bitsOf(a) | bitsOf(b)); }
QVR_INLINE _vec4 bitXor(_vec4 a, _vec4 b) noexcept { return fromBits(bitsOf(a) ^ bitsOf(b)); }
QVR_INLINE _vec4 bitAndNot(_vec4 mask, _vec4 v) noexcept
{
    return fromBits(~bitsOf(mask) & bitsOf(v));
}

QVR_INLINE _vec4 equal(_vec4 a, _vec4 b) noexcept { return fromBits(a.lanes == b.lanes); }
QVR_INLINE _vec4 less(_vec4 a, _vec4 b) noexcept { return fromBits(a.lanes < b.lanes); }
QVR_INLINE _vec4 lessEqual(_vec4 a, _vec4 b) noexcept { return fromBits(a.lanes <= b.lanes); }
QVR_INLINE _vec4 notEqual(_vec4 a, _vec4 b) noexcept { return fromBits(a.lanes != b.lanes); }
QVR_INLINE _vec4 notLess(_vec4 a, _vec4 b) noexcept { return fromBits(~(a.lanes < b.lanes)); }
QVR_INLINE bool holdsInAll(_vec4 comparison) noexcept
{
    WordVector const bits = bitsOf(comparison);
    return (bits[0] & bits[1] & bits[2] & bits[3]) != 0;
}
QVR_INLINE bool holdsInAny(_vec4 comparison) noexcept
{
    WordVector const bits = bitsOf(comparison);
    return (bits[0] | bits[1] | bits[2] | bits[3]) != 0;
}

// The bits of a where the comparison held, those of b elsewhere.
QVR_INLINE _vec4 chosen(WordVector comparison, _vec4 a, _vec4 b) noexcept
{
    return fromBits((bitsOf(a) & comparison) | (bitsOf(b) & ~comparison));
}
QVR_INLINE _vec4 minimum(_vec4 a, _vec4 b) noexcept { return chosen(a.lanes < b.lanes, a, b); }
QVR_INLINE _vec4 maximum(_vec4 a, _vec4 b) noexcept { return chosen(a.lanes > b.lanes, a, b); }

#ifdef QVR_LANE_ESTIMATES
#define QVR_HAS_ESTIMATES 1
// The processor's estimates lane by lane; a loop over lanes calls the functions for its vectors.
extern "C" {
[[gnu::simd("notinbranch"), gnu::const]] float qvr_reciprocal(float) noexcept;
[[gnu::simd("notinbranch"), gnu::const]] float qvr_reciprocal_root(float) noexcept;
}
QVR_INLINE float estimatedReciprocalRoot(float v) noexcept { return qvr_reciprocal_root(v); }
QVR_INLINE _vec4 estimatedReciprocal(_vec4 v) noexcept
{
    return lanes(qvr_reciprocal(v.lanes[0]), qvr_reciprocal(v.lanes[1]), qvr_reciprocal(v.lanes[2]),
                 qvr_reciprocal(v.lanes[3]));
}
QVR_INLINE _vec4 estimatedReciprocalRoot(_vec4 v) noexcept
{
    return lanes(qvr_reciprocal_root(v.lanes[0]), qvr_reciprocal_root(v.lanes[1]),
                 qvr_reciprocal_root(v.lanes[2]), qvr_reciprocal_root(v.lanes[3]));
}
#endif

// Of two ways the one that v is for is taken, or not. A loop over rows takes both and keeps one of
// the results; so that the other raises no floating-point exception, it is given zeros.
QVR_INLINE _vec4 onTheWay([[maybe_unused]] bool isTaken, _vec4 v) noexcept
{
#ifdef QVR_PLAIN_LANES
    std::int32_t const mask = isTaken ? -1 : 0;
    return fromBits(bitsOf(v) & WordVector{mask, mask, mask, mask});
#else
    return v;
#endif
}

// Of four lanes, where the compiler has no vector operation.

QVR_INLINE _vec4 squareRoot(_vec4 v) noexcept
{
    return lanes(squareRoot(v.lanes[0]), squareRoot(v.lanes[1]), squareRoot(v.lanes[2]),
                 squareRoot(v.lanes[3]));
}
QVR_INLINE _vec4 nearest(_vec4 v) noexcept
{
    return lanes(wholeNearest(v.lanes[0]), wholeNearest(v.lanes[1]), wholeNearest(v.lanes[2]),
                 wholeNearest(v.lanes[3]));
}
QVR_INLINE IntegerLanes integerLanes(std::int32_t x, std::int32_t y, std::int32_t z,
                                     std::int32_t w) noexcept
{
    return {WordVector{x, y, z, w}};
}
QVR_INLINE IntegerLanes toIntegersTruncating(_vec4 v) noexcept
{
    return integerLanes(toIntTruncating(v.lanes[0]), toIntTruncating(v.lanes[1]),
                        toIntTruncating(v.lanes[2]), toIntTruncating(v.lanes[3]));
}
QVR_INLINE _vec4 toFloats(IntegerLanes v) noexcept
{
    return lanes(static_cast<float>(v.lanes[0]), static_cast<float>(v.lanes[1]),
                 static_cast<float>(v.lanes[2]), static_cast<float>(v.lanes[3]));
}
QVR_INLINE bool anyLaneIs(std::int32_t value, IntegerLanes v) noexcept
{
    return v.lanes[0] == value || v.lanes[1] == value || v.lanes[2] == value || v.lanes[3] == value;
}
template <int lane> QVR_INLINE std::size_t lowByte(IntegerLanes v) noexcept
{
    return static_cast<std::size_t>(v.lanes[lane]) & 0xFFu;
}

}  // namespace qvr
