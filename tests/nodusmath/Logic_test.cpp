// Truth values and bit patterns.
#include "support/kernel_call.h"

#include "kernels.h"

using namespace nodusmath;
using nodus::test::call;

TEST(Logic, EveryNonZeroByteIsTrueAndResultsAreZeroOrOne)
{
    constexpr UInt8 kBytes[] = {0, 1, 2, 128, 255};
    for (UInt8 const a : kBytes) {
        EXPECT_EQ(call<Bool>(NodusNot_Solve, Bool{a}).byte, a == 0 ? 1 : 0) << int{a};
        for (UInt8 const b : kBytes) {
            int const truths = (a != 0 ? 1 : 0) + (b != 0 ? 1 : 0);
            EXPECT_EQ(call<Bool>(NodusAnd_Solve, Bool{a}, Bool{b}).byte, truths == 2) << int{a};
            EXPECT_EQ(call<Bool>(NodusOr_Solve, Bool{a}, Bool{b}).byte, truths != 0) << int{b};
            EXPECT_EQ(call<Bool>(NodusXor_Solve, Bool{a}, Bool{b}).byte, truths == 1) << int{b};
        }
    }
}

// The operands meet in all four pairs of bits, the highest among them.
TEST(Logic, BitwiseOperationsCoverTheWholeWidth)
{
    constexpr UInt32 kA = 0xC00FF0CAu, kB = 0xA00F0FACu;
    EXPECT_EQ(call<UInt32>(NodusBitwiseAnd_UInt32_Solve, kA, kB), 0x800F0088u);
    EXPECT_EQ(call<UInt32>(NodusBitwiseOr_UInt32_Solve, kA, kB), 0xE00FFFEEu);
    EXPECT_EQ(call<UInt32>(NodusBitwiseXor_UInt32_Solve, kA, kB), 0x6000FF66u);
    EXPECT_EQ(call<UInt32>(NodusBitwiseNot_UInt32_Solve, kA), 0x3FF00F35u);
    EXPECT_EQ(call<Int32>(NodusBitwiseAnd_Int32_Solve, -1, 6), 6);
    EXPECT_EQ(call<Int32>(NodusBitwiseOr_Int32_Solve, -8, 3), -5);
    EXPECT_EQ(call<Int32>(NodusBitwiseXor_Int32_Solve, -1, 6), -7);
    EXPECT_EQ(call<Int32>(NodusBitwiseNot_Int32_Solve, 0), -1);
    EXPECT_EQ(call<UInt8>(NodusBitwiseAnd_UInt8_Solve, UInt8{0xCA}, UInt8{0xAC}), 0x88);
    EXPECT_EQ(call<UInt8>(NodusBitwiseOr_UInt8_Solve, UInt8{0xCA}, UInt8{0xAC}), 0xEE);
    EXPECT_EQ(call<UInt8>(NodusBitwiseXor_UInt8_Solve, UInt8{255}, UInt8{15}), 240);
    EXPECT_EQ(call<UInt8>(NodusBitwiseNot_UInt8_Solve, UInt8{0}), 255);
}
