// Minima, clamps, steps, curves and rounding, bit for bit.
#include "support/kernel_call.h"

#include "kernels.h"

#include <cmath>
#include <limits>

using namespace nodusmath;
using nodus::test::bits;
using nodus::test::call;
using nodus::test::callOver;

namespace {

using Kernel = void(void const*, void*) noexcept;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kOtherNaN = std::bit_cast<float>(0x7FC00042u);
constexpr Int32 kLowest = std::numeric_limits<Int32>::min();

template <typename T> struct Row {
    char const* why;
    Kernel* kernel;
    std::array<T, 3> ports;
    T expected;
};

// A block of three ports serves kernels of one and two as well: they do not read on.
template <typename T, std::size_t count> void expectRows(Row<T> const (&rows)[count])
{
    for (Row<T> const& r : rows)
        EXPECT_EQ(bits(call<T>(r.kernel, r.ports[0], r.ports[1], r.ports[2])), bits(r.expected))
            << r.why;
}

template <typename T> struct Two {
    T first, second;
};

}  // namespace

TEST(ScalarFunctions, SelectionsHandOnTheRightOperand)
{
    static constexpr Row<Float> kFloats[] = {
        {"the lesser", NodusMin_Float_Solve, {2, -3}, -3},
        {"of two zeros the second", NodusMin_Float_Solve, {-0.0f, 0.0f}, 0.0f},
        {"of two zeros the second", NodusMin_Float_Solve, {0.0f, -0.0f}, -0.0f},
        {"NaN yields to the second", NodusMin_Float_Solve, {kNaN, 3}, 3},
        {"a second NaN stays", NodusMin_Float_Solve, {3, kOtherNaN}, kOtherNaN},
        {"of two NaN the second", NodusMin_Float_Solve, {kNaN, kOtherNaN}, kOtherNaN},
        {"the greater", NodusMax_Float_Solve, {2, -3}, 2},
        {"of two zeros the second", NodusMax_Float_Solve, {0.0f, -0.0f}, -0.0f},
        {"NaN yields to the second", NodusMax_Float_Solve, {kNaN, -3}, -3},
        {"a second NaN stays", NodusMax_Float_Solve, {3, kOtherNaN}, kOtherNaN},
        {"within", NodusClamp_Float_Solve, {2, 1, 3}, 2},
        {"below", NodusClamp_Float_Solve, {0, 1, 3}, 1},
        {"above", NodusClamp_Float_Solve, {4, 1, 3}, 3},
        {"the upper bound wins", NodusClamp_Float_Solve, {5, 10, 0}, 0},
        {"a NaN value gives max", NodusClamp_Float_Solve, {kNaN, 1, 3}, 3},
        {"a NaN min counts for nothing", NodusClamp_Float_Solve, {-7, kNaN, 3}, -7},
        {"a NaN max is the result", NodusClamp_Float_Solve, {2, 1, kOtherNaN}, kOtherNaN},
        {"a zero at min keeps its sign", NodusClamp_Float_Solve, {-0.0f, 0.0f, 1}, -0.0f},
        {"a zero at max takes the sign of max", NodusClamp_Float_Solve, {-0.0f, -1, 0.0f}, 0.0f},
        {"saturated below", NodusSat_Float_Solve, {-0.5f}, 0},
        {"saturated above", NodusSat_Float_Solve, {2}, 1},
        {"saturated between", NodusSat_Float_Solve, {0x1p-149f}, 0x1p-149f},
        {"saturated NaN", NodusSat_Float_Solve, {kNaN}, 0.0f},
        {"saturated -0", NodusSat_Float_Solve, {-0.0f}, 0.0f},
        {"the edge itself", NodusStep_Float_Solve, {2, 2}, 1},
        {"just before the edge", NodusStep_Float_Solve, {0x1.fffffep0f, 2}, 0},
        {"no step for NaN", NodusStep_Float_Solve, {kNaN, 2}, 0},
        {"no step to a NaN edge", NodusStep_Float_Solve, {2, kNaN}, 0},
        {"sign of a subnormal", NodusSign_Float_Solve, {-0x1p-149f}, -1},
        {"sign of a positive", NodusSign_Float_Solve, {kInfinity}, 1},
        {"sign of -0", NodusSign_Float_Solve, {-0.0f}, 0.0f},
        {"sign of NaN", NodusSign_Float_Solve, {-kNaN}, 0.0f},
    };
    expectRows(kFloats);
    static constexpr Row<Double> kDoubles[] = {
        {"of two zeros the second", NodusMin_Double_Solve, {0.0, -0.0}, -0.0},
        {"NaN yields to the second", NodusMin_Double_Solve, {kNaN, 3}, 3},
        {"the greater", NodusMax_Double_Solve, {1, 1 + 0x1p-52}, 1 + 0x1p-52},
        {"of two zeros the second", NodusMax_Double_Solve, {0.0, -0.0}, -0.0},
        {"the edge itself", NodusStep_Double_Solve, {2, 2}, 1},
        {"before the edge", NodusStep_Double_Solve, {2, 2 + 0x1p-51}, 0},
        {"sign of a negative", NodusSign_Double_Solve, {-1e-320}, -1},
        {"sign of a positive", NodusSign_Double_Solve, {1e-320}, 1},
        {"sign of -0", NodusSign_Double_Solve, {-0.0}, 0.0},
    };
    expectRows(kDoubles);
    static constexpr Row<Int32> kSigned[] = {
        {"signed", NodusMin_Int32_Solve, {-1, 1}, -1},
        {"signed", NodusMax_Int32_Solve, {-1, 1}, 1},
        {"below", NodusClamp_Int32_Solve, {-5, -2, 7}, -2},
        {"the upper bound wins", NodusClamp_Int32_Solve, {5, 10, 0}, 0},
        {"sign", NodusSign_Int32_Solve, {-7}, -1},
        {"sign", NodusSign_Int32_Solve, {kLowest}, -1},
        {"sign", NodusSign_Int32_Solve, {7}, 1},
        {"sign", NodusSign_Int32_Solve, {0}, 0},
    };
    expectRows(kSigned);
    static constexpr Row<UInt32> kUnsigned[] = {
        {"unsigned", NodusMin_UInt32_Solve, {0xFFFFFFFFu, 1}, 1},
        {"unsigned", NodusMax_UInt32_Solve, {0xFFFFFFFFu, 1}, 0xFFFFFFFFu},
        {"unsigned", NodusClamp_UInt32_Solve, {0xFFFFFFFFu, 1, 0x80000000u}, 0x80000000u},
    };
    expectRows(kUnsigned);
    static constexpr Row<UInt8> kBytes[] = {
        {"unsigned", NodusMin_UInt8_Solve, {200, 100}, 100},
        {"unsigned", NodusMax_UInt8_Solve, {200, 100}, 200},
        {"below", NodusClamp_UInt8_Solve, {5, 130, 200}, 130},
        {"the upper bound wins", NodusClamp_UInt8_Solve, {150, 200, 100}, 100},
    };
    expectRows(kBytes);
}

TEST(ScalarFunctions, CurvesAndRanges)
{
    static constexpr Row<Float> kRows[] = {
        {"half way", NodusSmoothStep_Float_Solve, {0.5f, 0, 1}, 0.5f},
        {"a quarter", NodusSmoothStep_Float_Solve, {1.5f, 1, 3}, 0.15625f},
        {"falling", NodusSmoothStep_Float_Solve, {1.5f, 3, 1}, 0.84375f},
        {"before the first edge", NodusSmoothStep_Float_Solve, {-1, 0, 1}, 0},
        {"behind the second", NodusSmoothStep_Float_Solve, {2, 0, 1}, 1},
        {"equal edges", NodusSmoothStep_Float_Solve, {5, 1, 1}, 0},
        {"edges equal but for the sign of zero", NodusSmoothStep_Float_Solve, {5, 0.0f, -0.0f}, 0},
        {"equal infinite edges", NodusSmoothStep_Float_Solve, {5, kInfinity, kInfinity}, 0},
        {"NaN counts as before", NodusSmoothStep_Float_Solve, {kNaN, 0, 1}, 0},
        {"(t t) times ((3 - t) - t)", NodusSmoothStep_Float_Solve, {0.012f, 0, 1}, 0x1.c15c66p-12f},
    };
    expectRows(kRows);
    EXPECT_TRUE(std::isnan(call<Double>(NodusSmoothStep_Double_Solve, Double{kNaN}, 0.0, 1.0)))
        << "the Double kernel keeps NaN";
    EXPECT_EQ(call<Double>(NodusSmoothStep_Double_Solve, 1.5, 1.0, 3.0), 0.15625);
    EXPECT_EQ(call<Double>(NodusSmoothStep_Double_Solve, 5.0, 1.0, 1.0), 0.0);
    EXPECT_EQ(call<Double>(NodusSmoothStep_Double_Solve, -9.0, 1.0, 3.0), 0.0);
    EXPECT_EQ(call<Double>(NodusSmoothStep_Double_Solve, 9.0, 1.0, 3.0), 1.0);

    EXPECT_EQ(call<Float>(NodusRescale_Float_Solve, 15.0f, 0.0f, 10.0f, 0.0f, 100.0f), 150.0f);
    EXPECT_EQ(call<Double>(NodusRescale_Double_Solve, 4.0, 2.0, 10.0, -1.0, 7.0), 1.0);
    EXPECT_EQ(call<Float>(NodusRescale_Float_Solve, kNaN, 2.0f, 2.0f, 7.0f, 9.0f), 7.0f)
        << "an empty range gives toMin whatever the value is";
    EXPECT_EQ(bits(call<Float>(NodusRescale_Float_Solve, 3.0f, 0.0f, 10.0f, 0.0f, 3.0f)),
              bits(0x1.cccccep-1f))
        << "divided before it is multiplied: 9 / 10 is one less in the last place";
}

TEST(ScalarFunctions, BiasAndGain)
{
    struct Curve {
        char const* why;
        float amount, value, bias, gain;
    };
    static constexpr Curve kCurves[] = {
        {"first quarter", 0.25f, 0.25f, 0.1f, 0.125f},
        {"the middle belongs to the second half", 0.25f, 0.5f, 0.25f, 0.5f},
        {"third quarter", 0.25f, 0.75f, 0.5f, 0.875f},
        {"straight at one half", 0.5f, 0.375f, 0.375f, 0.375f},
    };
    for (Curve const& c : kCurves) {
        auto const floats = call<Two<Float>>(NodusFastBiasAndGain_Float_Solve, c.amount, c.value);
        EXPECT_EQ(floats.first, c.bias) << c.why;
        EXPECT_EQ(floats.second, c.gain) << c.why;
        auto const doubles =
            call<Two<Double>>(NodusFastBiasAndGain_Double_Solve, Double{c.amount}, Double{c.value});
        EXPECT_NEAR(doubles.first, c.bias, 1e-8) << c.why;
        EXPECT_EQ(doubles.second, c.gain) << c.why;
    }
    for (float const amount : {0.0f, 1.0f, -0.5f, 1.5f, kNaN}) {
        auto const floats =
            callOver(Two<Float>{7, 9}, NodusFastBiasAndGain_Float_Solve, amount, 0.25f);
        EXPECT_EQ(floats.first, 7.0f) << amount << " leaves the outputs as they were";
        EXPECT_EQ(floats.second, 9.0f) << amount;
        auto const doubles =
            callOver(Two<Double>{7, 9}, NodusFastBiasAndGain_Double_Solve, Double{amount}, 0.25);
        EXPECT_EQ(doubles.first, 7.0) << amount;
        EXPECT_EQ(doubles.second, 9.0) << amount;
    }
}

TEST(ScalarFunctions, Rounding)
{
    // Floor, Ceil, Round and Frac of one Float.
    struct Rounded {
        char const* why;
        float value, floor, ceil, round, fraction;
    };
    static constexpr Rounded kRows[] = {
        {"a positive fraction", 2.75f, 2, 3, 3, 0.75f},
        {"a negative fraction", -1.25f, -2, -1, -1, -0.25f},
        {"no zero is -0, but the fraction of -0", -0.0f, 0.0f, 0.0f, 0.0f, -0.0f},
        {"nor what is rounded to it", -0.5f, -1, 0.0f, 0.0f, -0.5f},
        {"ties to even", 0.5f, 0, 1, 0, 0.5f},
        {"ties to even", 1.5f, 1, 2, 2, 0.5f},
        {"ties to even", 2.5f, 2, 3, 2, 0.5f},
        {"ties to even", -2.5f, -3, -2, -2, -0.5f},
        {"the float before a half", 0x1.fffffep-2f, 0, 1, 0, 0x1.fffffep-2f},
        {"a negative whole number has the fraction +0", -3, -3, -3, -3, 0.0f},
        {"the last half", 8388607.5f, 8388607, 8388608, 8388608, 0.5f},
        {"the lowest integer", -0x1p31f, -0x1p31f, -0x1p31f, -0x1p31f, 0.0f},
        {"what is no Int32 counts as the lowest", 0x1p31f, -0x1p31f, -0x1p31f, -0x1p31f, 0x1p32f},
        {"an infinity too", kInfinity, -0x1p31f, -0x1p31f, -0x1p31f, kInfinity},
    };
    for (Rounded const& r : kRows) {
        EXPECT_EQ(bits(call<Float>(NodusFloor_Float_Solve, r.value)), bits(r.floor)) << r.why;
        EXPECT_EQ(bits(call<Float>(NodusCeil_Float_Solve, r.value)), bits(r.ceil)) << r.why;
        EXPECT_EQ(bits(call<Float>(NodusRound_Float_Solve, r.value)), bits(r.round)) << r.why;
        EXPECT_EQ(bits(call<Float>(NodusFrac_Float_Solve, r.value)), bits(r.fraction)) << r.why;
    }
    EXPECT_EQ(call<Float>(NodusFloor_Float_Solve, kNaN), -0x1p31f);
    EXPECT_TRUE(std::isnan(call<Float>(NodusFrac_Float_Solve, kNaN)));

    static constexpr Row<Double> kDoubles[] = {
        {"halves go up", NodusRound_Double_Solve, {0.5}, 1},
        {"halves go up", NodusRound_Double_Solve, {2.5}, 3},
        {"halves go up", NodusRound_Double_Solve, {-2.5}, -2},
        {"the sum is rounded", NodusRound_Double_Solve, {0.49999999999999994}, 1},
        {"beyond 32 bits", NodusRound_Double_Solve, {1e15 + 0.25}, 1e15},
        {"beyond 32 bits", NodusFloor_Double_Solve, {-1e15 - 0.25}, -1e15 - 1},
        {"-0 stays -0", NodusFloor_Double_Solve, {-0.0}, -0.0},
        {"beyond 32 bits", NodusCeil_Double_Solve, {1e15 + 0.25}, 1e15 + 1},
        {"up to -0", NodusCeil_Double_Solve, {-0.5}, -0.0},
        {"towards zero", NodusFrac_Double_Solve, {-3.75}, -0.75},
        {"through 32 bits", NodusFrac_Double_Solve, {0x1p31}, 0x1p32},
        {"the last Int32", NodusFrac_Double_Solve, {0x1p31 - 0.25}, 0.75},
    };
    expectRows(kDoubles);
    EXPECT_EQ(bits(call<Double>(NodusFloor_Double_Solve,
                                std::bit_cast<double>(std::uint64_t{0x7FF0000000000001u}))),
              0x7FF8000000000001u)
        << "the library quiets a signalling NaN";
}

TEST(ScalarFunctions, Conversions)
{
    EXPECT_EQ(bits(call<Double>(NodusDegrees_Double_Solve, 3.141592653589793)),
              bits(180.00000210110483))
        << "the factor is a widened float";
    EXPECT_EQ(bits(call<Double>(NodusRadians_Double_Solve, 1.0)),
              bits(0.01745329238474369049072265625));
    EXPECT_EQ(bits(call<Float>(NodusDegrees_Float_Solve, 1.0f)), 0x42652EE1u);
    EXPECT_EQ(bits(call<Float>(NodusRadians_Float_Solve, 1.0f)), 0x3C8EFA35u);

    struct Cast {
        float value;
        Int32 expected;
    };
    static constexpr Cast kCasts[] = {
        {-2.9f, -2},         {2.9f, 2},          {-0.0f, 0},        {0x1.fffffep30f, 2147483520},
        {-0x1p31f, kLowest}, {0x1p31f, kLowest}, {-1e20f, kLowest}, {kInfinity, kLowest},
        {kNaN, kLowest}};
    for (Cast const& c : kCasts)
        EXPECT_EQ(call<Int32>(NodusCastFloatToInt32_Solve, c.value), c.expected) << c.value;
    EXPECT_EQ(call<Float>(NodusCastInt32ToFloat_Solve, Int32{16777217}), 16777216.0f);
    EXPECT_EQ(call<Float>(NodusCastInt32ToFloat_Solve, Int32{16777219}), 16777220.0f);
    EXPECT_EQ(call<Float>(NodusCastInt32ToFloat_Solve, kLowest), -0x1p31f);
}
