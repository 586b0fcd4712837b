// The floating-point environment of the caller: exceptions that nobody needs are not raised, and
// whole numbers do not depend on the rounding mode.
#include "support/kernel_call.h"

#include <cfenv>

using namespace nodus::test;

namespace {

template <typename Out, typename... Ports> int raisedBy(Kernel* kernel, Ports const&... ports)
{
    Block in = blockOf(ports...), out(sizeof(Out));
    std::feclearexcept(FE_ALL_EXCEPT);
    kernel(in.data(), out.data());
    return std::fetestexcept(FE_INVALID | FE_DIVBYZERO);
}

}  // namespace

TEST(Environment, NoExceptionFromALaneThatIsNotUsed)
{
    EXPECT_EQ(raisedBy<Float2>(NodusMultiplyByScalar_Float2_Solve, Float2{1, 2}, kInfinity), 0);
    EXPECT_EQ(raisedBy<Float3>(NodusMultiplyByScalar_Float3_Solve, Float3{1, 2, 3}, kInfinity), 0);
    for (float const zero : {0.0f, -0.0f}) {
        EXPECT_EQ(raisedBy<float>(NodusRSqrt_Float_Solve, zero), 0);
        EXPECT_EQ(raisedBy<double>(NodusRSqrt_Double_Solve, double{zero}), 0);
    }
    for (Int32 order = 0; order <= 12; ++order)
        EXPECT_EQ(raisedBy<Float4>(NodusQuaternionToEuler_Solve, Quaternion{0, 0, 0, 1}, order), 0)
            << order;
}

TEST(Environment, WholeNumbersAreTheSameInEveryRoundingMode)
{
    struct Row {
        Kernel* kernel;
        float value, expected;
    } const rows[] = {
        {NodusSign_Float_Solve, 0, 0},        {NodusSign_Float_Solve, kNaN, 0},
        {NodusSign_Float_Solve, -3, -1},      {NodusCeil_Float_Solve, 0, 0},
        {NodusCeil_Float_Solve, -0.25f, 0},   {NodusCeil_Float_Solve, -0.75f, 0},
        {NodusCeil_Float_Solve, 2.25f, 3},    {NodusFloor_Float_Solve, 0.75f, 0},
        {NodusFloor_Float_Solve, -2.25f, -3},
    };
    for (int const mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO, FE_TONEAREST})
        for (Row const& row : rows) {
            std::fesetround(mode);
            float const result = call<float>(row.kernel, row.value);
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(bits(result), bits(row.expected)) << row.value << " in mode " << mode;
        }
}
