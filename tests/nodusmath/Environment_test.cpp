// The floating-point environment of the caller: whole numbers do not depend on the rounding mode,
// and lanes that nobody uses raise no exception. Other exceptions are what nodus check looks for.
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

TEST(Environment, NoExceptionFromALaneThatIsNotUsed)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    std::feclearexcept(FE_ALL_EXCEPT);
    call<Float2>(NodusMultiplyByScalar_Float2_Solve, Float2{1, 2}, kInfinity);
    call<Float3>(NodusMultiplyByScalar_Float3_Solve, Float3{1, 2, 3}, kInfinity);
    for (Int32 order = 0; order <= 12; ++order)
        call<Float4>(NodusQuaternionToEuler_Solve, Quaternion{0, 0, 0, 1}, order);
    EXPECT_EQ(std::fetestexcept(FE_INVALID | FE_DIVBYZERO), 0);
}
