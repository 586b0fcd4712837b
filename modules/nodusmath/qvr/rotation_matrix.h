// Rotations as three rows, the images of the axes: row vectors are multiplied from the left.
#pragma once

#include "products.h"
#include "quaternion.h"

namespace qvr {

// The rows of a quaternion's matrix, with 2 (q_i^2 + w^2) - 1 on the diagonal: no rotation, and
// nothing near it, unless q is a unit quaternion. The w lane of a row is 0, or NaN where a product
// is not finite.
class RotationRows {
public:
    QVR_INLINE explicit RotationRows(_vec4 q) noexcept
        : m_q(q), m_byW(broadcastLane<3>(q) * q - kHalfInW)
    {
    }

    template <int axis> QVR_INLINE _vec4 row() const noexcept
    {
        // Lanes of w q with w^2 - 0.5 on the diagonal, and the signs they are added with.
        _vec4 const own = broadcastLane<axis>(m_q) * m_q;
        _vec4 half;
        if constexpr (axis == 0)
            half = own + bitXor(shuffle<3, 2, 1, 0>(m_byW), kFlipZ);
        else if constexpr (axis == 1)
            half = own + bitXor(shuffle<2, 3, 0, 1>(m_byW), kFlipX);
        else
            half = own + bitXor(shuffle<1, 0, 3, 2>(m_byW), kFlipY);
        return half + half;
    }

private:
    static constexpr _simd_const<0u, 0u, 0u, 0x3F000000u> kHalfInW{};  // 0.5
    static constexpr _simd_const<0x80000000u, 0u, 0u, 0x80000000u> kFlipX{};
    static constexpr _simd_const<0u, 0x80000000u, 0u, 0x80000000u> kFlipY{};
    static constexpr _simd_const<0u, 0u, 0x80000000u, 0x80000000u> kFlipZ{};

    _vec4 m_q, m_byW;
};

// The quaternion of three rows, by that of its lanes which is certain to be large: it is positive,
// 1 at least. Rows that are scaled do not give the quaternion of the rotation alone.
QVR_INLINE _vec4 quaternionOfRows(float const (&x)[3], float const (&y)[3],
                                  float const (&z)[3]) noexcept
{
    // Both tests ask for 0 <= value: a zero takes the first way, a NaN the second.
    _vec4 q;
    if (0 <= x[0]) {
        float const rest = y[1] + z[2];
        if (0 <= rest)
            q = lanes(y[2] - z[1], z[0] - x[2], x[1] - y[0], rest + (x[0] + 1));
        else
            q = lanes((1 + x[0]) - rest, x[1] + y[0], x[2] + z[0], y[2] - z[1]);
    } else {
        float const rest = y[1] - z[2];
        if (0 <= rest)
            q = lanes(x[1] + y[0], rest + (1 - x[0]), y[2] + z[1], z[0] - x[2]);
        else
            q = lanes(x[2] + z[0], y[2] + z[1], (1 - x[0]) - rest, x[1] - y[0]);
    }
    return normalizeFast(q);
}

// Sixteen lanes, lane 4 i + j to lane 4 j + i, as bits.
QVR_INLINE void transpose(float const* from, float* to) noexcept
{
    _vec4 const rows[] = {loadUnaligned(from), loadUnaligned(from + 4), loadUnaligned(from + 8),
                          loadUnaligned(from + 12)};
    _vec4 const upperLeft = interleaveFirst(rows[0], rows[1]);
    _vec4 const upperRight = interleaveLast(rows[0], rows[1]);
    _vec4 const lowerLeft = interleaveFirst(rows[2], rows[3]);
    _vec4 const lowerRight = interleaveLast(rows[2], rows[3]);
    storeUnaligned(to, firstPairs(upperLeft, lowerLeft));
    storeUnaligned(to + 4, lastPairs(upperLeft, lowerLeft));
    storeUnaligned(to + 8, firstPairs(upperRight, lowerRight));
    storeUnaligned(to + 12, lastPairs(upperRight, lowerRight));
}

}  // namespace qvr
