// The operations of processor.h by the compiler's vectors and plain C++, for any processor;
// x86_64.h says what each of them is. Results are the same bits, but for the payload of NaN.
// Products are rounded by themselves only with -ffp-contract=off, as the library's package asks
// for.
#pragma once

#include "exact.h"

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace qvr {

using FloatVector = float __attribute__((vector_size(16)));
using WordVector = std::int32_t __attribute__((vector_size(16)));

struct _vec4 {
    FloatVector lanes;
};
struct IntegerLanes {
    WordVector lanes;
};

QVR_INLINE WordVector bitsOf(_vec4 v) noexcept { return std::bit_cast<WordVector>(v.lanes); }
QVR_INLINE _vec4 fromBits(WordVector bits) noexcept { return {std::bit_cast<FloatVector>(bits)}; }

QVR_INLINE _vec4 loadUnaligned(float const* from) noexcept
{
    _vec4 v;
    std::memcpy(&v.lanes, from, sizeof v.lanes);
    return v;
}
QVR_INLINE void storeUnaligned(float* to, _vec4 v) noexcept
{
    std::memcpy(to, &v.lanes, sizeof v.lanes);
}
QVR_INLINE _vec4 load(float const* from) noexcept
{
    return loadUnaligned(static_cast<float const*>(__builtin_assume_aligned(from, 16)));
}
QVR_INLINE void store(float* to, _vec4 v) noexcept
{
    storeUnaligned(static_cast<float*>(__builtin_assume_aligned(to, 16)), v);
}
QVR_INLINE _vec4 loadBits(std::uint32_t const* from) noexcept
{
    _vec4 v;
    std::memcpy(&v.lanes, __builtin_assume_aligned(from, 16), sizeof v.lanes);
    return v;
}
QVR_INLINE _vec4 lanes(float x, float y, float z, float w) noexcept
{
    return {FloatVector{x, y, z, w}};
}
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
    return {__builtin_shufflevector(a.lanes, b.lanes, i, j, 4 + k, 4 + l)};
}
template <int x, int y, int z, int w> QVR_INLINE _vec4 shuffle(_vec4 v) noexcept
{
    return shuffle<x, y, z, w>(v, v);
}
QVR_INLINE _vec4 firstPairs(_vec4 a, _vec4 b) noexcept { return shuffle<0, 1, 0, 1>(a, b); }
QVR_INLINE _vec4 lastPairs(_vec4 a, _vec4 b) noexcept { return shuffle<2, 3, 2, 3>(a, b); }
QVR_INLINE _vec4 interleaveFirst(_vec4 a, _vec4 b) noexcept
{
    return {__builtin_shufflevector(a.lanes, b.lanes, 0, 4, 1, 5)};
}
QVR_INLINE _vec4 interleaveLast(_vec4 a, _vec4 b) noexcept
{
    return {__builtin_shufflevector(a.lanes, b.lanes, 2, 6, 3, 7)};
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
QVR_INLINE int laneMask(_vec4 comparison) noexcept
{
    WordVector const bits = bitsOf(comparison);
    return (bits[0] < 0) | (bits[1] < 0) << 1 | (bits[2] < 0) << 2 | (bits[3] < 0) << 3;
}

// The bits of a where the comparison held, those of b elsewhere.
QVR_INLINE _vec4 chosen(WordVector comparison, _vec4 a, _vec4 b) noexcept
{
    return fromBits((bitsOf(a) & comparison) | (bitsOf(b) & ~comparison));
}
QVR_INLINE _vec4 minimum(_vec4 a, _vec4 b) noexcept { return chosen(a.lanes < b.lanes, a, b); }
QVR_INLINE _vec4 maximum(_vec4 a, _vec4 b) noexcept { return chosen(a.lanes > b.lanes, a, b); }

// One lane.

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
// Ties to even: from 2^23 on every float is whole, and below a sum with that is rounded to one.
QVR_INLINE std::int32_t toIntNearest(float v) noexcept
{
    float const size = __builtin_fabsf(v);
    float const whole = size < 0x1p23f ? (size + 0x1p23f) - 0x1p23f : size;
    return toIntTruncating(__builtin_copysignf(whole, v));
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
    // A compiler may take the two conversions for a truncation, which has a zero of v's sign.
    return v == 0 ? v : v - static_cast<T>(toIntTruncating(v));
}
QVR_INLINE float wholeNearest(float v) noexcept { return static_cast<float>(toIntNearest(v)); }
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

// Of four lanes, where the compiler has no vector operation.

QVR_INLINE _vec4 squareRoot(_vec4 v) noexcept
{
    return lanes(squareRoot(v.lanes[0]), squareRoot(v.lanes[1]), squareRoot(v.lanes[2]),
                 squareRoot(v.lanes[3]));
}
QVR_INLINE IntegerLanes integerLanes(std::int32_t x, std::int32_t y, std::int32_t z,
                                     std::int32_t w) noexcept
{
    return {WordVector{x, y, z, w}};
}
QVR_INLINE IntegerLanes toIntegers(_vec4 v) noexcept
{
    return integerLanes(toIntNearest(v.lanes[0]), toIntNearest(v.lanes[1]),
                        toIntNearest(v.lanes[2]), toIntNearest(v.lanes[3]));
}
QVR_INLINE IntegerLanes toIntegersTruncating(_vec4 v) noexcept
{
    return integerLanes(toIntTruncating(v.lanes[0]), toIntTruncating(v.lanes[1]),
                        toIntTruncating(v.lanes[2]), toIntTruncating(v.lanes[3]));
}
QVR_INLINE _vec4 toFloats(IntegerLanes v) noexcept
{
    return {__builtin_convertvector(v.lanes, FloatVector)};
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
