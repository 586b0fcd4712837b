// The math functions that kernels call: the C library's, or in a portable build those of a library
// that is linked into the module and computes the same bits on every processor.
#pragma once

#ifndef NODUSMATH_PORTABLE

#include <cmath>

namespace nodusmath::library {

using std::acos;
using std::asin;
using std::atan2;
using std::ceil;
using std::cos;
using std::exp;
using std::floor;
using std::fmod;
using std::log;
using std::log10;
using std::pow;
using std::sin;
using std::tan;

// An extension of the GNU C library and others.
inline void sincos(float v, float& sine, float& cosine) noexcept { ::sincosf(v, &sine, &cosine); }

}  // namespace nodusmath::library

#else

#include <bit>
#include <cstdint>

namespace nodusmath::library {

double acos(double) noexcept asm("portable_acos");
double asin(double) noexcept asm("portable_asin");
double atan2(double, double) noexcept asm("portable_atan2");
double ceil(double) noexcept asm("portable_ceil");
double cos(double) noexcept asm("portable_cos");
double exp(double) noexcept asm("portable_exp");
double floor(double) noexcept asm("portable_floor");
double fmod(double, double) noexcept asm("portable_fmod");
double log(double) noexcept asm("portable_log");
double log10(double) noexcept asm("portable_log10");
double pow(double, double) noexcept asm("portable_pow");
double sin(double) noexcept asm("portable_sin");
double tan(double) noexcept asm("portable_tan");

float acos(float) noexcept asm("portable_acosf");
float asin(float) noexcept asm("portable_asinf");
float atan2(float, float) noexcept asm("portable_atan2f");
float cos(float) noexcept asm("portable_cosf");
float exp(float) noexcept asm("portable_expf");
float fmod(float, float) noexcept asm("portable_fmodf");
float log(float) noexcept asm("portable_logf");
float log10(float) noexcept asm("portable_log10f");
float pow(float, float) noexcept asm("portable_powf");
float sin(float) noexcept asm("portable_sinf");
float tan(float) noexcept asm("portable_tanf");
void sincosPointers(float, float*, float*) noexcept asm("portable_sincosf");
inline void sincos(float v, float& sine, float& cosine) noexcept
{
    sincosPointers(v, &sine, &cosine);
}

// e^v in extended precision, of which the arithmetic is the same everywhere; the instructions for
// exponentials are not, and libraries use them. For results that become a double: beyond the range
// of double it is 0 or infinity. About one unit in the last of 64 places.
inline long double exp(long double v) noexcept
{
    if (!(v < 710.0L))
        return v * __builtin_infl();  // NaN stays NaN
    if (v < -746.0L)
        return 0.0L;

    // v = n ln 2 + r with |r| at most ln 2 / 2. The first part of ln 2 has 42 places, so that its
    // product with n is exact; the second is the rest of ln 2, rounded.
    constexpr long double kPerLn2 = 1.44269504088896340735992468100189214L;
    constexpr long double kLn2 = 0x1.62e42fefa2p-1L;
    constexpr long double kLn2Rest = 0xcf79abc9e3b39804p-104L;
    int const n = static_cast<int>(v * kPerLn2 + (v < 0 ? -0.5L : 0.5L));
    long double const r =
        (v - static_cast<long double>(n) * kLn2) - static_cast<long double>(n) * kLn2Rest;

    // The series of the exponential: the term of degree 18 is below 2^-80.
    constexpr int kDegree = 17;
    struct Terms {
        long double reciprocalFactorial[kDegree + 1] = {1};
        constexpr Terms()
        {
            for (int i = 1; i <= kDegree; ++i)
                reciprocalFactorial[i] = reciprocalFactorial[i - 1] / i;
        }
    };
    static constexpr Terms kTerms;
    long double sum = kTerms.reciprocalFactorial[kDegree];
    for (int i = kDegree - 1; i >= 0; --i)
        sum = sum * r + kTerms.reciprocalFactorial[i];

    // By powers of two in two steps, each of them a double.
    auto const power = [](int exponent) {
        return static_cast<long double>(
            std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52));
    };
    return sum * power(n / 2) * power(n - n / 2);
}

}  // namespace nodusmath::library

#endif
