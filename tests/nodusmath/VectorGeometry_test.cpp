// DotProduct, CrossProduct, Length, Distance and Normalize of vectors.
#include "support/kernel_call.h"
#include "support/rotations.h"

#include "kernels.h"

#include <limits>

using namespace nodusmath;
using namespace nodus::test;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kSmall = 0x1p-24f;  // half a unit in the last place of 1

}  // namespace

TEST(VectorGeometry, SumsKeepTheirOrder)
{
    // From the left, and in pairs, the small terms are lost one by one; taken together they count.
    EXPECT_EQ(call<Float>(NodusDotProduct_Float3_Solve, Float3{1, kSmall, kSmall}, Float3{1, 1, 1}),
              1.0f);
    EXPECT_EQ(call<Float>(NodusDotProduct_Float3_Solve, Float3{kSmall, kSmall, 1}, Float3{1, 1, 1}),
              1.0f + 0x1p-23f);
    EXPECT_EQ(
        call<Float>(NodusDotProduct_Float4_Solve, Float4{1, kSmall, kSmall, 0}, Float4{1, 1, 1, 1}),
        1.0f);
    EXPECT_EQ(
        call<Float>(NodusDotProduct_Float4_Solve, Float4{1, 0, kSmall, kSmall}, Float4{1, 1, 1, 1}),
        1.0f + 0x1p-23f);
}

TEST(VectorGeometry, EveryLaneTakesPart)
{
    EXPECT_EQ(call<Float>(NodusDotProduct_Float2_Solve, Float2{1, 2}, Float2{3, 5}), 13.0f);
    EXPECT_EQ(call<Float>(NodusDotProduct_Float3_Solve, Float3{1, 2, 3}, Float3{5, 7, 11}), 52.0f);
    EXPECT_EQ(call<Float>(NodusDotProduct_Float4_Solve, Float4{1, 2, 3, 4}, Float4{5, 7, 11, 13}),
              104.0f);
    EXPECT_EQ(call<Float>(NodusLength_Float2_Solve, Float2{3, -4}), 5.0f);
    EXPECT_EQ(call<Float>(NodusLength_Float3_Solve, Float3{3, 4, 12}), 13.0f);
    EXPECT_EQ(call<Float>(NodusLength_Float4_Solve, Float4{1, 5, 7, 5}), 10.0f);
    EXPECT_EQ(call<Float>(NodusDistance_Float2_Solve, Float2{1, 1}, Float2{4, 5}), 5.0f);
    EXPECT_EQ(call<Float>(NodusDistance_Float3_Solve, Float3{1, 1, 1}, Float3{4, 5, 13}), 13.0f);
    EXPECT_EQ(call<Float>(NodusDistance_Float4_Solve, Float4{1, 1, 1, 1}, Float4{1, 1, 1, -6}),
              7.0f);
    EXPECT_EQ(call<Float>(NodusLength_Float3_Solve, Float3{1e30f, 0, 0}), kInfinity);
}

TEST(VectorGeometry, CrossProductRows)
{
    struct Row {
        char const* why;
        Float4 a, b, expected;
    };
    constexpr Row kRows[] = {
        {"x cross y is z", {1, 0, 0, 5}, {0, 1, 0, 7}, {0, 0, 1, 0}},
        {"the other way round", {0, 1, 0, 5}, {1, 0, 0, 7}, {0, 0, -1, 0}},
        {"every lane from its own four factors", {2, 3, 5, 1}, {7, 11, 13, 1}, {-16, 9, 1, 0}},
    };
    for (Row const& row : kRows) {
        auto const& [why, a, b, expected] = row;
        EXPECT_EQ(bits(call<Float4>(NodusCrossProduct_Float4_Solve, a, b)), bits(expected)) << why;
        EXPECT_EQ(bits(call<Float3>(NodusCrossProduct_Float3_Solve, Float3{a.x, a.y, a.z},
                                    Float3{b.x, b.y, b.z})),
                  bits(Float3{expected.x, expected.y, expected.z}))
            << why;
    }
    auto const infinite = call<Float4>(NodusCrossProduct_Float4_Solve, Float4{1, 0, 0, kInfinity},
                                       Float4{0, 1, 0, 1});
    EXPECT_EQ(infinite.z, 1.0f);
    EXPECT_TRUE(std::isnan(infinite.w));
}

TEST(VectorGeometry, NormalizeDividesPairsAndScalesTriples)
{
    EXPECT_EQ(bits(call<Float2>(NodusNormalize_Float2_Solve, Float2{3, 4})),
              bits(Float2{0.6f, 0.8f}));
    EXPECT_EQ(bits(call<Float3>(NodusNormalize_Float3_Solve, Float3{0, 0, -5})),
              bits(Float3{0, 0, -1}));

    // 3 / 7 and 3 * (1 / 7) round differently, here as in 3 of 10 quotients.
    float const volatile seven = 7, three = 3;
    float const quotient = three / seven, scaled = three * (1 / seven);
    ASSERT_NE(quotient, scaled);
    EXPECT_EQ(call<Float3>(NodusNormalize_Float3_Solve, Float3{2, 3, 6}).y, scaled);
}

TEST(VectorGeometry, LengthZeroPassesPairsAndTriplesThrough)
{
    constexpr float kTiny = 1e-30f;  // its square underflows
    EXPECT_EQ(bits(call<Float2>(NodusNormalize_Float2_Solve, Float2{-0.0f, kTiny})),
              bits(Float2{-0.0f, kTiny}));
    EXPECT_EQ(bits(call<Float3>(NodusNormalize_Float3_Solve, Float3{-0.0f, kTiny, 0})),
              bits(Float3{-0.0f, kTiny, 0}));
    EXPECT_TRUE(allNaN(call<Float4>(NodusNormalize_Float4_Solve, Float4{0, kTiny, 0, 0})));

    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(allNaN(call<Float2>(NodusNormalize_Float2_Solve, Float2{nan, 1})));
    EXPECT_TRUE(allNaN(call<Float3>(NodusNormalize_Float3_Solve, Float3{1, nan, 1})));
}

TEST(VectorGeometry, NormalizeOfFourLanesCountsW)
{
    auto const unitW = call<Float4>(NodusNormalize_Float4_Solve, Float4{1, -5, 7, 5});
    EXPECT_NEAR(unitW.x, 0.1, kEstimated);
    EXPECT_NEAR(unitW.y, -0.5, kEstimated);
    EXPECT_NEAR(unitW.z, 0.7, kEstimated);
    EXPECT_NEAR(unitW.w, 0.5, kEstimated);
}
