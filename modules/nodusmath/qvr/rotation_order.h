// Three angles about the coordinate axes as a rotation, and back, in every order of the axes.
//
// An angle triple holds the angle about X in lane x, about Y in y, about Z in z, whatever the order
// in which they are applied; lane w is not looked at and comes back as 0. Orders by number:
//
//   0, 1   X, then Y, then Z        6, 7    Y, then X, then Z
//   2, 3   X, then Z, then Y        8, 9    Z, then X, then Y
//   4, 5   Y, then Z, then X        10, 11  Z, then Y, then X
//   12     a twist about X, then a swing about an axis in the YZ plane
#pragma once

#include "arctangent.h"
#include "quaternion.h"
#include "rotation_matrix.h"

#include <cstdint>

namespace qvr {

namespace rotationOrder {

// The axes in the order in which they are applied.
enum Order : std::int32_t {
    kXYZ,
    kXYZOdd,
    kXZY,
    kXZYOdd,
    kYZX,
    kYZXOdd,
    kYXZ,
    kYXZOdd,
    kZXY,
    kZXYOdd,
    kZYX,
    kZYXOdd,
    kTwistSwing
};

// From here on half the sine of the middle angle is taken for that of a quarter turn, where the two
// outer axes fall together: 0.49999899, within about 0.002 rad.
inline constexpr float kLocked = std::bit_cast<float>(0x3EFFFFDEu);

// 9.99999997e-7: 1e-6, rounded.
inline constexpr float kTiny = std::bit_cast<float>(0x358637BDu);

inline constexpr _simd_const<0xFFFFFFFFu, 0u, 0u, 0u> kLaneX;
inline constexpr _simd_const<0u, 0xFFFFFFFFu, 0u, 0u> kLaneY;
inline constexpr _simd_const<0u, 0u, 0xFFFFFFFFu, 0u> kLaneZ;
inline constexpr _simd_const<0xFFFFFFFFu, 0xFFFFFFFFu, 0u, 0u> kLanesXY;
inline constexpr _simd_const<0xFFFFFFFFu, 0u, 0xFFFFFFFFu, 0u> kLanesXZ;
inline constexpr _simd_const<0u, 0xFFFFFFFFu, 0xFFFFFFFFu, 0u> kLanesYZ;

struct HalfAngles {
    _vec4 sines, cosines;
};

QVR_INLINE HalfAngles halfAngles(_vec4 angles) noexcept
{
    _vec4 const turns = (angles * kHalf) * kTurnsPerRadian;
    return {cosOfTurns(turns - kQuarterTurn), cosOfTurns(turns)};
}

// X, then Y, then Z, multiplied out.
QVR_INLINE _vec4 quaternionOfXYZ(HalfAngles half) noexcept
{
    auto const [s, c] = half;
    constexpr _simd_const<0x80000000u, 0u, 0x80000000u, 0u> kFlipXZ;
    _vec4 const ofX = shuffle<0, 0, 0, 0>(c, s);
    _vec4 const ofZ = shuffle<0, 2, 2, 0>(shuffle<2, 2, 2, 2>(s, c));
    _vec4 const outer = ofZ * ofX;  // s2 c0, c2 c0, c2 s0, s2 s0
    return bitXor(broadcastLane<1>(s), kFlipXZ) * outer +
           broadcastLane<1>(c) * shuffle<2, 3, 0, 1>(outer);
}

// About the first axis, then the second, then the third.
template <int first, int second, int third>
QVR_INLINE _vec4 quaternionInSequence(HalfAngles half) noexcept
{
    _vec4 const xy = interleaveFirst(half.sines, half.cosines);
    _vec4 const z = interleaveLast(half.sines, half.cosines);
    _vec4 const about[] = {firstPair(xy), lastPair(xy), firstPair(z)};
    return hamiltonProduct(
        hamiltonProduct(AboutAxis<third>{about[third]}, AboutAxis<second>{about[second]}),
        AboutAxis<first>{about[first]});
}

// A swing whose axis lies in the YZ plane, (0, s1, s2, c1 c2) before it is normalised, after a
// twist about X.
QVR_INLINE _vec4 quaternionOfTwistSwing(HalfAngles half) noexcept
{
    auto const [s, c] = half;
    constexpr _simd_const<0x80000000u, 0u, 0x80000000u, 0x80000000u> kSigns;
    _vec4 const twist = shuffle<0, 0, 0, 0>(s, c);           // s0, s0, c0, c0
    _vec4 const inner = shuffle<1, 2, 1, 2>(c, s);           // c1, c2, s1, s2
    _vec4 const outer = twist * shuffle<0, 3, 3, 0>(inner);  // s0 c1, s0 s2, c0 s2, c0 c1
    _vec4 const ones = select(kLanesYZ, kOne, shuffle<1, 1, 1, 1>(inner));
    _vec4 const cross = bitAnd(shuffle<2, 2, 2, 2>(inner) * shuffle<0, 2, 1, 3>(twist), kLanesYZ);
    return normalizeFast(outer * ones + bitXor(cross, kSigns));
}

// w^2 + q^2 - 1/2, the denominator of most tangents: half the diagonal element of the matrix.
QVR_INLINE _vec4 halfCosine(_vec4 w, _vec4 q) noexcept { return (w * w - kHalf) + q * q; }

// What the outer angles are read off: numerators and denominators of their tangents, in the lanes
// of the angles, what the angles are multiplied by, and the mask of the lanes.
struct OuterAngles {
    _vec4 num, den, factor, lanes;
};

// The middle angle is a quarter turn, positive or negative: one outer angle is 0, the other takes
// the whole rest of the rotation.
QVR_INLINE OuterAngles lockedAngles(std::int32_t order, _vec4 q, bool positive) noexcept
{
    constexpr _simd_splat<0x40000000u> kTwo;       // 2
    constexpr _simd_splat<0xC0000000u> kMinusTwo;  // -2
    _vec4 const x = broadcastLane<0>(q), y = broadcastLane<1>(q);
    _vec4 const z = broadcastLane<2>(q), w = broadcastLane<3>(q);
    switch (order & ~1) {
    case kXYZ:
        if (positive)
            return {x * y - z * w, halfCosine(w, y), kOne, kLaneX};
        return {x * w - y * z, negate(x * z) - y * w, kOne, kLaneX};
    case kXZY:
        return {x, w, positive ? _vec4(kTwo) : _vec4(kMinusTwo), kLaneY};
    case kYZX:
        if (positive)
            return {x * z - y * w, x * y + z * w, kOne, kLaneX};
        return {y * w - x * z, negate(x * y) - z * w, kOne, kLaneX};
    case kYXZ:
        if (positive)
            return {x * z + y * w, x * w - y * z, kOne, kLaneZ};
        return {negate(x * z) - y * w, y * z - x * w, kOne, kLaneZ};
    case kZXY:
        if (positive)
            return {y * w - x * z, x * w + y * z, kOne, kLaneY};
        return {y * w - x * z, negate(x * w) - y * z, kOne, kLaneY};
    default:
        if (positive)
            return {x * w + y * z, y * w - x * z, kOne, kLaneZ};
        return {negate(x * w) - y * z, x * z - y * w, kOne, kLaneZ};
    }
}

// Twist and swing of quaternionOfTwistSwing. The twist is read off the lanes as they came; w near 0
// makes it half a turn. NaN for both swing angles where the X axis is turned to its opposite.
QVR_INLINE _vec4 anglesOfTwistSwing(_vec4 q) noexcept
{
    // The swing is the shortest arc from the X axis to its image a: (0, -a2, a1, 1 + a0).
    constexpr _simd_const<0u, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu> kYZW;
    constexpr _simd_const<0u, 0x80000000u, 0u, 0u> kFlipY;
    constexpr _simd_const<0x80000000u, 0x80000000u, 0x80000000u, 0x3F800000u> kAddOneInW;
    constexpr _simd_splat<0x40800000u> kFour;      // 4
    constexpr _simd_splat<0xBF800000u> kMinusOne;  // -1
    _vec4 const image = RotationRows(normalizeFast(q)).row<0>();
    _vec4 const arc = bitXor(bitAnd(shuffle<3, 2, 1, 0>(image), kYZW), kFlipY) + kAddOneInW;
    _vec4 swing = normalizeFast(arc);

    // k undoes the normalisation of the swing: p k^4 - k^2 + 1 = 0.
    _vec4 const sy = broadcastLane<1>(swing), sz = broadcastLane<2>(swing);
    _vec4 const p = ((sy * sy) * sz) * sz;
    if (lane0(p) > kTiny) {
        _vec4 const root = squareRoot(maximum(zero(), kOne - kFour * p));
        swing = swing * squareRoot((kHalf / p) * (kOne - root));
    }

    // The limits stand first: a NaN passes both.
    _vec4 const swings = asinPoly(maximum(kMinusOne, minimum(kOne, swing)));

    _vec4 twist = kHalfPi;
    _vec4 const w = broadcastLane<3>(q);
    if (lane0(magnitude(w)) > kTiny) {
        _vec4 const r = q / w;
        _vec4 const t = magnitude(r);
        _vec4 const negative = bitAndNot(lessEqual(zero(), r), kSignBits);
        twist = bitXor(arctangentFolded(t, less(t, kOne)), negative);
    }
    _vec4 const halves = bitOr(bitAnd(twist, kLaneX), bitAnd(swings, kLanesYZ));
    return halves + halves;
}

}  // namespace rotationOrder

// The quaternion of an angle triple, not normalised but for order 12. An odd order above 1 gives
// the bits of the even one below it, 1 those of 0 but for the last; other numbers give no rotation.
QVR_INLINE _vec4 quaternionOfAngles(std::int32_t order, _vec4 angles) noexcept
{
    using namespace rotationOrder;
    HalfAngles const half = halfAngles(angles);
    switch (order) {
    case kXYZ:
        return quaternionOfXYZ(half);
    case kXYZOdd:
        return quaternionInSequence<0, 1, 2>(half);
    case kXZY:
    case kXZYOdd:
        return quaternionInSequence<0, 2, 1>(half);
    case kYZX:
    case kYZXOdd:
        return quaternionInSequence<1, 2, 0>(half);
    case kYXZ:
    case kYXZOdd:
        return quaternionInSequence<1, 0, 2>(half);
    case kZXY:
    case kZXYOdd:
        return quaternionInSequence<2, 0, 1>(half);
    case kZYX:
    case kZYXOdd:
        return quaternionInSequence<2, 1, 0>(half);
    case kTwistSwing:
        return quaternionOfTwistSwing(half);
    default:
        return kIdentity;
    }
}

// The angle triple of a quaternion, which is taken as it is: for unit ones the opposite of
// quaternionOfAngles while the middle angle stays within a quarter turn. Odd orders give the bits
// of the even ones below, numbers outside 0 to 12 zeros. A zero quaternion is not looked for.
QVR_INLINE _vec4 anglesOfQuaternion(std::int32_t order, _vec4 q) noexcept
{
    using namespace rotationOrder;
    _vec4 const x = broadcastLane<0>(q), y = broadcastLane<1>(q);
    _vec4 const z = broadcastLane<2>(q), w = broadcastLane<3>(q);

    // Half the sine of the middle angle, and the lane of that.
    _vec4 sine, middle;
    OuterAngles outer;
    outer.factor = kOne;
    switch (order) {
    case kXYZ:
    case kXYZOdd:
        outer.lanes = kLanesXZ, middle = kLaneY;
        sine = negate(x * z - y * w);
        outer.num = shuffle<0, 0, 0, 0>(y * z + x * w, w * z + x * y);
        outer.den = shuffle<0, 0, 0, 0>(halfCosine(w, z), halfCosine(w, x));
        break;
    case kXZY:
    case kXZYOdd:
        outer.lanes = kLanesXY, middle = kLaneZ;
        sine = x * y + w * z;
        outer.num = interleaveFirst(w * x - y * z, w * y - x * z);
        outer.den = interleaveFirst(halfCosine(w, y), halfCosine(w, x));
        break;
    case kYZX:
    case kYZXOdd:
        outer.lanes = kLanesXY, middle = kLaneZ;
        sine = negate(x * y - w * z);
        outer.num = interleaveFirst(x * w + y * z, x * z + y * w);
        outer.den = interleaveFirst(halfCosine(w, y), (kHalf - y * y) - z * z);
        break;
    case kYXZ:
    case kYXZOdd:
        outer.lanes = kLanesYZ, middle = kLaneX;
        sine = y * z + w * x;
        outer.num = shuffle<0, 0, 0, 0>(w * y - x * z, w * z - x * y);
        outer.den = shuffle<0, 0, 0, 0>(halfCosine(w, z), halfCosine(w, y));
        break;
    case kZXY:
    case kZXYOdd:
        outer.lanes = kLanesYZ, middle = kLaneX;
        sine = negate(y * z - w * x);
        outer.num = shuffle<0, 0, 0, 0>(w * y + x * z, w * z + x * y);
        outer.den = shuffle<0, 0, 0, 0>(halfCosine(w, z), halfCosine(w, y));
        break;
    case kZYX:
    case kZYXOdd:
        outer.lanes = kLanesXZ, middle = kLaneY;
        sine = x * z + w * y;
        outer.num = shuffle<0, 0, 0, 0>(w * x - y * z, w * z - x * y);
        outer.den = shuffle<0, 0, 0, 0>(halfCosine(w, z), halfCosine(w, x));
        break;
    case kTwistSwing:
        return anglesOfTwistSwing(q);
    default:
        return zero();
    }
    _vec4 middleAngle;
    if (lane0(magnitude(sine)) >= kLocked) {
        middleAngle = bitOr(kHalfPi, signOf(sine));
        outer = lockedAngles(order, q, lane0(sine) > 0);
    } else {
        middleAngle = asinPoly(sine + sine);
    }
    _vec4 const angles = arctangent2(outer.num, outer.den) * outer.factor;
    return bitOr(bitAnd(angles, outer.lanes), bitAnd(middleAngle, middle));
}

}  // namespace qvr
