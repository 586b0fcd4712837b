// Sums and products of doubles together with what rounding took off: high + low is the exact
// result.
//
// No fused operation is used, so that the bits are the same on every processor: products are split
// (T. J. Dekker, "A floating-point technique for extending the available precision", Numerische
// Mathematik 18, 1971; the splitting is G. W. Veltkamp's), sums are those of D. E. Knuth, The Art
// of Computer Programming, volume 2, 4.2.2. To be compiled with -ffp-contract=off.
#pragma once

#include "scalar.h"

#include <bit>
#include <cstdint>

namespace qvr::errorFree {

// high + low, low at most half a unit in the last place of high.
struct Pair {
    double high, low;
};

// Exact for every a and b whose sum is finite.
QVR_INLINE Pair twoSum(double a, double b) noexcept
{
    double const sum = a + b;
    double const ofB = sum - a;
    return {sum, (a - (sum - ofB)) + (b - ofB)};
}
// The same where |a| >= |b| or a is 0.
QVR_INLINE Pair quickTwoSum(double a, double b) noexcept
{
    double const sum = a + b;
    return {sum, b - (sum - a)};
}

// A number as two halves of 26 bits, for products.
struct Halves {
    double high, low;
};
// Range: |v| below 2^996, or the factor overflows.
QVR_INLINE Halves halvesOf(double v) noexcept
{
    double const scaled = v * 0x8000001p0;  // 2^27 + 1
    double const high = scaled - (scaled - v);
    return {high, v - high};
}

// Exact where the product is 0 or between 2^-968 and 2^996 in magnitude.
QVR_INLINE Pair twoProduct(double a, Halves ofA, double b, Halves ofB) noexcept
{
    double const product = a * b;
    double const missing =
        ((ofA.high * ofB.high - product) + ofA.high * ofB.low) + ofA.low * ofB.high;
    return {product, missing + ofA.low * ofB.low};
}
QVR_INLINE Pair twoProduct(double a, double b) noexcept
{
    return twoProduct(a, halvesOf(a), b, halvesOf(b));
}

// 2^exponent, for -1022 <= exponent <= 1023.
QVR_INLINE double powerOfTwo(int exponent) noexcept
{
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}
// v 2^exponent, rounded once: for |v| from 2^-500 to 2^500 and |exponent| <= 1400.
QVR_INLINE double scaledBy(double v, int exponent) noexcept
{
    // What may become subnormal does so in the last product alone.
    int const last = exponent < -900 ? -900 : exponent > 900 ? 900 : exponent;
    return v * powerOfTwo(exponent - last) * powerOfTwo(last);
}
// The exponent of a normal number: 0 for 1, and -1023 for zeros and subnormals.
QVR_INLINE int exponentOf(double v) noexcept
{
    return static_cast<int>((std::bit_cast<std::uint64_t>(v) >> 52) & 0x7FFu) - 1023;
}

}  // namespace qvr::errorFree
