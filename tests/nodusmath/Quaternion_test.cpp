// Mul, Norm, Conj, Inv, Lerp and Slerp of quaternions.
#include "support/kernel_call.h"
#include "support/rotations.h"

#include "kernels.h"

using namespace nodusmath;
using namespace nodus::test;

namespace {

constexpr Quaternion kNone = {0, 0, 0, 1};
constexpr Quaternion kZero = {0, 0, 0, 0};

Quaternion opposite(Quaternion const& q) { return {-q.x, -q.y, -q.z, -q.w}; }

}  // namespace

TEST(Quaternion, ConjugateFlipsThreeSignBits)
{
    EXPECT_EQ(bits(call<Quaternion>(NodusConj_Quat_Solve, Quaternion{1, -2, 3, -4})),
              bits(Quaternion{-1, 2, -3, -4}));
    EXPECT_EQ(bits(call<Quaternion>(NodusConj_Quat_Solve, kNone)),
              bits(Quaternion{-0.0f, -0.0f, -0.0f, 1}));
}

TEST(Quaternion, ProductsAndInversesAreUnitRotations)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        Quaternion a = random.quaternion(), b = random.quaternion();
        float const scale = random.between(0.1f, 20.0f);
        a = {a.x * scale, a.y * scale, a.z * scale, a.w * scale};
        // The lengths are right lane by lane, not only up to a sign.
        auto const expectNear = [](Quaternion const& is, Rotation const& should) {
            EXPECT_NEAR(is.x, should[0], 2 * kEstimated);
            EXPECT_NEAR(is.y, should[1], 2 * kEstimated);
            EXPECT_NEAR(is.z, should[2], 2 * kEstimated);
            EXPECT_NEAR(is.w, should[3], 2 * kEstimated);
        };
        Rotation const unitA = unit(wide(a));
        expectNear(call<Quaternion>(NodusMul_Quat_Solve, a, b), unit(product(wide(a), wide(b))));
        expectNear(call<Quaternion>(NodusNorm_Quat_Solve, a), unitA);
        expectNear(call<Quaternion>(NodusInv_Quat_Solve, a),
                   {-unitA[0], -unitA[1], -unitA[2], unitA[3]});
        EXPECT_EQ(bits(call<Quaternion>(NodusNorm_Quat_Solve, a)),
                  bits(call<Quaternion>(NodusNormalize_Quaternion_Solve, a)));
    }
}

TEST(Quaternion, LengthZeroIsNaNInEveryLane)
{
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusNorm_Quat_Solve, kZero)));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusInv_Quat_Solve, kZero)));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusMul_Quat_Solve, kNone, kZero)));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusNorm_Quat_Solve, Quaternion{1e-30f, 0, 0, 0})));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusNorm_Quat_Solve, Quaternion{1e30f, 0, 0, 0})));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusLerp_Quat_Solve, kZero, kZero, 0.5f)));
    EXPECT_TRUE(allNaN(call<Quaternion>(NodusSlerp_Quat_Solve, kZero, kZero, 0.5f)));
}

TEST(Quaternion, InterpolationStartsAtAEndsAtBAndDoesNotSeeTheSignOfB)
{
    Random random;
    for (int i = 0; i < 2000; ++i) {
        Quaternion const a = random.quaternion(), b = random.quaternion();
        float const t = random.between(-1, 2);
        for (auto* const kernel : {NodusLerp_Quat_Solve, NodusSlerp_Quat_Solve}) {
            EXPECT_LT(difference(wide(call<Quaternion>(kernel, a, b, 0.0f)), wide(a)), 1e-5);
            EXPECT_LT(difference(wide(call<Quaternion>(kernel, a, b, 1.0f)), wide(b)), 1e-5);
            EXPECT_EQ(bits(call<Quaternion>(kernel, a, b, t)),
                      bits(call<Quaternion>(kernel, a, opposite(b), t)));
            EXPECT_EQ(bits(call<Quaternion>(kernel, a, opposite(a), t)),
                      bits(call<Quaternion>(kernel, a, a, t)));
        }
    }
}

// Slerp turns evenly and goes on outside [0, 1]; Lerp does not turn evenly.
TEST(Quaternion, SlerpTurnsEvenly)
{
    constexpr double kWhole = 2.0;
    Rotation const end = about(1, kWhole);
    Quaternion const b = {0, static_cast<float>(end[1]), 0, static_cast<float>(end[3])};
    for (float const t : {-0.5f, 0.1f, 0.25f, 0.5f, 0.9f, 1.5f}) {
        Rotation const part = about(1, kWhole * t);
        // The arc cosine's error of 2.3e-5, spread over the turn, and that of the two sines.
        EXPECT_LT(difference(wide(call<Quaternion>(NodusSlerp_Quat_Solve, kNone, b, t)), part),
                  4e-5)
            << t;
    }
    EXPECT_GT(difference(wide(call<Quaternion>(NodusLerp_Quat_Solve, kNone, b, 0.25f)),
                         about(1, kWhole * 0.25)),
              1e-2);
}

TEST(Quaternion, SlerpTakesTheChordFromItsThresholdOn)
{
    constexpr std::uint32_t kThreshold = 0x3F7FF972u;
    auto const agree = [](Quaternion const& b) {
        return bits(call<Quaternion>(NodusSlerp_Quat_Solve, kNone, b, 0.3f)) ==
               bits(call<Quaternion>(NodusLerp_Quat_Solve, kNone, b, 0.3f));
    };
    for (float const side : {1.0f, -1.0f}) {
        float const at = side * std::bit_cast<float>(kThreshold);
        float const below = side * std::bit_cast<float>(kThreshold - 1);
        EXPECT_TRUE(agree({0.5f, 0, 0, at})) << side;
        EXPECT_FALSE(agree({0.5f, 0, 0, below})) << side;
    }
}

TEST(Quaternion, TheSideOfBIsTheSignBitOfEachLanesDotProduct)
{
    // Every product is -0, so the dot product is: b counts as lying on the other side.
    auto const flipped =
        call<Quaternion>(NodusLerp_Quat_Solve, kNone, Quaternion{-1, -0.0f, -0.0f, -0.0f}, 1.0f);
    EXPECT_NEAR(flipped.x, 1, kEstimated);

    // (1 - 2^-25) + (0 - 1) is +0, (-2^-25 + 0) + (-1 + 1) is negative: the lanes differ.
    auto const mixed = call<Quaternion>(NodusLerp_Quat_Solve, Quaternion{1, -0x1p-25f, 0, -1},
                                        Quaternion{1, 1, 1, 1}, 1.0f);
    EXPECT_NEAR(mixed.x, 0.5, kEstimated);
    EXPECT_NEAR(mixed.y, -0.5, kEstimated);
    EXPECT_NEAR(mixed.z, 0.5, kEstimated);
    EXPECT_NEAR(mixed.w, -0.5, kEstimated);
}
