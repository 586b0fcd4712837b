// The rounding mode of the caller: whole numbers do not depend on it. Of exceptions, nodus check
// sees to it that nobody raises one without need.
#include "support/kernel_call.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <limits>

using namespace nodus::test;

TEST(Environment, WholeNumbersAreTheSameInEveryRoundingMode)
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    struct Row {
        Kernel* kernel;
        float value, expected;
    } const rows[] = {
        {NodusSign_Float_Solve, 0, 0},        {NodusSign_Float_Solve, kNaN, 0},
        {NodusCeil_Float_Solve, -0.25f, 0},   {NodusCeil_Float_Solve, -0.75f, 0},
        {NodusCeil_Float_Solve, 2.25f, 3},    {NodusFloor_Float_Solve, 0.75f, 0},
        {NodusFloor_Float_Solve, -2.25f, -3},
    };
    for (int const mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO})
        for (Row const& row : rows) {
            std::fesetround(mode);
            float const result = call<float>(row.kernel, row.value);
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(bits(result), bits(row.expected)) << row.value << " in mode " << mode;
        }
}
