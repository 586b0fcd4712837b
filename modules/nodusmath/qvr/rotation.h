// Rotations and angle triples in double: quaternions, products, and angles about the coordinate
// axes in each of the thirteen orders of rotation_order.h, with the accuracy of double.
//
// Angles are in radians. A quaternion has its vector part in x, y and z and its scalar part in w; a
// unit quaternion q rotates v as q v q*, so of a product the right factor is applied first. q and
// -q are one rotation. The functions are those of the library qvr; none of them is inline, so that
// a program's compiler options cannot change a bit.
#pragma once

#include "vec4.h"

#include <cstdint>

namespace qvr {

inline constexpr double kPiDouble = 0x1.921fb54442d18p1;  // pi

struct Vec3d {
    double x, y, z;
};

// Three angles, the angle about X in x, whatever the order in which they are applied.
struct Eulerd {
    double x, y, z;
};

struct Quatd {
    double x = 0, y = 0, z = 0, w = 1;
};

// Four lanes as doubles, exactly, and back, rounded.
Quatd wideQuaternion(_vec4 q) noexcept;
Eulerd wideAngles(_vec4 angles) noexcept;
_vec4 narrow(Quatd const& q) noexcept;
_vec4 narrow(Eulerd const& angles) noexcept;

// b, then a; not normalised.
Quatd operator*(Quatd const& a, Quatd const& b) noexcept;
Quatd conjugate(Quatd const& q) noexcept;

// q over its length, also where its square would over- or underflow; NaN for a zero quaternion, for
// an infinity or a NaN.
Quatd normalized(Quatd const& q) noexcept;

// v rotated by a unit quaternion; one of another length also scales by its square.
Vec3d rotated(Quatd const& q, Vec3d const& v) noexcept;

// The angle of the rotation that leads from a to b, both unit: in [0, pi], within 1e-15.
double angleBetween(Quatd const& a, Quatd const& b) noexcept;

// The rotation of an angle triple, within 3e-15 and of length 1 within 1e-15. An odd order is the
// even one below it; numbers outside 0 to 12 give no rotation. NaN for an angle beyond 2^20.
Quatd rotationOf(std::int32_t order, Eulerd const& angles) noexcept;

// The angle triple of a unit quaternion: outer angles in [-pi, pi], the middle one in [-pi/2,
// pi/2]; for order 12 all in [-pi, pi]. Where only the sum or the difference of the outer angles is
// known, at a quarter turn in the middle, they are alike but for the sign; at the antipode of order
// 12, where the X axis is turned to its opposite, the twist is 0. Zeros for numbers outside 0 to
// 12.
// Method: E. Bernardes and S. Viollet, "Quaternion to Euler angles conversion: a direct, general
//         and computationally efficient method", PLoS ONE 17, 2022: no digits are lost at a quarter
//         turn.
// Error:  the triple's rotation is within 3e-15 of q.
Eulerd anglesOf(std::int32_t order, Quatd const& q) noexcept;

// Of all angle triples of the same rotation the one that is nearest to another triple, by the sum
// of the squares of the differences, so that a curve does not jump. Within locked of a quarter turn
// or of the antipode, in radians, the angle that nearly nothing depends on is taken from near.
// Error:  the triple's rotation is within 1e-14 of q, or within locked.
Eulerd anglesNear(std::int32_t order, Quatd const& q, Eulerd const& near,
                  double locked = 0x1p-48) noexcept;

}  // namespace qvr
