// EulerToQuaternion and QuaternionToEuler by their properties, and the functions and the table
// behind them. Edges are rows.
#include "support/rotations.h"

#include "qvr/qvrtransform.h"

#include <numbers>

using namespace nodus::test;

namespace {

constexpr Int32 kTwistSwing = 12;
constexpr float kHalfPi = std::numbers::pi_v<float> / 2;

Quaternion toQuaternion(Float4 const& angles, Int32 order)
{
    return call<Quaternion>(NodusEulerToQuaternion_Solve, angles, order);
}
Float4 toAngles(Quaternion const& q, Int32 order)
{
    return call<Float4>(NodusQuaternionToEuler_Solve, q, order);
}

Rotation exactRotation(Float4 const& angles, Int32 order)
{
    Rotation q = {0, 0, 0, 1};
    for (std::int32_t const axis : QvEulerAxis[order])
        q = product(about(axis, (&angles.x)[axis]), q);
    return q;
}

// For each order with three axes, with random outer angles and a middle one within the limit.
template <typename Check> void forAngles(float limit, Check check)
{
    Random random;
    for (Int32 order = 0; order < kTwistSwing; ++order)
        for (int i = 0; i < 1000; ++i) {
            SCOPED_TRACE(order);
            Float4 angles = random.lanes(-3.1f, 3.1f);
            angles.w = 0;
            (&angles.x)[QvEulerAxis[order][1]] = random.between(-limit, limit);
            check(angles, order);
        }
}

}  // namespace

TEST(Euler, AxesAreAppliedInTheOrderOfTheTable)
{
    constexpr char const* kSequences[] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
    for (Int32 order = 0; order < kTwistSwing; ++order)
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ("XYZ"[QvEulerAxis[order][i]], kSequences[order / 2][i]) << order;
    forAngles(3, [](Float4 const& angles, Int32 order) {
        auto const q = toQuaternion(angles, order);
        // Three sines or cosines with an error of 1.7e-6 each in every term.
        EXPECT_LT(difference(wide(q), exactRotation(angles, order)), 7e-6);
        if (order % 2 == 1 && order > 1) {
            EXPECT_EQ(bits(q), bits(toQuaternion(angles, order - 1)));
        }
    });
}

TEST(Euler, RoundTripsShortOfTheQuarterTurn)
{
    forAngles(1.4f, [](Float4 const& angles, Int32 order) {
        auto const back = toAngles(toQuaternion(angles, order), order);
        // The arc sine's 2.3e-5, and five to six times the error of the sines where the middle
        // cosine is small.
        EXPECT_LT(distance(back, angles), 4e-5);
        EXPECT_EQ(bits(back.w), 0u);
        EXPECT_EQ(bits(toAngles(toQuaternion(angles, order), order ^ 1)), bits(back));
    });
}

TEST(Euler, AtBothPolesOneAngleTakesTheWholeRest)
{
    forAngles(1, [](Float4 angles, Int32 order) {
        auto const& axes = QvEulerAxis[order];
        float& middle = (&angles.x)[axes[1]];
        float const pole = std::copysign(kHalfPi, middle);
        middle = pole;
        // Not by the kernel: its sines may stop short of where the angles lock.
        Quaternion const q = rounded(exactRotation(angles, order));
        angles = toAngles(q, order);
        EXPECT_EQ(middle, pole);
        EXPECT_TRUE((&angles.x)[axes[0]] == 0 || (&angles.x)[axes[2]] == 0);
        // Twice the error of an arc tangent, halved, and those of the sines.
        EXPECT_LT(difference(wide(toQuaternion(angles, order)), wide(q)), 2e-5) << pole;
    });
}

TEST(Euler, TwistAndSwingRoundTrip)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        float const side = i % 2 == 0 ? 1.0f : -1.0f;
        Float4 const angles = {random.between(-3.1f, 3.1f), side * random.between(0.1f, 2.5f),
                               side * random.between(0.1f, 2.5f), 0};
        auto const back = toAngles(toQuaternion(angles, kTwistSwing), kTwistSwing);
        EXPECT_NEAR(back.x, angles.x, 1e-4);
        // The square roots magnify rounding where one swing is small and the other is large.
        EXPECT_LT(distance(back, angles), 2e-4);
    }
    // A twist alone, and a swing alone.
    EXPECT_LT(difference(wide(toQuaternion({2, 0, 0, 0}, kTwistSwing)), about(0, 2)), 3e-6);
    EXPECT_LT(difference(wide(toQuaternion({0, 0, -2, 0}, kTwistSwing)), about(2, -2)), 3e-6);
}

TEST(Euler, TheExportedFunctionsGiveTheKernelsBits)
{
    Random random;
    for (Int32 order = -1; order <= 13; ++order) {
        qvr::CGRotationOrder const rotationOrder{order};
        Float4 const angles = random.lanes(-3, 3);
        Quaternion const q = random.quaternion();
        EXPECT_EQ(bits(rotationOrder.V2Q(qvr::load(&angles.x))), bits(toQuaternion(angles, order)));
        EXPECT_EQ(bits(rotationOrder.Q2V(qvr::load(&q.x))), bits(toAngles(q, order)));
    }
}
