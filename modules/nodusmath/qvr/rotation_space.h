// A joint's local rotation as animation systems keep it: a pre-rotation, three angles in one of the
// thirteen orders of rotation_order.h, a post-rotation, and which of the angles move.
//
// The rotation is pre * (that of the angles) * post: post is applied first. Where a format keeps
// the inverse of its post-rotation, or names them the other way round, the caller conjugates or
// swaps. Angles are in radians, pre and post of length 1. All functions are pure; NaN gives NaN.
#pragma once

#include "rotation.h"

#include <cstdint>

namespace qvr {

// The angles that move, whose number is that of the degrees of freedom.
struct Freedom {
    bool x = true, y = true, z = true;
};

struct RotationSpace {
    std::int32_t order = 0;
    Quatd pre{}, post{};
    Freedom freedom{};
    Eulerd rest{};  // what locked angles keep

    // A rotation between pre and post, where the angles act, to the whole and back.
    Quatd outer(Quatd const& inner) const noexcept;
    Quatd inner(Quatd const& outer) const noexcept;

    // The rotation of three angles; of a locked one that of rest is taken. Length 1 within 1e-15.
    Quatd rotation(Eulerd const& angles) const noexcept;

    // The angles of the rotation that is nearest to q, of length 1, among those that the locked
    // angles allow. Of all triples of that rotation it is the one nearest to near, so that a curve
    // does not jump: angles may be beyond a turn, locked ones are those of rest, and where two axes
    // fall together, their angles share what lies between.
    // Error:  with all angles free, the triple's rotation is within 1e-14 of q. Otherwise it is the
    //         nearest within 1e-12; a swing of order 12 that is locked about one axis is searched
    //         for by 64 samples, which could miss one of two that are equally near.
    // Method: anglesNear of rotation.h. Locked angles leave a sum of sines and cosines of the
    //         others, whose greatest value is known.
    Eulerd angles(Quatd const& q, Eulerd const& near) const noexcept;

    // The rotation of those angles: the nearest to q that the locked angles allow, q if none are.
    Quatd nearest(Quatd const& q) const noexcept;
};

// Angles of one space as those of another, of the same rotation or, where that has locked angles,
// of the nearest; as above, near another triple of that space.
Eulerd converted(RotationSpace const& from, Eulerd const& angles, RotationSpace const& to,
                 Eulerd const& near) noexcept;

}  // namespace qvr
