// Random rotations and angles.
#pragma once

#include "qvr/random.h"

#include "qvr/rotation.h"

#include <numbers>

namespace nodus::test {

inline constexpr double kHalfTurn = std::numbers::pi;

// Of all alike.
inline qvr::Quatd rotationIn(Random& random)
{
    for (;;) {
        auto const lane = [&random] { return random.between(-1, 1); };
        qvr::Quatd const q{lane(), lane(), lane(), lane()};
        double const square = q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w;
        if (square > 0.01 && square < 1)
            return qvr::normalized(q);
    }
}
inline qvr::Eulerd anglesIn(Random& random, double low, double high)
{
    auto const lane = [=, &random] { return random.between(low, high); };
    return {lane(), lane(), lane()};
}
inline qvr::Eulerd operator+(qvr::Eulerd const& a, qvr::Eulerd const& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline double distance(qvr::Eulerd const& a, qvr::Eulerd const& b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}
inline double& lane(qvr::Eulerd& angles, int axis)
{
    return axis == 0 ? angles.x : axis == 1 ? angles.y : angles.z;
}

}  // namespace nodus::test
