// Kernels over the C library's functions give its very bits; the others theirs.
#include "support/kernel_call.h"

#include "kernels.h"

#include <emmintrin.h>

#include <cmath>
#include <limits>

using namespace nodusmath;
using nodus::test::bits;
using nodus::test::call;

namespace {

using Kernel = void(void const*, void*) noexcept;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// The compiler folds literals with a better function than the library's: it must not see through.
template <typename T> T hidden(T value)
{
    T volatile v = value;
    return v;
}

// Among them 7.265625 and 30.125, whose powers of two come out differently in extended precision.
template <typename T>
constexpr T kArguments[] = {T(7.265625), T(30.125), T(0.0),       T(-0.0),   T(0.3),       T(-0.7),
                            T(1),        T(-1),     T(1.5),       T(2.3),    T(-3),        T(8),
                            T(10),       T(-12.5),  T(88),        T(-95),    T(1e5),       T(-1e10),
                            T(1e30),     T(1e-30),  T(1e-40),     T(-1e-42), T(kInfinity), T(kNaN),
                            T(0.1),      T(0.9999), T(-kInfinity)};

template <typename T> struct Function {
    char const* name;
    Kernel* kernel;
    T (*expected)(T);
};

template <typename T> void expectSame(T actual, T expected, char const* name, T argument)
{
    if (std::isnan(expected))
        EXPECT_TRUE(std::isnan(actual)) << name << " of " << argument;
    else
        EXPECT_EQ(bits(actual), bits(expected)) << name << " of " << argument;
}

template <typename T, std::size_t count> void expectFunctions(Function<T> const (&functions)[count])
{
    for (auto const& function : functions)
        for (T const argument : kArguments<T>)
            expectSame(call<T>(function.kernel, argument), function.expected(hidden(argument)),
                       function.name, argument);
}

template <typename T> struct SineCosine {
    T sine, cosine;
};

}  // namespace

TEST(Transcendental, FloatKernelsAreTheLibrarysFunctions)
{
    static constexpr Function<Float> kFunctions[] = {
        {"Sin", NodusSin_Float_Solve, [](float x) { return ::sinf(x); }},
        {"Cos", NodusCos_Float_Solve, [](float x) { return ::cosf(x); }},
        {"Tan", NodusTan_Float_Solve, [](float x) { return ::tanf(x); }},
        {"ASin", NodusASin_Float_Solve, [](float x) { return ::asinf(x); }},
        {"ACos", NodusACos_Float_Solve, [](float x) { return ::acosf(x); }},
        {"Exp", NodusExp_Float_Solve, [](float x) { return ::expf(x); }},
        {"Exp2", NodusExp2_Float_Solve, [](float x) { return ::expf(hidden(x * 0x1.62e43p-1f)); }},
        {"Ln", NodusLn_Float_Solve, [](float x) { return ::logf(x); }},
        {"Log2", NodusLog2_Float_Solve, [](float x) { return ::logf(x) * 0x1.715476p0f; }},
        {"Log10", NodusLog10_Float_Solve, [](float x) { return ::log10f(x); }},
        {"Sqrt", NodusSqrt_Float_Solve, [](float x) { return ::sqrtf(x); }},
    };
    expectFunctions(kFunctions);
}

TEST(Transcendental, DoubleKernelsAreTheLibrarysFunctions)
{
    static constexpr Function<Double> kFunctions[] = {
        {"Sin", NodusSin_Double_Solve, [](double x) { return ::sin(x); }},
        {"Cos", NodusCos_Double_Solve, [](double x) { return ::cos(x); }},
        {"Tan", NodusTan_Double_Solve, [](double x) { return ::tan(x); }},
        {"ASin", NodusASin_Double_Solve, [](double x) { return ::asin(x); }},
        {"ACos", NodusACos_Double_Solve, [](double x) { return ::acos(x); }},
        {"Exp", NodusExp_Double_Solve, [](double x) { return ::exp(x); }},
        {"Exp2", NodusExp2_Double_Solve,
         [](double x) { return static_cast<double>(::expl(hidden(x * 0x1.62e42fefa39efp-1))); }},
        {"Ln", NodusLn_Double_Solve, [](double x) { return ::log(x); }},
        {"Log2", NodusLog2_Double_Solve, [](double x) { return ::log(x) * 0x1.71547652b82fep0; }},
        {"Log10", NodusLog10_Double_Solve, [](double x) { return ::log10(x); }},
        {"Sqrt", NodusSqrt_Double_Solve, [](double x) { return ::sqrt(x); }},
    };
    expectFunctions(kFunctions);
    EXPECT_EQ(call<Double>(NodusExp2_Double_Solve, 3.0), 7.999999999999998)
        << "the product with ln 2 is rounded before the exponential";
    EXPECT_EQ(call<Double>(NodusLog2_Double_Solve, 8.0), 2.9999999999999996)
        << "the natural logarithm is rounded before the product";
}

TEST(Transcendental, TwoPortsInTheirOrderAndTwoResultsInTheirs)
{
    for (float const a : kArguments<float>) {
        for (float const b : kArguments<float>) {
            Double const c = a, d = b;
            expectSame(call<Float>(NodusATan_Float_Solve, a, b), ::atan2f(hidden(a), b), "ATan", a);
            expectSame(call<Float>(NodusPow_Float_Solve, a, b), ::powf(hidden(a), b), "Pow", a);
            expectSame(call<Double>(NodusATan_Double_Solve, c, d), ::atan2(hidden(c), d), "ATan",
                       c);
            expectSame(call<Double>(NodusPow_Double_Solve, c, d), ::pow(hidden(c), d), "Pow", c);
        }
        auto const floats = call<SineCosine<Float>>(NodusSinCos_Float_Solve, a);
        expectSame(floats.sine, ::sinf(hidden(a)), "sine", a);
        expectSame(floats.cosine, ::cosf(hidden(a)), "cosine", a);
        auto const doubles = call<SineCosine<Double>>(NodusSinCos_Double_Solve, Double{a});
        expectSame(doubles.sine, ::sin(hidden(Double{a})), "sine", Double{a});
        expectSame(doubles.cosine, ::cos(hidden(Double{a})), "cosine", Double{a});
    }
}

TEST(Transcendental, ReciprocalSquareRoots)
{
    for (float const value : {4.0f, 0.3f, 1e30f, 1e-30f, 1e-40f, kInfinity}) {
        auto const root = call<Float>(NodusRSqrt_Float_Solve, value);
        EXPECT_EQ(bits(root), bits(_mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(hidden(value))))))
            << "the bare estimate of " << value;
    }
    // 1.5 * 2^-12 is the bound that processors document for their estimate.
    EXPECT_NEAR(call<Float>(NodusRSqrt_Float_Solve, 4.0f), 0.5, 0.5 * 1.5 * 0x1p-12);
    for (float const zero : {0.0f, -0.0f}) {
        EXPECT_EQ(bits(call<Float>(NodusRSqrt_Float_Solve, zero)), 0u) << "not an infinity";
        EXPECT_EQ(bits(call<Double>(NodusRSqrt_Double_Solve, Double{zero})), 0u);
    }
    for (float const none : {-1.0f, -kInfinity, kNaN}) {
        EXPECT_TRUE(std::isnan(call<Float>(NodusRSqrt_Float_Solve, none))) << none;
        EXPECT_TRUE(std::isnan(call<Double>(NodusRSqrt_Double_Solve, Double{none}))) << none;
    }
    EXPECT_EQ(call<Double>(NodusRSqrt_Double_Solve, 4.0), 0.5);
    EXPECT_EQ(bits(call<Double>(NodusRSqrt_Double_Solve, Double{kInfinity})), 0u);
    EXPECT_EQ(bits(call<Double>(NodusRSqrt_Double_Solve, 3.0)), bits(1 / ::sqrt(hidden(3.0))));
}

TEST(Transcendental, CosineLawIsItsFormula)
{
    constexpr float kHalfPi = 1.5707964f;
    EXPECT_EQ(bits(call<Float>(NodusCosineLaw_Solve, 0.0f, 0.0f, 1.0f)), 0u);
    EXPECT_EQ(call<Float>(NodusCosineLaw_Solve, 3.0f, 4.0f, 5.0f), kHalfPi);
    EXPECT_EQ(call<Float>(NodusCosineLaw_Solve, 0.0f, 0.0f, 0.0f), kHalfPi);
    EXPECT_TRUE(std::isnan(call<Float>(NodusCosineLaw_Solve, 1.0f, 1.0f, 1.0f)));
    EXPECT_TRUE(std::isnan(call<Float>(NodusCosineLaw_Solve, 0.0f, 0.0f, 1.5f)));
    EXPECT_EQ(bits(call<Float>(NodusCosineLaw_Solve, 0.25f, 0.5f, 0.75f)),
              bits(static_cast<float>(::acos(::sqrt(hidden(0.25))))))
        << "the root and the arc cosine in double precision";
    // Every other grouping, and a root or arc cosine in single precision, moves the last place.
    EXPECT_EQ(call<Float>(NodusCosineLaw_Solve, 0.01f, 0.16f, 1.0f), 0x1.49be0ep-3f);
}
