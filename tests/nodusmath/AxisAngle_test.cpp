// AxisAndAngleToQuaternion, QuaternionToAxisAndAngle, QuatArcRotate and RotateVector.
#include "support/kernel_call.h"
#include "support/rotations.h"

#include "kernels.h"

#include <numbers>

using namespace nodusmath;
using namespace nodus::test;

namespace {

struct AxisAndAngle3 {
    Float3 axis;
    Float angle;
};
struct AxisAndAngle4 {
    Float4 axis;
    Float angle, unused[3];
};

// The outputs behind each other, as they lie in the block.
AxisAndAngle3 axisAndAngle(Quaternion const& q)
{
    Block in = blockOf(q), out = blockOf(Float3{}, Float{});
    NodusQuaternionToAxisAndAngle_Float3_Solve(in.data(), out.data());
    AxisAndAngle3 result;
    std::memcpy(&result, out.data(), sizeof result);
    EXPECT_EQ(out.bytes()[sizeof result], kGuard);

    Block wideOut = blockOf(Float4{}, Float{});
    NodusQuaternionToAxisAndAngle_Float4_Solve(in.data(), wideOut.data());
    AxisAndAngle4 wideResult;
    std::memcpy(&wideResult, wideOut.data(), sizeof wideResult);
    EXPECT_EQ(bits(wideResult.angle), bits(result.angle));
    EXPECT_EQ(std::isnan(wideResult.axis.w), std::isnan(result.axis.x));
    if (!std::isnan(result.axis.x)) {
        EXPECT_EQ(bits(wideResult.axis),
                  bits(Float4{result.axis.x, result.axis.y, result.axis.z, 0}));
    }
    return result;
}

Rotation rotate(Rotation const& q, double x, double y, double z)
{
    return product(product(q, {x, y, z, 0}), {-q[0], -q[1], -q[2], q[3]});
}

}  // namespace

TEST(AxisAngle, TheAxisKeepsItsLength)
{
    struct Row {
        Float3 axis;
        float angle;
        std::array<std::uint32_t, 4> expected;
    };
    constexpr Row kRows[] = {
        {{0, 0, 2}, 1, {0, 0, 0x3F75775Cu, 0x3F60A92Du}},
        {{0, 0, 0}, 1, {0, 0, 0, 0x3F60A92Du}},
        {{-0.0f, 1, 0}, 0, {0, 0, 0, 0x3F800000u}},
    };
    for (auto const& [axis, angle, expected] : kRows) {
        EXPECT_EQ(bits(call<Quaternion>(NodusAxisAndAngleToQuaternion_Float3_Solve, axis, angle)),
                  expected);
        Float4 const four = {axis.x, axis.y, axis.z, 0};
        EXPECT_EQ(bits(call<Quaternion>(NodusAxisAndAngleToQuaternion_Float4_Solve, four, angle)),
                  expected);
    }
    auto const withW =
        call<Quaternion>(NodusAxisAndAngleToQuaternion_Float4_Solve, Float4{0, 0, 2, 0.5f}, 1.0f);
    EXPECT_EQ(withW.w, 1.5f * std::bit_cast<float>(0x3F60A92Du));
}

TEST(AxisAngle, RoundTripsBetweenNothingAndAFullTurn)
{
    Random random;
    for (float angle = 0.1f; angle < 6.2f; angle += 0.01f) {
        Quaternion const q = random.quaternion();
        auto const axis = axisAndAngle({q.x, q.y, q.z, 0}).axis;
        auto const turned =
            call<Quaternion>(NodusAxisAndAngleToQuaternion_Float3_Solve, axis, angle);
        auto const back = axisAndAngle(turned);
        // Twice the arc cosine's error of 2.3e-5, and where the cosine is flat that of the cosine,
        // 1.7e-6, over half the sine, 0.02 at the ends.
        EXPECT_NEAR(back.angle, angle, 2e-4);
        // Past half a turn nothing is folded: the axis still points the same way.
        EXPECT_NEAR(back.axis.x, axis.x, 5e-6);
        EXPECT_NEAR(back.axis.y, axis.y, 5e-6);
        EXPECT_NEAR(back.axis.z, axis.z, 5e-6);
    }
}

TEST(AxisAngle, DegenerateQuaternions)
{
    auto const none = axisAndAngle({0, 0, 0, 1});
    EXPECT_TRUE(allNaN(none.axis));
    EXPECT_EQ(bits(none.angle), 0u);
    auto const full = axisAndAngle({0, 0, 0, -1});
    EXPECT_TRUE(allNaN(full.axis));
    EXPECT_NEAR(full.angle, 2 * std::numbers::pi, 1e-6);
    EXPECT_TRUE(std::isnan(axisAndAngle({1, 0, 0, std::nextafter(1.0f, 2.0f)}).angle));
    EXPECT_TRUE(std::isnan(axisAndAngle({1, 0, 0, -std::nextafter(1.0f, 2.0f)}).angle));
}

TEST(AxisAngle, ArcTurnsOneDirectionIntoTheOther)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        Quaternion const p = random.quaternion(), q = random.quaternion();
        Float4 const from = {3 * p.x, 3 * p.y, 3 * p.z, 0}, to = {q.x, q.y, q.z, 0};
        auto const arc = wide(call<Quaternion>(NodusQuatArcRotate_Solve, from, to));
        Rotation const turned = rotate(arc, from.x, from.y, from.z);
        // Near opposite directions the axis is a small difference of large products.
        EXPECT_LT(difference(unit(turned), unit({to.x, to.y, to.z, 0})), 1e-4) << i;
        EXPECT_NEAR(arc[0] * from.x + arc[1] * from.y + arc[2] * from.z, 0, 1e-4);
    }
    Float4 const x = {1, 0, 0, 0}, back = {-2, 0, 0, 0}, zero = {0, 0, 0, 0};
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusQuatArcRotate_Solve, x, back)));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusQuatArcRotate_Solve, zero, x)));
    // w lanes count in lengths and dot product alone: |a| |b| + a.b = 2 * sqrt(2) here.
    auto const withW =
        call<Quaternion>(NodusQuatArcRotate_Solve, Float4{1, 0, 0, 1}, Float4{0, 1, 0, 1});
    EXPECT_NEAR(withW.z / withW.w, 1 / 3.0, 1e-6);
}

TEST(AxisAngle, VectorsTurnByUnitQuaternions)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        Quaternion const q = random.quaternion();
        Float3 const v = {random.between(-9, 9), random.between(-9, 9), random.between(-9, 9)};
        auto const turned = call<Float3>(NodusRotateVector_Float3_Solve, v, q);
        Rotation const expected = rotate(wide(q), v.x, v.y, v.z);
        EXPECT_NEAR(turned.x, expected[0], 1e-5);
        EXPECT_NEAR(turned.y, expected[1], 1e-5);
        EXPECT_NEAR(turned.z, expected[2], 1e-5);
        auto const four =
            call<Float4>(NodusRotateVector_Float4_Solve, Float4{v.x, v.y, v.z, -0.0f}, q);
        EXPECT_EQ(bits(four), bits(Float4{turned.x, turned.y, turned.z, -0.0f}));
    }
    // (2 w^2 - 1) v: twice the identity does not scale by four.
    EXPECT_EQ(
        bits(call<Float3>(NodusRotateVector_Float3_Solve, Float3{1, 2, 3}, Quaternion{0, 0, 0, 2})),
        bits(Float3{7, 14, 21}));
}

// Of 1, 2^-24 and 2^-24 the dot product keeps the small terms only where they come first: each
// lane's sum starts with another pair.
TEST(AxisAngle, TheDotProductOfTheRotationRunsWithTheLanes)
{
    // q = u alone, so a lane is d u - v, with d = u . 2v the lane's own sum.
    constexpr float kHalfUlp = 0x1p-24f;
    for (int large = 0; large < 3; ++large) {
        float products[3] = {kHalfUlp, kHalfUlp, kHalfUlp};
        products[large] = 1;
        auto const turned = call<Float3>(NodusRotateVector_Float3_Solve,
                                         Float3{products[0] / 2, products[1] / 2, products[2] / 2},
                                         Quaternion{1, 1, 1, 0});
        float const lanes[] = {turned.x, turned.y, turned.z};
        for (int lane = 0; lane < 3; ++lane) {
            // The lane adds its own and the next product, then the one behind it.
            float const sum = lane == (large + 1) % 3 ? 1 + 0x1p-23f : 1.0f;
            EXPECT_EQ(lanes[lane], sum - products[lane] / 2) << large << lane;
        }
    }
}
