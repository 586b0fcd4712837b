// Rotation limits: what is nearest inside is inside, stays where it is, and nothing that is tried
// is nearer; slowing down before an end; edges.
#include "qvr/rotations.h"

#include "qvr/rotation_limits.h"
#include "qvr/rotation_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

using namespace nodus::test;
using namespace qvr;

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool areSameBits(Quatd const& a, Quatd const& b)
{
    using Bits = std::array<std::uint64_t, 4>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

Range rangeIn(Random& random)
{
    double const low = random.between(-4, 4);
    switch (random.integer(0, 4)) {
    case 0:
        return {};
    case 1:
        return {low, low};
    case 2:
        return {-random.between(0, 2), random.between(0, 2)};
    case 3:
        return {low, kInfinity};
    default:
        return {low, low + random.between(0, 6)};
    }
}
// A value in the range: anywhere, or next to another that is in it.
double valueIn(Random& random, Range const& range)
{
    return range.highest - range.lowest < 7 ? random.between(range.lowest, range.highest)
           : range.lowest > -9              ? range.lowest + random.between(0, 7)
                                            : random.between(-kHalfTurn, kHalfTurn);
}
double besideIn(Random& random, Range const& range, double value, double step)
{
    return std::clamp(value + random.between(-step, step), range.lowest, range.highest);
}
bool isIn(Range const& range, double v) { return range.lowest <= v && v <= range.highest; }

AngleLimits limitsIn(Random& random, int order)
{
    return {order, rangeIn(random), rangeIn(random), rangeIn(random)};
}

TwistSwingLimits coneIn(Random& random)
{
    auto const swing = [&random] {
        double const any = random.between(0, kHalfTurn);
        double const swings[] = {any,       any, any,        0,
                                 kHalfTurn, 4,   1e-3 * any, kHalfTurn - 1e-3 * any};
        return swings[random.integer(0, 7)];
    };
    double const first = swing();
    return {rangeIn(random), first, random.integer(0, 3) == 0 ? first : swing()};  // some are round
}
// The swing at part of the way to the edge, in a direction.
Quatd inCone(TwistSwingLimits const& limits, double twist, double part, double direction)
{
    auto const tangent = [](double swing) { return std::tan(std::min(swing, kHalfTurn) / 2); };
    double const y = part * tangent(limits.swingY) * std::cos(direction);
    double const z = part * tangent(limits.swingZ) * std::sin(direction);
    return normalized({0, y, z, 1}) * Quatd{std::sin(twist / 2), 0, 0, std::cos(twist / 2)};
}

// What holds for limits of both kinds.
template <typename Limits> void checkNearest(Limits const& limits, Quatd const& q)
{
    Quatd const nearest = limits.nearest(q);
    ASSERT_NEAR(limits.outsideBy(q), angleBetween(q, nearest), 2 * kWithin);
    ASSERT_EQ(limits.isInside(q), areSameBits(nearest, q));
    ASSERT_TRUE(limits.isInside(nearest));
    ASSERT_EQ(limits.outsideBy(nearest), 0);
    ASSERT_TRUE(areSameBits(limits.nearest(nearest), nearest));
    // q and -q are one, of any length.
    ASSERT_NEAR(limits.outsideBy({-3 * q.x, -3 * q.y, -3 * q.z, -3 * q.w}), limits.outsideBy(q),
                1e-12);
    for (double const softness : {0.0, 0.3, 1.0})
        ASSERT_TRUE(limits.isInside(limits.soften(q, softness))) << softness;
}

}  // namespace

TEST(AngleLimits, BringToTheNearestRotationInside)
{
    Random random;
    for (int i = 0; i < 13 * 400; ++i) {
        AngleLimits const limits = limitsIn(random, i % 13);
        Quatd const q = rotationIn(random);
        SCOPED_TRACE(i);
        checkNearest(limits, q);
        Eulerd const angles = limits.nearestAngles(q);
        ASSERT_TRUE(isIn(limits.x, angles.x) && isIn(limits.y, angles.y) &&
                    isIn(limits.z, angles.z));
        ASSERT_LT(angleBetween(rotationOf(limits.order, angles), limits.nearest(q)), 2 * kWithin);
        double const left = limits.outsideBy(q);
        for (int k = 0; k < 60; ++k) {
            double const step = std::ldexp(1.0, -k / 2);
            Eulerd const other = k < 30
                                     ? Eulerd{valueIn(random, limits.x), valueIn(random, limits.y),
                                              valueIn(random, limits.z)}
                                     : Eulerd{besideIn(random, limits.x, angles.x, step),
                                              besideIn(random, limits.y, angles.y, step),
                                              besideIn(random, limits.z, angles.z, step)};
            Quatd const inside = rotationOf(limits.order, other);
            ASSERT_LE(left, angleBetween(q, inside) + 1e-12);
            ASSERT_TRUE(limits.isInside(inside));
        }
    }
}

TEST(TwistSwingLimits, BringToTheNearestRotationInside)
{
    Random random;
    for (int i = 0; i < 1200; ++i) {
        TwistSwingLimits const limits = coneIn(random);
        Quatd const drawn = rotationIn(random);
        // Sometimes a swing of half a turn.
        Quatd const q = i % 8 == 0 ? normalized({0, drawn.y, drawn.z, 0}) : drawn;
        SCOPED_TRACE(i);
        checkNearest(limits, q);
        double left = limits.outsideBy(q), best = kInfinity, twist = 0, part = 0, direction = 0;
        for (int k = 0; k < 200; ++k) {
            double const step = std::ldexp(1.0, -k / 8);
            double const t = k < 60 ? valueIn(random, limits.twist)
                                    : besideIn(random, limits.twist, twist, step);
            double const p = k < 60 ? random.between(0, 1) : besideIn(random, {0, 1}, part, step);
            double const d = k < 60 ? random.between(-4, 4) : besideIn(random, {}, direction, step);
            Quatd const inside = inCone(limits, t, p, d);
            ASSERT_LT(limits.outsideBy(inside), 1e-9);
            double const angle = angleBetween(q, inside);
            if (angle < best)
                best = angle, twist = t, part = p, direction = d;
        }
        ASSERT_LE(left, best + 1e-12);
    }
}

TEST(Softened, ValuesSlowDownBeforeTheEnd)
{
    Range const range{-1, 3};
    for (double const softness : {0.05, 0.5, 1.0}) {
        constexpr double kStep = 0x1p-12;
        double slope = 1;
        for (int i = 0; i < 8 / kStep; ++i) {
            double const v = 1 + i * kStep, from = softened(v, range, softness),
                         to = softened(v + kStep, range, softness);
            ASSERT_TRUE(isIn(range, from));
            // Symmetric; unchanged up to where the soft part begins.
            ASSERT_NEAR(softened(2 - v, range, softness), 2 - from, 1e-15);
            ASSERT_TRUE(v > 3 - 2 * softness || from == v);
            // The slope falls from 1 to 0, by no jump.
            double const next = (to - from) / kStep;
            ASSERT_TRUE(next <= slope + 1e-11 && next >= 0);
            ASSERT_LT(slope - next, kStep / (2 * softness));
            slope = next;
        }
        EXPECT_LT(slope, 0.02);
    }
    EXPECT_EQ(softened(5, range, 0), 3);
    EXPECT_EQ(softened(1e300, range, 1), 3);
    EXPECT_EQ(softened(5, {-kInfinity, 3}, 0.5), 3);
    EXPECT_EQ(softened(-5, {-kInfinity, 3}, 0.5), -5);
    EXPECT_EQ(softened(5, range, kNothing), 3);
    EXPECT_TRUE(std::isnan(softened(kNothing, range, 0.5)));
    EXPECT_TRUE(std::isnan(softened(0, {1, -1}, 0.5)));
}

TEST(RotationLimits, Edges)
{
    Quatd const q = normalized({1, 2, 3, 4});
    auto const letsNothingIn = [](auto const& limits, Quatd const& rotation) {
        return !limits.isInside(rotation) && limits.outsideBy(rotation) == kInfinity &&
               std::isnan(limits.nearest(rotation).w) && std::isnan(limits.soften(rotation, 0.5).x);
    };
    for (Range const& empty : {Range{1, 0}, Range{kNothing, 1}, Range{0, kNothing}})
        for (int order = 0; order < 13; ++order) {
            EXPECT_TRUE(letsNothingIn(AngleLimits{order, empty, {}, {}}, q));
            EXPECT_TRUE(letsNothingIn(AngleLimits{order, {}, {}, empty}, q));
            EXPECT_TRUE(letsNothingIn(TwistSwingLimits{empty, 1, 1}, q));
        }
    EXPECT_TRUE(letsNothingIn(TwistSwingLimits{{}, -1, 1}, q));
    EXPECT_TRUE(letsNothingIn(TwistSwingLimits{{}, 1, kNothing}, q));
    for (Quatd const& none :
         {Quatd{0, 0, 0, 0}, Quatd{0, kNothing, 0, 1}, Quatd{kInfinity, 0, 0, 1}})
        for (int order = 0; order < 13; ++order) {
            EXPECT_TRUE(letsNothingIn(AngleLimits{order, {}, {}, {}}, none));
            EXPECT_TRUE(letsNothingIn(TwistSwingLimits{{-1, 1}, 1, 2}, none));
        }

    // Without limits everything is inside; ranges of a whole turn are none.
    Range const turn{1, 1 + 2 * kHalfTurn};
    for (int order = 0; order < 12; ++order)
        EXPECT_TRUE((AngleLimits{order, turn, turn, turn}).isInside(q));
    EXPECT_TRUE((TwistSwingLimits{turn}).isInside(q));
    EXPECT_EQ((AngleLimits{13, {}, {}, {}}).nearest(q).w, 1);
    // Ends farther away than angles mean anything are no ends.
    Range const far{0x1p20, 0x1p21};
    EXPECT_TRUE((TwistSwingLimits{far, 4, 4}).isInside(q));
    EXPECT_LT(angleBetween((TwistSwingLimits{far, 4, 4}).soften(q, 0.5), q), 1e-14);
    EXPECT_LT(angleBetween((AngleLimits{0, far, {}, far}).soften(q, 0.5), q), 1e-14);

    // A cone without width is a hinge about the other axis.
    TwistSwingLimits const hinge{{}, 1, 0};
    EXPECT_FALSE(hinge.isInside({0, std::sin(0.6), 0, std::cos(0.6)}));
    EXPECT_NEAR(hinge.outsideBy({0, std::sin(0.6), 0, std::cos(0.6)}), 0.2, 1e-15);
    Quatd const tilted = hinge.soften({0, std::sin(0.2), 0.01, std::cos(0.2)}, 0.1);
    EXPECT_NEAR(tilted.y / tilted.w, std::tan(0.2), 1e-3);
}
