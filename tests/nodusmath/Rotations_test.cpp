// Quaternions, axes and angles, matrices and transforms by their properties. Edges are rows.
#include "support/rotations.h"

using namespace nodus::test;

namespace {

constexpr int kRounds = 2000;
constexpr Quaternion kNone = {0, 0, 0, 1};

Rotation rotate(Rotation const& q, Float3 const& v)
{
    return product(product(q, {v.x, v.y, v.z, 0}), conjugate(q));
}

struct AxisAndAngle {
    Float3 axis;
    Float angle;
};
static_assert(offsetof(AxisAndAngle, angle) == offsetOfPort<1, Float3, Float>);

TQS randomTransform(Random& random)
{
    auto const [x, y, z, w] = random.lanes(-5, 5);
    return {{x, y, z, w}, random.quaternion(), random.lanes(0.5f, 3)};
}

Float4 place(Float4 const& position, TQS const& transform)
{
    return call<Float4>(NodusTransformPositionWithTQS_Solve, position, transform);
}

}  // namespace

TEST(Quaternion, ProductsAndInversesAreUnitRotations)
{
    Random random;
    for (int i = 0; i < kRounds; ++i) {
        Quaternion const b = random.quaternion();
        Rotation wideA = wide(random.quaternion());
        for (double& lane : wideA)
            lane *= random.between(0.1f, 20.0f);
        Quaternion const a = rounded(wideA);
        // The lengths are right lane by lane, not only up to a sign.
        auto const expectNear = [](Quaternion const& is, Rotation const& should) {
            EXPECT_LT(distance(wide(is), should), 2 * kEstimated);
        };
        auto const norm = call<Quaternion>(NodusNorm_Quat_Solve, a);
        expectNear(norm, unit(wide(a)));
        expectNear(call<Quaternion>(NodusInv_Quat_Solve, a), conjugate(unit(wide(a))));
        expectNear(call<Quaternion>(NodusMul_Quat_Solve, a, b), unit(product(wide(a), wide(b))));
        EXPECT_EQ(bits(call<Quaternion>(NodusNormalize_Quaternion_Solve, a)), bits(norm));
    }
}

TEST(Quaternion, InterpolationStartsAtAEndsAtBAndDoesNotSeeTheSignOfB)
{
    Random random;
    for (int i = 0; i < kRounds; ++i) {
        Quaternion const a = random.quaternion(), b = random.quaternion();
        float const t = random.between(-1, 2);
        for (Kernel* const kernel : {NodusLerp_Quat_Solve, NodusSlerp_Quat_Solve}) {
            auto const at = [kernel](Quaternion const& from, Rotation const& to, float part) {
                return call<Quaternion>(kernel, from, rounded(to), part);
            };
            EXPECT_LT(difference(wide(at(a, wide(b), 0)), wide(a)), 1e-5);
            EXPECT_LT(difference(wide(at(a, wide(b), 1)), wide(b)), 1e-5);
            EXPECT_EQ(bits(at(a, wide(b), t)), bits(at(a, opposite(wide(b)), t)));
            EXPECT_EQ(bits(at(a, wide(a), t)), bits(at(a, opposite(wide(a)), t)));
        }
    }
}

// Slerp turns evenly and goes on outside [0, 1]; Lerp does not turn evenly.
TEST(Quaternion, SlerpTurnsEvenly)
{
    constexpr double kWhole = 2.0;
    Quaternion const b = rounded(about(1, kWhole));
    auto const error = [&](Kernel* kernel, float t) {
        return difference(wide(call<Quaternion>(kernel, kNone, b, t)), about(1, kWhole * t));
    };
    // The arc cosine's error of 2.3e-5, spread over the turn, and that of the two sines.
    for (float const t : {-0.5f, 0.1f, 0.25f, 0.5f, 0.9f, 1.5f})
        EXPECT_LT(error(NodusSlerp_Quat_Solve, t), 4e-5) << t;
    EXPECT_GT(error(NodusLerp_Quat_Solve, 0.25f), 1e-2);
}

TEST(Quaternion, SlerpTakesTheChordFromItsThresholdOn)
{
    constexpr std::uint32_t kThreshold = 0x3F7FF972u, kSign = 0x80000000u;
    for (std::uint32_t const pattern :
         {kThreshold, kThreshold - 1, kThreshold | kSign, (kThreshold - 1) | kSign}) {
        Quaternion const b = {0.5f, 0, 0, std::bit_cast<float>(pattern)};
        EXPECT_EQ(bits(call<Quaternion>(NodusSlerp_Quat_Solve, kNone, b, 0.3f)) ==
                      bits(call<Quaternion>(NodusLerp_Quat_Solve, kNone, b, 0.3f)),
                  (pattern & ~kSign) == kThreshold)
            << std::hex << pattern;
    }
}

TEST(AxisAngle, RoundTripsBetweenNothingAndAFullTurn)
{
    Random random;
    auto const axisAndAngle = [](Quaternion const& q) {
        Block in = blockOf(q), out = blockOf(Float3{}, Float{}), out4 = blockOf(Float4{}, Float{});
        NodusQuaternionToAxisAndAngle_Float3_Solve(in.data(), out.data());
        NodusQuaternionToAxisAndAngle_Float4_Solve(in.data(), out4.data());
        AxisAndAngle result;
        std::memcpy(&result, out.data(), sizeof result);
        std::array<Float, 2> const fourth{0, result.angle};
        EXPECT_EQ(std::memcmp(out4.data(), out.data(), sizeof(Float3)), 0);
        EXPECT_EQ(std::memcmp(out4.data() + sizeof(Float3), &fourth, sizeof fourth), 0);
        return result;
    };
    for (float angle = 0.1f; angle < 6.2f; angle += 0.01f) {
        Quaternion const q = random.quaternion();
        Float3 const axis = axisAndAngle({q.x, q.y, q.z, 0}).axis;
        auto const turned =
            call<Quaternion>(NodusAxisAndAngleToQuaternion_Float3_Solve, axis, angle);
        auto const back = axisAndAngle(turned);
        // Twice the arc cosine's error of 2.3e-5, and where the cosine is flat that of the cosine,
        // 1.7e-6, over half the sine, 0.02 at the ends.
        EXPECT_NEAR(back.angle, angle, 2e-4);
        // Past half a turn nothing is folded: the axis still points the same way.
        EXPECT_LT(distance(back.axis, axis), 5e-6);
    }
}

TEST(AxisAngle, ArcTurnsOneDirectionIntoTheOther)
{
    Random random;
    for (int i = 0; i < kRounds; ++i) {
        Quaternion const p = random.quaternion(), q = random.quaternion();
        Float4 const from = {3 * p.x, 3 * p.y, 3 * p.z, 0}, to = {q.x, q.y, q.z, 0};
        auto const arc = wide(call<Quaternion>(NodusQuatArcRotate_Solve, from, to));
        Rotation const turned = rotate(arc, {from.x, from.y, from.z});
        // Near opposite directions the axis is a small difference of large products.
        EXPECT_LT(difference(unit(turned), unit(wide(to))), 1e-4) << i;
        EXPECT_NEAR(arc[0] * from.x + arc[1] * from.y + arc[2] * from.z, 0, 1e-4);
    }
}

TEST(AxisAngle, VectorsTurnByUnitQuaternions)
{
    Random random;
    for (int i = 0; i < kRounds; ++i) {
        Quaternion const q = random.quaternion();
        auto const [x, y, z, w] = random.lanes(-9, 9);
        auto const turned = call<Float3>(NodusRotateVector_Float3_Solve, Float3{x, y, z}, q);
        auto const four = call<Float4>(NodusRotateVector_Float4_Solve, Float4{x, y, z, w}, q);
        Rotation const expected = rotate(wide(q), {x, y, z});
        EXPECT_LT(distance(wide(turned), {expected[0], expected[1], expected[2]}), 1e-5);
        EXPECT_EQ(bits(four), bits(Float4{turned.x, turned.y, turned.z, w}));
    }
}

TEST(Matrix, RowsAreTheImagesOfTheAxesAndEveryWayBackIsTaken)
{
    Random random;
    int ways[4] = {};
    for (int i = 0; i < 2 * kRounds; ++i) {
        Quaternion const q = random.quaternion();
        auto matrix = call<Matrix4x4>(NodusQuaternionToMatrix_Solve, q);
        for (int axis = 0; axis < 3; ++axis) {
            Float4 unitAxis{};
            (&unitAxis.x)[axis] = 1;
            auto const image = call<Float4>(NodusRotateVector_Float4_Solve, unitAxis, q);
            EXPECT_LT(distance(matrix.rows[axis], image), 1e-6);
            EXPECT_EQ(bits(matrix.rows[axis].w), 0u);
        }
        EXPECT_EQ(bits(matrix.rows[3]), bits(Float4{0, 0, 0, 1}));

        float const x = matrix.rows[0].x, y = matrix.rows[1].y, z = matrix.rows[2].z;
        ++ways[x >= 0 ? (y + z >= 0 ? 0 : 1) : (y - z >= 0 ? 2 : 3)];
        auto const back = call<Quaternion>(NodusMatrixToQuaternion_Solve, matrix);
        EXPECT_LT(difference(wide(back), wide(q)), 2e-6);
    }
    for (int const count : ways)
        EXPECT_GT(count, 100);
}

TEST(TQS, TheInverseUndoesTheComposition)
{
    Random random;
    for (int i = 0; i < kRounds; ++i) {
        TQS const a = randomTransform(random), b = randomTransform(random);
        auto const both = call<TQS>(NodusTransformTQS_Solve, a, b);
        auto const back = call<TQS>(NodusTransformInverseTQS_Solve, a, both);
        EXPECT_LT(distance(back.t, b.t), 1e-5);
        EXPECT_LT(difference(wide(back.q), wide(b.q)), 3 * kEstimated);
        EXPECT_LT(distance(back.s, b.s), 1e-6);
        EXPECT_EQ(bits(both.t.w), bits(a.t.w + b.t.w));
        EXPECT_EQ(bits(back.t.w), bits(both.t.w - a.t.w));
        EXPECT_EQ(bits(both.s.w), bits(a.s.w * b.s.w));
    }
}

// Points go through b first. Without scales the composition is that of the transforms.
TEST(TQS, PositionsGoThroughBFirst)
{
    Random random;
    for (int i = 0; i < kRounds; ++i) {
        TQS a = randomTransform(random), b = randomTransform(random);
        a.s = b.s = {1, 1, 1, 1};
        Float4 const p = random.lanes(-5, 5);
        auto const both = call<TQS>(NodusTransformTQS_Solve, a, b);
        EXPECT_LT(distance(place(p, both), place(place(p, b), a)), 3e-5);
    }
}
