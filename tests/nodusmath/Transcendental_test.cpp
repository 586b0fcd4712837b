// Kernels over functions of the C library give its very bits. The others are rows.
#include "support/kernel_call.h"

#include <emmintrin.h>

using namespace nodus::test;

namespace {

// The compiler folds literals with a better function than the library's: it must not see through.
template <typename T> T hidden(T value)
{
    T volatile v = value;
    return v;
}

// Among them 7.265625 and 30.125, whose powers of two come out differently in extended precision.
constexpr double kArguments[] = {7.265625, 30.125, 0.0,    -0.0,  0.3,       -0.7,      1,
                                 -1,       1.5,    2.3,    -3,    8,         10,        -12.5,
                                 88,       -95,    1e5,    -1e10, 1e30,      1e-30,     1e-40,
                                 -1e-42,   0.1,    0.9999, kNaN,  kInfinity, -kInfinity};

// The function, the same for both types.
struct Function {
    template <typename F>
    Function(Kernel* floats, Kernel* doubles, F function)
        : floatKernel(floats), doubleKernel(doubles), ofFloat(function), ofDouble(function)
    {
    }
    Kernel *floatKernel, *doubleKernel;
    float (*ofFloat)(float, float);
    double (*ofDouble)(double, double);
};

template <typename T> void expectSame(T is, T should, T a, T b)
{
    if (std::isnan(should))
        EXPECT_TRUE(std::isnan(is)) << a << ", " << b;
    else
        EXPECT_EQ(bits(is), bits(should)) << a << ", " << b;
}

template <typename T> struct SineCosine {
    T sine, cosine;
};

template <typename T> void expectSineCosine(Kernel* kernel)
{
    for (double const argument : kArguments) {
        T const x = hidden(static_cast<T>(argument));
        auto const both = call<SineCosine<T>>(kernel, x);
        expectSame(both.sine, std::sin(x), x, x);
        expectSame(both.cosine, std::cos(x), x, x);
    }
}

#define OF_BOTH_TYPES(family) Nodus##family##_Float_Solve, Nodus##family##_Double_Solve

}  // namespace

TEST(Transcendental, KernelsAreTheLibrarysFunctions)
{
    Function const functions[] = {
        {OF_BOTH_TYPES(Sin), [](auto x, auto) { return std::sin(x); }},
        {OF_BOTH_TYPES(Cos), [](auto x, auto) { return std::cos(x); }},
        {OF_BOTH_TYPES(Tan), [](auto x, auto) { return std::tan(x); }},
        {OF_BOTH_TYPES(ASin), [](auto x, auto) { return std::asin(x); }},
        {OF_BOTH_TYPES(ACos), [](auto x, auto) { return std::acos(x); }},
        {OF_BOTH_TYPES(Exp), [](auto x, auto) { return std::exp(x); }},
        {OF_BOTH_TYPES(Ln), [](auto x, auto) { return std::log(x); }},
        {OF_BOTH_TYPES(Log10), [](auto x, auto) { return std::log10(x); }},
        {OF_BOTH_TYPES(Sqrt), [](auto x, auto) { return std::sqrt(x); }},
        {OF_BOTH_TYPES(ATan), [](auto y, auto x) { return std::atan2(y, x); }},
        {OF_BOTH_TYPES(Pow), [](auto x, auto y) { return std::pow(x, y); }},
        {OF_BOTH_TYPES(Exp2),
         [](auto x, auto) {
             if constexpr (sizeof x == 4)
                 return ::expf(hidden(x * 0x1.62e43p-1f));
             else
                 return static_cast<double>(::expl(hidden(x * 0x1.62e42fefa39efp-1)));
         }},
        {OF_BOTH_TYPES(Log2),
         [](auto x, auto) {
             if constexpr (sizeof x == 4)
                 return ::logf(x) * 0x1.715476p0f;
             else
                 return ::log(x) * 0x1.71547652b82fep0;
         }},
    };
    // Kernels of one port do not read the second.
    for (Function const& f : functions) {
        SCOPED_TRACE(&f - functions);
        for (double const a : kArguments)
            for (double const b : kArguments) {
                auto const x = hidden(static_cast<float>(a)), y = hidden(static_cast<float>(b));
                expectSame(call<Float>(f.floatKernel, x, y), f.ofFloat(x, y), x, y);
                expectSame(call<Double>(f.doubleKernel, a, b), f.ofDouble(hidden(a), b), a, b);
            }
    }
    expectSineCosine<Float>(NodusSinCos_Float_Solve);
    expectSineCosine<Double>(NodusSinCos_Double_Solve);
}

TEST(Transcendental, ReciprocalSquareRootIsTheProcessorsEstimate)
{
    for (float const value : {4.0f, 0.3f, 1e30f, 1e-30f, 1e-40f, kInfinity})
        EXPECT_EQ(bits(call<Float>(NodusRSqrt_Float_Solve, value)),
                  bits(_mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(hidden(value))))))
            << value;
}
