// EulerToQuaternion and QuaternionToEuler, and the functions and the table behind them.
#include "support/kernel_call.h"
#include "support/rotations.h"

#include "kernels.h"
#include "qvr/qvrtransform.h"

#include <limits>
#include <numbers>

using namespace nodusmath;
using namespace nodus::test;

namespace {

constexpr Int32 kTwistSwing = 12;
constexpr float kHalfPi = std::bit_cast<float>(0x3FC90FDBu);

Quaternion toQuaternion(Float4 const& angles, Int32 order)
{
    return call<Quaternion>(NodusEulerToQuaternion_Solve, angles, order);
}
Float4 toAngles(Quaternion const& q, Int32 order)
{
    return call<Float4>(NodusQuaternionToEuler_Solve, q, order);
}

float& lane(Float4& v, std::int32_t axis) { return (&v.x)[axis]; }

Float4 randomAngles(Random& random, Int32 order, float middle)
{
    Float4 angles = {random.between(-3.1f, 3.1f), random.between(-3.1f, 3.1f),
                     random.between(-3.1f, 3.1f), 0};
    if (order < kTwistSwing)
        lane(angles, QvEulerAxis[order][1]) = middle;
    return angles;
}

Rotation exactRotation(Float4 angles, Int32 order)
{
    Rotation q = {0, 0, 0, 1};
    for (std::int32_t const axis : QvEulerAxis[order])
        q = product(about(axis, lane(angles, axis)), q);
    return q;
}

}  // namespace

TEST(Euler, AxesAreAppliedInTheOrderOfTheTable)
{
    constexpr char const* kSequences[] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
    Random random;
    for (Int32 order = 0; order < kTwistSwing; ++order) {
        auto const& axes = QvEulerAxis[order];
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ("XYZ"[axes[i]], kSequences[order / 2][i]) << order;
        for (int i = 0; i < 500; ++i) {
            Float4 const angles = randomAngles(random, order, random.between(-3, 3));
            Rotation const expected = exactRotation(angles, order);
            // Three sines or cosines with an error of 1.7e-6 each in every term.
            EXPECT_LT(difference(wide(toQuaternion(angles, order)), expected), 7e-6) << order;
            if (order % 2 == 1 && order > 1) {
                EXPECT_EQ(bits(toQuaternion(angles, order)), bits(toQuaternion(angles, order - 1)));
            }
        }
    }
}

TEST(Euler, NoAngleIsNoRotationToTheBit)
{
    Float4 const none = {0, -0.0f, 0, std::numeric_limits<float>::quiet_NaN()};
    for (Int32 order = 0; order <= kTwistSwing; ++order) {
        auto const q = toQuaternion(none, order);
        if (order == kTwistSwing) {
            EXPECT_EQ(bits(Float3{q.x, q.y, q.z}), bits(Float3{0, 0, 0}));
            EXPECT_NEAR(q.w, 1, kEstimated);
            continue;
        }
        float const zero = order == 0 ? 0.0f : -0.0f;
        EXPECT_EQ(bits(q), bits(Quaternion{zero, zero, zero, 1})) << order;

        // The negated arc sines give -0.
        Float4 expected = {0, 0, 0, 0};
        if (order / 2 == 0 || order / 2 == 2 || order / 2 == 4)
            lane(expected, QvEulerAxis[order][1]) = -0.0f;
        EXPECT_EQ(bits(toAngles({0, 0, 0, 1}, order)), bits(expected)) << order;
    }
}

TEST(Euler, RoundTripsShortOfTheQuarterTurn)
{
    Random random;
    for (Int32 order = 0; order < kTwistSwing; ++order) {
        for (int i = 0; i < 2000; ++i) {
            Float4 const angles = randomAngles(random, order, random.between(-1.4f, 1.4f));
            auto const back = toAngles(toQuaternion(angles, order), order);
            // The arc sine's 2.3e-5, and five to six times the error of the sines where the middle
            // cosine is small.
            EXPECT_NEAR(back.x, angles.x, 4e-5) << order;
            EXPECT_NEAR(back.y, angles.y, 4e-5) << order;
            EXPECT_NEAR(back.z, angles.z, 4e-5) << order;
            EXPECT_EQ(bits(back.w), 0u);
            EXPECT_EQ(bits(toAngles(toQuaternion(angles, order), order ^ 1)), bits(back));
        }
    }
}

TEST(Euler, AtBothPolesOneAngleTakesTheWholeRest)
{
    Random random;
    for (Int32 order = 0; order < kTwistSwing; ++order) {
        for (float const pole : {kHalfPi, -kHalfPi}) {
            for (int i = 0; i < 500; ++i) {
                // Not by the kernel: its sines may stop short of where the angles lock.
                Quaternion const q =
                    rounded(exactRotation(randomAngles(random, order, pole), order));
                Float4 angles = toAngles(q, order);
                EXPECT_EQ(lane(angles, QvEulerAxis[order][1]), pole) << order;
                EXPECT_TRUE(lane(angles, QvEulerAxis[order][0]) == 0 ||
                            lane(angles, QvEulerAxis[order][2]) == 0);
                // Twice the error of an arc tangent, halved, and those of the sines.
                EXPECT_LT(difference(wide(toQuaternion(angles, order)), wide(q)), 2e-5)
                    << order << " " << pole;
            }
        }
    }
}

TEST(Euler, TheLockIncludesItsThreshold)
{
    constexpr std::uint32_t kThreshold = 0x3EFFFFDEu;
    // Two lanes whose product is the test value, the first of them 1; v = 1/2 is sign * pi/2.
    struct Row {
        Int32 order;
        float Quaternion::*one, Quaternion::*other;
        float sign;
    };
    constexpr Row kRows[] = {
        {0, &Quaternion::x, &Quaternion::z, -1}, {2, &Quaternion::x, &Quaternion::y, 1},
        {4, &Quaternion::x, &Quaternion::y, -1}, {6, &Quaternion::y, &Quaternion::z, 1},
        {8, &Quaternion::y, &Quaternion::z, -1}, {10, &Quaternion::x, &Quaternion::z, 1},
    };
    for (auto const& [order, one, other, sign] : kRows) {
        for (float const side : {1.0f, -1.0f}) {
            Quaternion q = {0, 0, 0, 0};
            q.*one = 1;
            q.*other = side * std::bit_cast<float>(kThreshold);
            Float4 angles = toAngles(q, order);
            EXPECT_EQ(lane(angles, QvEulerAxis[order][1]), side * sign * kHalfPi) << order;
            q.*other = side * std::bit_cast<float>(kThreshold - 1);
            angles = toAngles(q, order);
            EXPECT_NE(lane(angles, QvEulerAxis[order][1]), side * sign * kHalfPi) << order;
            EXPECT_NEAR(lane(angles, QvEulerAxis[order][1]), side * sign * kHalfPi, 0.0021);
        }
    }
}

TEST(Euler, TwistAndSwingRoundTrip)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        auto const swing = [&] { return random.between(0.1f, 2.5f) * (i % 2 == 0 ? 1.0f : -1.0f); };
        Float4 const angles = {random.between(-3.1f, 3.1f), swing(), swing(), 0};
        auto const back = toAngles(toQuaternion(angles, kTwistSwing), kTwistSwing);
        // The square roots magnify rounding where one swing is small and the other is large.
        EXPECT_NEAR(back.x, angles.x, 1e-4);
        EXPECT_NEAR(back.y, angles.y, 2e-4) << angles.z;
        EXPECT_NEAR(back.z, angles.z, 2e-4) << angles.y;
    }
    // A twist alone, and a swing alone.
    EXPECT_LT(difference(wide(toQuaternion({2, 0, 0, 0}, kTwistSwing)), about(0, 2)), 3e-6);
    EXPECT_LT(difference(wide(toQuaternion({0, 0, -2, 0}, kTwistSwing)), about(2, -2)), 3e-6);
}

TEST(Euler, TwistAndSwingAtTheirEdges)
{
    float const pi = 2 * kHalfPi;
    // The twist stands still at half a turn while |w| is 1e-6 or less, whatever the sign of x.
    constexpr float kTiny = std::bit_cast<float>(0x358637BDu);
    EXPECT_EQ(toAngles({-0.6f, 0.8f, 0, kTiny}, kTwistSwing).x, pi);
    EXPECT_LT(toAngles({-0.6f, 0.8f, 0, std::nextafter(kTiny, 1.0f)}, kTwistSwing).x, 0);
    // The X axis on its opposite: no shortest arc.
    auto const back = toAngles({0, 0, 1, 0}, kTwistSwing);
    EXPECT_EQ(back.x, pi);
    EXPECT_TRUE(std::isnan(back.y) && std::isnan(back.z));
    EXPECT_EQ(bits(back.w), 0u);
}

TEST(Euler, ZeroQuaternionsAndOtherNumbers)
{
    float const pi = std::bit_cast<float>(0x40490FDBu);
    EXPECT_EQ(bits(toAngles({0, 0, 0, 0}, 0)), bits(Float4{pi, -0.0f, pi, 0}));
    auto const fourth = toAngles({0, 0, 0, 0}, 4);
    EXPECT_EQ(fourth.x, pi);
    EXPECT_EQ(fourth.y, 0);
    auto const twist = toAngles({0, 0, 0, 0}, kTwistSwing);
    EXPECT_EQ(twist.x, pi);
    EXPECT_TRUE(std::isnan(twist.y) && std::isnan(twist.z));

    Float4 const angles = {1, 2, 3, 4};
    Quaternion const q = {0.5f, 0.5f, 0.5f, 0.5f};
    for (Int32 const order :
         {-1, 13, 14, std::numeric_limits<Int32>::min(), std::numeric_limits<Int32>::max()}) {
        EXPECT_EQ(bits(toQuaternion(angles, order)), bits(Quaternion{0, 0, 0, 1})) << order;
        EXPECT_EQ(bits(toAngles(q, order)), bits(Float4{0, 0, 0, 0})) << order;
    }
}

TEST(Euler, TheExportedFunctionsGiveTheKernelsBits)
{
    Random random;
    for (Int32 order = -1; order <= 13; ++order) {
        qvr::CGRotationOrder const rotationOrder{order};
        Float4 const angles = {random.between(-3, 3), random.between(-3, 3), random.between(-3, 3),
                               random.between(-3, 3)};
        Quaternion const q = random.quaternion();
        EXPECT_EQ(bits(rotationOrder.V2Q(qvr::load(&angles.x))), bits(toQuaternion(angles, order)));
        EXPECT_EQ(bits(rotationOrder.Q2V(qvr::load(&q.x))), bits(toAngles(q, order)));
    }
}
