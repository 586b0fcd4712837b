// Trigonometry, exponentials, logarithms and roots. Angles are in radians.
//
// Most hand their ports to the math library in their own precision: what it makes of NaN,
// infinities, poles and arguments outside of a domain stands. Nothing reads or clears errno.
#pragma once

#include "mathlibrary.h"
#include "qvr/estimates.h"
#include "values.h"

#include <bit>
#include <cstdint>
#include <type_traits>

namespace nodusmath {

template <typename T> T sineOf(T value) noexcept { return library::sin(value); }
template <typename T> T cosineOf(T value) noexcept { return library::cos(value); }
template <typename T> T tangentOf(T value) noexcept { return library::tan(value); }
template <typename T> T arcSineOf(T value) noexcept { return library::asin(value); }
template <typename T> T arcCosineOf(T value) noexcept { return library::acos(value); }
template <typename T> T arcTangentOf(T y, T x) noexcept { return library::atan2(y, x); }
template <typename T> T exponentialOf(T value) noexcept { return library::exp(value); }
template <typename T> T logarithmOf(T value) noexcept { return library::log(value); }
template <typename T> T decimalLogarithmOf(T value) noexcept { return library::log10(value); }
template <typename T> T powerOf(T base, T exponent) noexcept
{
    return library::pow(base, exponent);
}

// By reference, so that the library writes to the ports themselves: one evaluation for both.
template <typename T> void sineAndCosine(T value, T& sine, T& cosine) noexcept;
template <> inline void sineAndCosine(Float value, Float& sine, Float& cosine) noexcept
{
    library::sincos(value, sine, cosine);
}
// Two calls, the sine first: the module's build keeps compilers from merging them.
template <> inline void sineAndCosine(Double value, Double& sine, Double& cosine) noexcept
{
    sine = library::sin(value);
    cosine = library::cos(value);
}

// The nearest of each type to ln 2 (0x3F317218, 0x3FE62E42FEFA39EF) and to 1 / ln 2 (0x3FB8AA3B,
// 0x3FF71547652B82FE).
template <typename T> inline constexpr T kLn2 = 0.6931471805599453;
template <> inline constexpr Float kLn2<Float> = 0.6931471824645996f;
template <typename T> inline constexpr T kReciprocalLn2 = 1.4426950408889634;
template <> inline constexpr Float kReciprocalLn2<Float> = 1.4426950216293335f;
static_assert(std::bit_cast<UInt32>(kLn2<Float>) == 0x3F317218u);
static_assert(std::bit_cast<std::uint64_t>(kLn2<Double>) == 0x3FE62E42FEFA39EFu);
static_assert(std::bit_cast<UInt32>(kReciprocalLn2<Float>) == 0x3FB8AA3Bu);
static_assert(std::bit_cast<std::uint64_t>(kReciprocalLn2<Double>) == 0x3FF71547652B82FEu);

// Base 2 through the natural functions, the product rounded to T: whole numbers do not give exact
// powers of two, nor powers of two whole numbers. Exp2 of 3.0 is 7.999999999999998.
template <typename T> T binaryExponentialOf(T value) noexcept;
template <> inline Float binaryExponentialOf(Float value) noexcept
{
    return library::exp(value * kLn2<Float>);
}
// The exponential itself in extended precision, rounded once more at the end.
template <> inline Double binaryExponentialOf(Double value) noexcept
{
    return library::extendedExp(value * kLn2<Double>);
}
template <typename T> T binaryLogarithmOf(T value) noexcept
{
    return library::log(value) * kReciprocalLn2<T>;
}

template <typename T> T squareRootOf(T value) noexcept { return qvr::squareRoot(value); }

// 1 / sqrt(value), but +0 for zeros of either sign, which are not divided by: the processor would
// raise an exception. Float is the processor's estimate as it comes: +infinity for subnormals.
template <typename T> T reciprocalSquareRootOf(T value) noexcept
{
    if (qvr::isZero(value)) [[unlikely]]
        return 0;
    if constexpr (std::is_same_v<T, Float>)
        return qvr::reciprocalSquareRootEstimate(value);
    else
        return 1 / qvr::squareRoot(value);
}

// acos(sqrt(c^2 - a^2 - b^2)): the difference in single precision, root and arc cosine in double.
// Not the angle of the law of cosines. In [0, pi / 2], or NaN where the difference is outside of
// [0, 1].
inline Float cosineLaw(Float a, Float b, Float c) noexcept
{
    Float const difference = ((c * c) - (a * a)) - (b * b);
    return static_cast<Float>(library::acos(qvr::squareRoot(Double{difference})));
}

}  // namespace nodusmath
