// Angles modulo whole turns, and the axes of a rotation order.
#pragma once

#include "qvrtransform.h"
#include "rotation.h"
#include "rotation_order.h"

#include <limits>

namespace qvr {

// 2 pi is kTurn and kTurnLow more.
inline constexpr double kTurn = 2 * kPiDouble, kTurnLow = 0x1.1a62633145c07p-52;

// For |v| below 2^51.
inline double wholeNear(double v) noexcept { return (v + 0x1.8p52) - 0x1.8p52; }

// The angle plus as many periods, each of so many turns, as bring it next to near.
inline double wrappedNear(double angle, double near, double turns = 1) noexcept
{
    double const periods = turns * wholeNear((angle - near) / (turns * kTurn));
    return (angle - periods * kTurn) - periods * kTurnLow;
}
inline double wrapped(double angle) noexcept { return wrappedNear(angle, 0); }

// Whether an order is three axes one after the other.
inline bool isSequence(std::int32_t order) noexcept { return order >= 0 && order < 12; }

// The axes of such an order as they are applied; sign is 1 for X, Y, Z and its rotations.
struct AxisOrder {
    int first, second, third;
    double sign;
};
inline AxisOrder axisOrderOf(std::int32_t order) noexcept
{
    auto const& axes = QvEulerAxis[order];
    return {axes[0], axes[1], axes[2], (axes[1] - axes[0] + 3) % 3 == 1 ? 1.0 : -1.0};
}

inline double& laneOf(Eulerd& angles, int axis) noexcept
{
    return axis == 0 ? angles.x : axis == 1 ? angles.y : angles.z;
}

// Calls visit with triples of the same rotation, one of each kind that whole turns do not make:
// two, or four in order 12, where whole periods are one turn about X and two about Y and Z.
template <typename Visit> void forBranches(std::int32_t order, Eulerd const& angles, Visit visit)
{
    visit(angles);
    if (order == rotationOrder::kTwistSwing) {
        visit({angles.x, angles.y + kTurn, -angles.z});
        visit({angles.x, -angles.y, angles.z + kTurn});
        visit({angles.x, kTurn - angles.y, kTurn - angles.z});
        return;
    }
    Eulerd other{angles.x + kPiDouble, angles.y + kPiDouble, angles.z + kPiDouble};
    int const middle = axisOrderOf(order).second;
    laneOf(other, middle) = 2 * kPiDouble - laneOf(other, middle);
    visit(other);
}

// The nearest of them to a triple, whole turns taken off, among those that accept() takes.
template <typename Accept>
Eulerd nearestBranch(std::int32_t order, Eulerd const& angles, Eulerd const& near, Accept accept)
{
    double const turns = order == rotationOrder::kTwistSwing ? 2 : 1;
    Eulerd best = angles;
    double least = std::numeric_limits<double>::infinity();
    forBranches(order, angles, [&](Eulerd const& branch) {
        Eulerd const next{wrappedNear(branch.x, near.x), wrappedNear(branch.y, near.y, turns),
                          wrappedNear(branch.z, near.z, turns)};
        double const x = next.x - near.x, y = next.y - near.y, z = next.z - near.z;
        double const distance = x * x + y * y + z * z;
        if (distance < least && accept(next))
            least = distance, best = next;
    });
    return best;
}

}  // namespace qvr
