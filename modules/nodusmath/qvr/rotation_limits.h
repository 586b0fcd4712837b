// How far a joint may turn: ranges of its angles, or a range of twist and a cone of swing.
//
// Quaternions are rotations in the joint's own space (RotationSpace::inner of rotation_space.h), of
// any length but 0; what comes back has length 1. Angles are in radians.
//
// A rotation counts as inside when it is no farther outside than kWithin: what was brought inside
// stays as it is, to the bit, when it is brought inside again.
//
// Edges: an empty range lets nothing in: nothing is inside, everything is infinitely far outside,
// and the nearest rotation is NaN in every lane. The same are the results for a zero quaternion,
// for NaN and for an infinity. Ends beyond 2^19 rad are no ends. All functions are pure.
#pragma once

#include "range.h"
#include "rotation.h"

#include <cstdint>

namespace qvr {

inline constexpr double kWithin = 0x1p-45;  // 2.8e-14 rad

// Slows a value down towards both ends of a range: unchanged in the middle, inside however far the
// value goes; value, slope and curvature are continuous. softness, from 0 to 1, is the part of each
// half of the range in which it slows down: 0 simply stops at the ends. With m the width of that
// part and t how far the value is in it, over m, the result is m t / sqrt(1 + t^2) far in it: a
// value at the end comes out 0.3 of the part before it.
// Edge: an empty range and NaN give NaN; a range without one of its ends stops at the other.
double softened(double value, Range const& range, double softness) noexcept;

// A range for each angle of an order of rotation_order.h. Orders outside 0 to 12 know one rotation,
// that of no angles.
struct AngleLimits {
    std::int32_t order = 0;
    Range x, y, z;

    // Whether the angles of the rotation, by whole turns and in one of their kinds, are in range.
    bool isInside(Quatd const& q) const noexcept;

    // The angle of the rotation that leads from q to the nearest one inside: 0 inside.
    double outsideBy(Quatd const& q) const noexcept;

    // Of the rotations inside the one that is nearest to q by that angle, and q itself inside. For
    // orders 0 to 11 all ends and pairs of ends are tried, each in closed form; for order 12 also
    // maxima of one variable, which are told from each other when they are 0.1 rad apart.
    Quatd nearest(Quatd const& q) const noexcept;
    // Its angles, all in range.
    Eulerd nearestAngles(Quatd const& q) const noexcept;

    // Each angle softened, of the triple of the rotation that is nearest to the middle of the
    // ranges. Half a turn from there, where that triple changes, the result jumps.
    Quatd soften(Quatd const& q, double softness) const noexcept;
};

// A twist about X, then a swing about an axis in the YZ plane, as in order 12: a range of twist,
// and a cone of swing that is an ellipse in the swing's axis times the tangent of half its angle:
// (y / tan(swingY / 2))^2 + (z / tan(swingZ / 2))^2 <= 1. swingY and swingZ are how far it may
// swing about Y and about Z alone, in [0, pi]: below 0 or NaN lets nothing in, above pi is pi, and
// where one of them is pi, the other still limits. (Twist and swing for joints: P. Baerlocher,
// R. Boulic, "Parametrization and range of motion of the ball-and-socket joint", 2001.)
struct TwistSwingLimits {
    Range twist;
    double swingY = kPiDouble, swingZ = kPiDouble;

    // As above. A swing of half a turn has every twist, about an axis that turns with it.
    bool isInside(Quatd const& q) const noexcept;
    double outsideBy(Quatd const& q) const noexcept;
    // The nearest may have another twist than q, even if that is in range: on an ellipse a little
    // twist brings the swing nearer to the long axis. Of two that are equally near it is one.
    Quatd nearest(Quatd const& q) const noexcept;

    // Twist and swing softened, the swing along its direction or, where the cone has no width,
    // about the axis that is left. The result jumps at a swing of half a turn, and half a turn of
    // twist from the middle of its range.
    Quatd soften(Quatd const& q, double softness) const noexcept;
};

}  // namespace qvr
