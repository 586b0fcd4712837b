// Polynomials by Remez' algorithm with rounded coefficients (fpminimax of Sollya; S. Chevillard,
// M. Joldes, C. Lauter, 2010), their errors below 2^-57 of the value.
#include "qvr/circular.h"

#include "qvr/scalar.h"

#include <bit>
#include <cstdint>
#include <limits>

namespace qvr {

namespace {

// A quarter turn as a sum of 33, 33 and 53 bits: up to 2^20 of the first two are exact.
constexpr double kQuarter1 = 0x1.921fb544p0, kQuarter2 = 0x1.0b4611a6p-34;
constexpr double kQuarter3 = 0x1.3198a2e037073p-69;
// What pi / 4 in double is short of it.
constexpr double kEighth = 0x1.921fb54442d18p-1, kEighthLow = 0x1.1a62633145c07p-55;

// For |x| <= pi / 4.
double sineOf(double x) noexcept
{
    double const z = x * x;
    double const tail =
        0x1.111111110f75ep-7 + z * (-0x1.a01a019bf2621p-13 +
                                    z * (0x1.71de355f53fb7p-19 +
                                         z * (-0x1.ae5e54bfd59f5p-26 + z * 0x1.5d8e4fd051e03p-33)));
    return x + x * z * (-0x1.5555555555548p-3 + z * tail);
}
double cosineOf(double x) noexcept
{
    double const z = x * x;
    double const tail = -0x1.6c16c16c1504cp-10 +
                        z * (0x1.a01a019c97a15p-16 +
                             z * (-0x1.27e4f7f91219p-22 +
                                  z * (0x1.1ee9e17e9ee61p-29 + z * -0x1.8fa9a763c7305p-37)));
    return 1 - (0.5 * z - z * z * (0x1.555555555554bp-5 + z * tail));
}

// For |x| <= tan(pi / 8).
double arctangentOf(double x) noexcept
{
    double const z = x * x, zz = z * z;
    double const even =
        -0x1.555555555553ap-2 +
        zz * (-0x1.249249228ac08p-3 +
              zz * (-0x1.745cf7745b67bp-4 +
                    zz * (-0x1.10eaa5b48e6cfp-4 +
                          zz * (-0x1.9c8d9bb3fef3p-5 + zz * -0x1.23ecbe9d76d87p-6))));
    double const odd =
        0x1.999999999527cp-3 +
        zz *
            (0x1.c71c70d926d83p-4 +
             zz * (0x1.3b11009ad1d67p-4 + zz * (0x1.deffd7bb909bfp-5 + zz * 0x1.3726da9dd2209p-5)));
    return x + x * z * (even + z * odd);
}

}  // namespace

SineAndCosine sinCos(double angle) noexcept
{
    if (!(magnitude(angle) <= 0x1p20))
        return {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
    // Whole numbers of quarter turns end up in the lowest bits.
    double const shifted = angle * 0x1.45f306dc9c883p-1 + 0x1.8p52;
    double const quarters = shifted - 0x1.8p52;
    double const rest =
        ((angle - quarters * kQuarter1) - quarters * kQuarter2) - quarters * kQuarter3;
    double const sine = sineOf(rest), cosine = cosineOf(rest);
    auto const quadrant = std::bit_cast<std::uint64_t>(shifted) & 3u;
    switch (quadrant) {
    case 0:
        return {sine, cosine};
    case 1:
        return {cosine, -sine};
    case 2:
        return {-sine, -cosine};
    default:
        return {-cosine, sine};
    }
}

double arctangent2(double num, double den) noexcept
{
    bool const isSteep = magnitude(num) > magnitude(den);
    double const small = magnitude(isSteep ? den : num), large = magnitude(isSteep ? num : den);
    double angle = 0;
    if (small > 0x1.a827999fcef32p-2 * large)
        angle = kEighth + (arctangentOf((small - large) / (small + large)) + kEighthLow);
    else if (large != 0)
        angle = arctangentOf(small / large);
    if (isSteep)
        angle = 2 * kEighth - (angle - 2 * kEighthLow);
    if (std::bit_cast<std::uint64_t>(den) >> 63 != 0)
        angle = 4 * kEighth - (angle - 4 * kEighthLow);
    return __builtin_copysign(angle, num);
}

}  // namespace qvr
