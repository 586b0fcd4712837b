// Rotations as quaternions: x, y, z the vector part, w the scalar part, (0, 0, 0, 1) no rotation.
// A unit quaternion q rotates v as q v q*, so of a product the right factor is applied first.
#pragma once

#include "polynomials.h"
#include "products.h"

#include <bit>

namespace qvr {

inline constexpr _simd_const<0x80000000u, 0x80000000u, 0x80000000u, 0u> kVectorSigns;
inline constexpr _simd_const<0x3E800000u, 0x3E800000u, 0x3E800000u, 0u> kQuarterOfXYZ;  // 0.25

// Cosine of half the angle between two rotations: 0.9999, rounded. Nearer than this the part angles
// drown in rounding and the chord is as good as the arc.
inline constexpr float kNearlyParallel = std::bit_cast<float>(0x3F7FF972u);

// A quaternion about one coordinate axis, the lanes that may differ from zero in front: (sine,
// cosine, 0, 0). Shuffling it gives lanes of the whole quaternion.
template <int axis> struct AboutAxis {
    _vec4 sineAndCosine;

    static constexpr int place(int lane) { return lane == axis ? 0 : lane == 3 ? 1 : 2; }
};

template <int x, int y, int z, int w, int axis> QVR_INLINE _vec4 shuffle(AboutAxis<axis> q) noexcept
{
    using Q = AboutAxis<axis>;
    return shuffle<Q::place(x), Q::place(y), Q::place(z), Q::place(w)>(q.sineAndCosine);
}

// What:   the bare product of two quaternions, not normalised.
// Range:  every input.
// Error:  each lane one rounding a product and one a sum, always in the order written here.
// Edge:   x, y and z are summed with opposite signs and flipped at the end, so that all four lanes
//         subtract alike: where the terms of one of them cancel, it is -0.
template <typename A, typename B> QVR_INLINE _vec4 hamiltonProduct(A a, B b) noexcept
{
    _vec4 sum = shuffle<2, 0, 1, 3>(a) * shuffle<1, 2, 0, 3>(b);
    sum = sum - shuffle<1, 3, 2, 0>(a) * shuffle<2, 1, 3, 0>(b);
    sum = sum - shuffle<3, 1, 0, 2>(a) * shuffle<0, 3, 1, 2>(b);
    sum = sum - shuffle<0, 2, 3, 1>(a) * shuffle<3, 0, 2, 1>(b);
    return bitXor(sum, kVectorSigns);
}

// The opposite rotation of a unit quaternion; by the sign bits, so 0 becomes -0.
QVR_INLINE _vec4 conjugate(_vec4 q) noexcept { return bitXor(q, kVectorSigns); }

// The point at t on the chord from a to b; t is not clamped.
QVR_INLINE _vec4 onChord(_vec4 a, _vec4 b, _vec4 t) noexcept { return a + t * (b - a); }

// Rotation at t on the shorter chord from a to b. q and -q are one rotation: the copy of b on a's
// side is taken. The sign bit, not a comparison with 0, decides, so -0 is the other side.
QVR_INLINE _vec4 lerp(_vec4 a, _vec4 b, _vec4 t) noexcept
{
    return normalizeFast(onChord(a, bitXor(b, signOf(dot4(a, b))), t));
}

// Rotation at t on the shorter arc from a to b. t is not clamped: outside [0, 1] the arc goes on.
// Zero quaternions are not looked for; two of them give NaN in every lane.
QVR_INLINE _vec4 slerp(_vec4 a, _vec4 b, _vec4 t) noexcept
{
    _vec4 const d = dot4(a, b);
    _vec4 const near = bitXor(b, signOf(d));
    _vec4 const cosine = magnitude(d);

    // "Less" instead of "not greater or equal": a NaN cosine must take the chord.
    bool const isOnArc = lane0(cosine) < kNearlyParallel;
    _vec4 const cosineOfArc = onTheWay(isOnArc, cosine), part = onTheWay(isOnArc, t);
    _vec4 sum;
    if (!isOnArc) {
        sum = onChord(a, near, t);
    } else {
        // Lanes x and z share one dot product, y and w the other: the first pair of lanes has both
        // angles, and one polynomial serves the sines of both parts. The usual division by
        // sin(theta) is left out: normalising the sum replaces it.
        _vec4 const theta = kHalfPi - asinOfMagnitude(cosineOfArc);
        _vec4 const past = part * theta;
        _vec4 const sines = sinPoly(firstPairs(theta - past, past));
        sum = firstPairs(sines, sines) * a + lastPairs(sines, sines) * near;
    }
    return normalizeFast(sum);
}

// What:   v rotated by q in x, y and z: (2 w^2 - 1) v + 2 (u . v) u + 2 w (u x v), u the vector
//         part of q; w means nothing.
// Range:  every input; q is not normalised, and a q of another length does not merely scale v.
// Error:  1e-6 of |v| for a unit q.
// Edge:   a NaN or infinite lane of q or v gives NaN or infinite lanes.
QVR_INLINE _vec4 rotatedXYZ(_vec4 q, _vec4 v) noexcept
{
    _vec4 const twice = v + v;
    _vec4 const products = q * twice;
    _vec4 const along = (shuffle<1, 2, 0, 3>(products) + products) + shuffle<2, 0, 1, 3>(products);
    _vec4 const w = broadcastLane<3>(q);
    return (w * (cross(q, twice) + w * twice) + along * q) - v;
}

// The same, and the w lane of v untouched.
QVR_INLINE _vec4 rotated(_vec4 q, _vec4 v) noexcept
{
    return select(kVectorLanes, rotatedXYZ(q, v), v);
}

// Rotation by an angle about an axis. The length of the axis stays in the vector part, and a w
// lane adds to the 1 that the cosine is multiplied by.
QVR_INLINE _vec4 fromAxisAndAngle(_vec4 axis, _vec4 angle) noexcept
{
    _vec4 const halfTurns = (angle * kHalf) * kTurnsPerRadian;
    return (axis + kIdentity) * cosOfTurns(halfTurns - kQuarterOfXYZ);
}

// The unit axis, w = 0; NaN in every lane where the vector part is zero.
QVR_INLINE _vec4 axisOf(_vec4 q) noexcept { return normalizeFast(bitAnd(q, kVectorLanes)); }

// The angle, in [0, 2 pi], from the scalar part of a unit quaternion; it is not folded to the
// shorter way round. NaN where |w| > 1.
QVR_INLINE _vec4 angleOf(_vec4 q) noexcept
{
    _vec4 const half = acosPoly(broadcastLane<3>(q));
    return half + half;
}

// The shortest rotation that turns a's direction into b's; the lengths do not matter. w lanes take
// part in lengths and dot product. Opposite directions and zeros give NaN in every lane.
QVR_INLINE _vec4 arcBetween(_vec4 a, _vec4 b) noexcept
{
    _vec4 const lengths = squareRoot(dot4(a, a) * dot4(b, b));
    return normalizeFast(select(kVectorLanes, cross(a, b), dot4(a, b) + lengths));
}

}  // namespace qvr
