// TransformTQS, TransformInverseTQS, InverseTQS and TransformPositionWithTQS.
#include "support/kernel_call.h"
#include "support/rotations.h"

#include "kernels.h"

using namespace nodusmath;
using namespace nodus::test;

namespace {

constexpr TQS kIdentity = {{0, 0, 0, 0}, {0, 0, 0, 1}, {1, 1, 1, 1}};

TQS randomTransform(Random& random)
{
    auto const lane = [&] { return random.between(-5, 5); };
    auto const scale = [&] { return random.between(0.5f, 3); };
    return {{lane(), lane(), lane(), lane()},
            random.quaternion(),
            {scale(), scale(), scale(), scale()}};
}

void expectNear(Float4 const& is, Float4 const& should, double tolerance)
{
    EXPECT_NEAR(is.x, should.x, tolerance);
    EXPECT_NEAR(is.y, should.y, tolerance);
    EXPECT_NEAR(is.z, should.z, tolerance);
    EXPECT_NEAR(is.w, should.w, tolerance);
}
Float4 four(Translation const& t) { return {t.x, t.y, t.z, t.w}; }

}  // namespace

TEST(TQS, TheInverseUndoesTheComposition)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        TQS const a = randomTransform(random), b = randomTransform(random);
        auto const both = call<TQS>(NodusTransformTQS_Solve, a, b);
        auto const back = call<TQS>(NodusTransformInverseTQS_Solve, a, both);
        expectNear(four(back.t), four(b.t), 1e-5);
        EXPECT_LT(difference(wide(back.q), wide(b.q)), 3 * kEstimated);
        expectNear(back.s, b.s, 1e-6);
        EXPECT_EQ(bits(both.t.w), bits(a.t.w + b.t.w));
        EXPECT_EQ(bits(back.t.w), bits(both.t.w - a.t.w));
        EXPECT_EQ(bits(both.s.w), bits(a.s.w * b.s.w));
    }
}

// Points go through b first. Without scales the composition is that of the transforms.
TEST(TQS, PositionsGoThroughBFirst)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        TQS a = randomTransform(random), b = randomTransform(random);
        a.s = b.s = {1, 1, 1, 1};
        Float4 const p = {random.between(-5, 5), random.between(-5, 5), random.between(-5, 5), 2};
        auto const place = [](Float4 const& position, TQS const& transform) {
            return call<Float4>(NodusTransformPositionWithTQS_Solve, position, transform);
        };
        auto const both = call<TQS>(NodusTransformTQS_Solve, a, b);
        expectNear(place(p, both), place(place(p, b), a), 3e-5);
    }
}

TEST(TQS, ScaleBeforeRotationBeforeTranslation)
{
    TQS const quarterAboutZ = {{10, 20, 30, 40}, {0, 0, 0.70710678f, 0.70710678f}, {2, 3, 5, 7}};
    expectNear(call<Float4>(NodusTransformPositionWithTQS_Solve, Float4{1, 1, 1, 1}, quarterAboutZ),
               {7, 22, 35, 47}, 1e-5);
    TQS const doubled = {{1, 1, 1, 1}, {0, 0, 0, 2}, {1, 2, 1, 1}};
    EXPECT_EQ(bits(call<Float4>(NodusTransformPositionWithTQS_Solve, Float4{1, 1, 1, 1}, doubled)),
              bits(Float4{8, 15, 8, 2}));
}

TEST(TQS, TheOuterScaleDoesNotReachTheInnerTranslation)
{
    TQS const a = {{1, 2, 3, 4}, {0, 0, 0, 1}, {2, 3, 5, 7}};
    TQS const b = {{1, 0, 0, 0}, {0, 0, 0, 1}, {1, 1, 2, 1}};
    auto const both = call<TQS>(NodusTransformTQS_Solve, a, b);
    EXPECT_EQ(bits(both.t), bits(Translation{2, 2, 3, 4}));
    EXPECT_EQ(bits(both.s), bits(Float4{2, 3, 10, 7}));
}

TEST(TQS, InverseTurnsEveryPartByItself)
{
    // The processor's estimate of a reciprocal: within 1.5 * 2^-12.
    constexpr double kReciprocal = 1.5 / 4096;
    auto const none = call<TQS>(NodusInverseTQS_Solve, kIdentity);
    EXPECT_EQ(bits(none.t), bits(Translation{-0.0f, -0.0f, -0.0f, -0.0f}));
    EXPECT_EQ(bits(none.q.x), bits(-0.0f));
    expectNear(none.s, {1, 1, 1, 1}, kReciprocal);

    TQS const value = {{1, -2, 3, -4}, {0, 0, 3, 4}, {2, -4, 0.0f, -0.0f}};
    auto const inverse = call<TQS>(NodusInverseTQS_Solve, value);
    EXPECT_EQ(bits(inverse.t), bits(Translation{-1, 2, -3, 4}));
    EXPECT_LT(difference(wide(inverse.q), {0, 0, -0.6, 0.8}), kEstimated);
    EXPECT_NEAR(inverse.s.x, 0.5, 0.5 * kReciprocal);
    EXPECT_NEAR(inverse.s.y, -0.25, 0.25 * kReciprocal);
    EXPECT_EQ(inverse.s.z, HUGE_VALF);
    EXPECT_EQ(inverse.s.w, -HUGE_VALF);
}

TEST(TQS, ZeroQuaternionsAndScales)
{
    TQS const zero = {{1, 2, 3, 4}, {0, 0, 0, 0}, {0, 1, 1, 1}};
    TQS const b = {{5, 7, 11, 13}, {0, 0, 0, 1}, {1, 1, 1, 1}};
    auto const both = call<TQS>(NodusTransformTQS_Solve, zero, b);
    EXPECT_EQ(bits(both.t), bits(Translation{-4, -5, -8, 17}));
    EXPECT_TRUE(allNaN(both.q));
    auto const back = call<TQS>(NodusTransformInverseTQS_Solve, zero, b);
    EXPECT_TRUE(allNaN(Float3{back.t.x, back.t.y, back.t.z}));
    EXPECT_EQ(back.t.w, 9);
    EXPECT_TRUE(allNaN(back.q));
    EXPECT_EQ(back.s.x, HUGE_VALF);
}
