// Rotations in double and rotation spaces: angles and back, also where two axes fall together, what
// locked angles leave, and from space to space.
#include "qvr/rotations.h"

#include "qvr/circular.h"
#include "qvr/qvrtransform.h"
#include "qvr/rotation_order.h"
#include "qvr/rotation_space.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace nodus::test;
using namespace qvr;

namespace {

constexpr int kTwistSwing = rotationOrder::kTwistSwing;

Quatd aboutAxis(int axis, double angle)
{
    double const s = std::sin(angle / 2);
    return {axis == 0 ? s : 0, axis == 1 ? s : 0, axis == 2 ? s : 0, std::cos(angle / 2)};
}

// Calls check(order, angles) for random angles, and for such near where two axes fall together.
template <typename Check> void forTriples(Check check)
{
    Random random;
    for (int order = 0; order <= kTwistSwing; ++order)
        for (int i = 0; i < 2000; ++i) {
            SCOPED_TRACE(order);
            Eulerd angles = anglesIn(random, -7, 7);
            if (i % 2 == 1) {
                int const axis = order == kTwistSwing ? 1 + i / 2 % 2 : QvEulerAxis[order][1];
                double const pole = order == kTwistSwing ? kHalfTurn : kHalfTurn / 2;
                double const off = std::ldexp(random.between(-1, 1), -random.integer(0, 60));
                lane(angles, axis) = (i % 4 == 1 ? pole : -pole) + off;
            }
            check(order, angles, random);
        }
}

RotationSpace spaceIn(Random& random, int order)
{
    RotationSpace space{order, rotationIn(random), rotationIn(random), {}, anglesIn(random, -3, 3)};
    int const moving = random.integer(0, 7);
    space.freedom = {(moving & 1) != 0, (moving & 2) != 0, (moving & 4) != 0};
    if (random.integer(0, 3) == 0)
        space.rest = {0, 0, 0};
    if (random.integer(0, 9) == 0 && order != kTwistSwing)
        lane(space.rest, QvEulerAxis[order][1]) = kHalfTurn / 2;
    return space;
}

}  // namespace

TEST(Circular, FunctionsAreAsNearAsStated)
{
    Random random;
    for (int i = 0; i < 200000; ++i) {
        double const angle = i % 2 == 0 ? random.spread(20) : random.between(-7, 7);
        auto const [sine, cosine] = sinCos(angle);
        ASSERT_LE(std::abs(sine - std::sin(static_cast<long double>(angle))), 1.8e-16L) << angle;
        ASSERT_LE(std::abs(cosine - std::cos(static_cast<long double>(angle))), 1.8e-16L) << angle;
        double const num = random.spread(9), den = random.spread(9);
        long double const exact = std::atan2(static_cast<long double>(num), den);
        ASSERT_LE(std::abs(arctangent2(num, den) - exact), den > 0 ? 2.8e-16L : 5.6e-16L);
    }
    EXPECT_TRUE(std::isnan(sinCos(0x1.1p20).sine));
    for (double const num : {0.0, -0.0})
        for (double const den : {0.0, -0.0, 1.0, -1.0})
            EXPECT_EQ(std::signbit(arctangent2(num, den)), std::signbit(num)) << den;
}

TEST(Rotation, AnglesAreAppliedInTheirOrder)
{
    forTriples([](int order, Eulerd angles, Random&) {
        Quatd const q = rotationOf(order, angles);
        if (order < kTwistSwing) {
            Quatd product;
            for (int const axis : QvEulerAxis[order])
                product = aboutAxis(axis, lane(angles, axis)) * product;
            ASSERT_LT(angleBetween(q, product), 3e-15);
        }
        // The four lanes of a kernel mean the same.
        auto const narrowed = quaternionOfAngles(order, narrow(angles));
        ASSERT_LT(angleBetween(q, normalized(wideQuaternion(narrowed))), 1e-5);
    });
    EXPECT_EQ(rotationOf(13, {1, 2, 3}).w, 1);
}

TEST(Rotation, AnglesOfARotationGiveItBack)
{
    forTriples([](int order, Eulerd const& angles, Random& random) {
        Quatd const q = rotationOf(order, angles);
        ASSERT_NEAR(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w, 1, 1e-15);
        Eulerd const found = anglesOf(order, q);
        ASSERT_LT(angleBetween(q, rotationOf(order, found)), 3e-15);
        for (double const angle : {found.x, found.y, found.z})
            ASSERT_LE(std::abs(angle), kHalfTurn);
        Eulerd const near = angles + anglesIn(random, -9, 9);
        ASSERT_LT(angleBetween(q, rotationOf(order, anglesNear(order, q, near))), 1e-14);
    });
}

// A curve that was rotated into quaternions comes back as it was, over any number of turns.
TEST(Rotation, AnglesNearOthersDoNotJump)
{
    forTriples([](int order, Eulerd const& angles, Random& random) {
        Quatd const q = rotationOf(order, angles);
        Eulerd const middle = order == kTwistSwing ? anglesOf(order, q) : angles;
        double const conditioned = order == kTwistSwing
                                       ? std::abs(std::cos(middle.y / 2) * std::cos(middle.z / 2))
                                       : std::abs(std::cos((&middle.x)[QvEulerAxis[order][1]]));
        if (conditioned < 0.15)
            return;
        Eulerd const found = anglesNear(order, q, angles + anglesIn(random, -0.03, 0.03));
        ASSERT_LT(distance(found, angles), 1e-13);
    });
    // At a quarter turn the outer angles share what lies between, from wherever the curve comes.
    for (int order = 0; order < kTwistSwing; ++order) {
        Eulerd angles{0.4, 0.4, 0.4};
        lane(angles, QvEulerAxis[order][1]) = kHalfTurn / 2;
        Eulerd const near = angles + Eulerd{1e-3, 2e-3, 3e-3};
        Eulerd const found = anglesNear(order, rotationOf(order, angles), near);
        EXPECT_LT(distance(found, near), distance(angles, near) + 1e-15) << order;
    }
}

TEST(RotationSpace, AnglesAreBetweenPreAndPost)
{
    Random random;
    for (int i = 0; i < 13 * 200; ++i) {
        RotationSpace space = spaceIn(random, i % 13);
        space.freedom = {};
        Eulerd const angles = anglesIn(random, -3, 3);
        Quatd const q = space.rotation(angles);
        ASSERT_LT(angleBetween(q, space.pre * rotationOf(space.order, angles) * space.post), 1e-15);
        ASSERT_LT(angleBetween(space.outer(space.inner(q)), q), 2e-15);
        ASSERT_LT(angleBetween(space.rotation(space.angles(q, {})), q), 1e-14);

        // The same rotation in another space, and back where it came from.
        RotationSpace other = spaceIn(random, random.integer(0, 12));
        other.freedom = {};
        Eulerd const there = converted(space, angles, other, {});
        ASSERT_LT(angleBetween(other.rotation(there), q), 1e-14);
        Eulerd const back = converted(other, there, space, angles);
        ASSERT_LT(angleBetween(space.rotation(back), q), 2e-14);
        ASSERT_LT(distance(back, angles), 1e-9);
    }
}

TEST(RotationSpace, LockedAnglesLeaveTheNearestRotation)
{
    Random random;
    for (int i = 0; i < 13 * 300; ++i) {
        RotationSpace const space = spaceIn(random, i % 13);
        SCOPED_TRACE(i);
        Quatd const q = rotationIn(random);
        Eulerd const near = anglesIn(random, -9, 9), angles = space.angles(q, near);
        ASSERT_TRUE((space.freedom.x || angles.x == space.rest.x) &&
                    (space.freedom.y || angles.y == space.rest.y) &&
                    (space.freedom.z || angles.z == space.rest.z));
        Quatd const nearest = space.nearest(q);
        ASSERT_LT(angleBetween(space.rotation(angles), nearest), 1e-13);
        ASSERT_LT(angleBetween(space.nearest(nearest), nearest), 1e-13);
        double const left = angleBetween(q, nearest);
        for (int k = 0; k < 60; ++k) {
            double const step = k < 20 ? 4 : std::ldexp(1.0, -k / 2);
            Quatd const allowed = space.rotation(angles + anglesIn(random, -step, step));
            ASSERT_LE(left, angleBetween(q, allowed) + 1e-12);
            // Whole turns and other triples of the same rotation are no nearer to near.
            Eulerd const turned{angles.x + 2 * kHalfTurn * random.integer(-1, 1),
                                angles.y + 4 * kHalfTurn * random.integer(-1, 1),
                                angles.z + 4 * kHalfTurn * random.integer(-1, 1)};
            Eulerd const other{space.freedom.x ? turned.x : angles.x,
                               space.freedom.y ? turned.y : angles.y,
                               space.freedom.z ? turned.z : angles.z};
            ASSERT_LE(distance(angles, near), distance(other, near) + 1e-12);
        }
    }
}

TEST(RotationSpace, WhatIsNoRotationHasNoAngles)
{
    double const nothing = std::numeric_limits<double>::quiet_NaN();
    for (int order = 0; order <= kTwistSwing; ++order)
        for (bool const isFree : {true, false}) {
            RotationSpace const space{order, {}, {}, {true, isFree, true}, {}};
            EXPECT_TRUE(std::isnan(space.angles({0, nothing, 0, 1}, {}).x)) << order;
            EXPECT_TRUE(std::isnan(space.nearest({0, nothing, 0, 1}).y)) << order;
        }
}
