// Vectors of four numbers in plain C++, for loops over many of them: compilers make vectors across
// the rounds of a loop, but not of what is a vector already. As far as compiler_vectors.h needs
// them.
#pragma once

#include "exact.h"

#include <cstdint>

namespace qvr {

template <typename T> struct alignas(16) FourOf {
    T lane[4];

    QVR_INLINE constexpr T operator[](int i) const noexcept { return lane[i]; }
};
using FloatVector = FourOf<float>;
using WordVector = FourOf<std::int32_t>;

template <typename To, typename T, typename Op>
QVR_INLINE FourOf<To> laneByLane(FourOf<T> a, FourOf<T> b, Op op) noexcept
{
    return {op(a[0], b[0]), op(a[1], b[1]), op(a[2], b[2]), op(a[3], b[3])};
}

#define QVR_LANE_BY_LANE(type, op)                                                                 \
    QVR_INLINE type operator op(type a, type b) noexcept                                           \
    {                                                                                              \
        return laneByLane<decltype(a[0] op b[0])>(a, b, [](auto x, auto y) { return x op y; });    \
    }
QVR_LANE_BY_LANE(FloatVector, +)
QVR_LANE_BY_LANE(FloatVector, -)
QVR_LANE_BY_LANE(FloatVector, *)
QVR_LANE_BY_LANE(FloatVector, /)
QVR_LANE_BY_LANE(WordVector, &)
QVR_LANE_BY_LANE(WordVector, |)
QVR_LANE_BY_LANE(WordVector, ^)
#undef QVR_LANE_BY_LANE
QVR_INLINE WordVector operator~(WordVector v) noexcept { return {~v[0], ~v[1], ~v[2], ~v[3]}; }

// All ones where the comparison holds.
#define QVR_COMPARISON(op)                                                                         \
    QVR_INLINE WordVector operator op(FloatVector a, FloatVector b) noexcept                       \
    {                                                                                              \
        return laneByLane<std::int32_t>(a, b, [](float x, float y) { return x op y ? -1 : 0; });   \
    }
QVR_COMPARISON(==)
QVR_COMPARISON(!=)
QVR_COMPARISON(<)
QVR_COMPARISON(<=)
QVR_COMPARISON(>)
#undef QVR_COMPARISON

// Lanes 0 to 3 are a's, 4 to 7 are b's.
template <int lane> QVR_INLINE float laneOfBoth(FloatVector a, FloatVector b) noexcept
{
    return lane < 4 ? a[lane % 4] : b[lane % 4];
}
template <int i, int j, int k, int l>
QVR_INLINE FloatVector shuffled(FloatVector a, FloatVector b) noexcept
{
    return {laneOfBoth<i>(a, b), laneOfBoth<j>(a, b), laneOfBoth<k>(a, b), laneOfBoth<l>(a, b)};
}

}  // namespace qvr
