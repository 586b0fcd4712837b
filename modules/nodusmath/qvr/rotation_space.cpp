// Rotation spaces: what locked angles leave is a box whose ranges are points or everything.
#include "qvr/rotation_space.h"

#include "qvr/angle_box.h"
#include "qvr/turns.h"

namespace qvr {

namespace {

bool isFree(Freedom const& freedom) noexcept { return freedom.x && freedom.y && freedom.z; }

Eulerd locked(RotationSpace const& space, Eulerd const& angles) noexcept
{
    return {space.freedom.x ? angles.x : space.rest.x, space.freedom.y ? angles.y : space.rest.y,
            space.freedom.z ? angles.z : space.rest.z};
}

// Whether two angles are the same but for whole turns and rounding.
bool areAlike(double a, double b, double turns) noexcept
{
    return magnitude(wrappedNear(a, b, turns) - b) < 1e-9;
}

// A triple in the box of what the locked angles allow.
Eulerd nearestOf(RotationSpace const& space, Quatd const& inner) noexcept
{
    auto const range = [](bool isFree, double rest) {
        return isFree ? Range{} : Range{rest, rest};
    };
    return angleBox::nearestAngles(
        {space.order,
         {range(space.freedom.x, space.rest.x), range(space.freedom.y, space.rest.y),
          range(space.freedom.z, space.rest.z)}},
        inner);
}

}  // namespace

Quatd RotationSpace::outer(Quatd const& inner) const noexcept { return pre * inner * post; }
Quatd RotationSpace::inner(Quatd const& outer) const noexcept
{
    return conjugate(pre) * outer * conjugate(post);
}

Quatd RotationSpace::rotation(Eulerd const& angles) const noexcept
{
    return outer(rotationOf(order, locked(*this, angles)));
}

Eulerd RotationSpace::angles(Quatd const& q, Eulerd const& near) const noexcept
{
    Quatd const rotation = inner(q);
    if (isFree(freedom))
        return anglesNear(order, rotation, near);
    Eulerd const wanted = locked(*this, near), found = nearestOf(*this, rotation);
    // Another triple of the same rotation, if that leaves the locked angles where they are.
    Eulerd const other = anglesNear(order, rotationOf(order, found), wanted);
    double const turns = order == rotationOrder::kTwistSwing ? 2 : 1;
    if ((freedom.x || areAlike(other.x, rest.x, 1)) &&
        (freedom.y || areAlike(other.y, rest.y, turns)) &&
        (freedom.z || areAlike(other.z, rest.z, turns)))
        return locked(*this, other);
    return locked(*this, {wrappedNear(found.x, near.x), wrappedNear(found.y, near.y, turns),
                          wrappedNear(found.z, near.z, turns)});
}

Quatd RotationSpace::nearest(Quatd const& q) const noexcept
{
    return isFree(freedom) ? q : outer(rotationOf(order, nearestOf(*this, inner(q))));
}

Eulerd converted(RotationSpace const& from, Eulerd const& angles, RotationSpace const& to,
                 Eulerd const& near) noexcept
{
    return to.angles(from.rotation(angles), near);
}

}  // namespace qvr
