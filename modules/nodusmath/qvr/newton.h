// Newton's method on a polynomial with a bound on the error that is left.
#pragma once

#include "error_free.h"

namespace qvr::newton {

template <int degree> struct Polynomial {
    double c[degree + 1];  // the highest power first
};

// p(x), its derivative, and the sum of the terms' magnitudes.
struct Value {
    double value, slope, magnitudes;
};

template <int degree> QVR_INLINE Value evaluate(Polynomial<degree> const& p, double x) noexcept
{
    double value = p.c[0], slope = 0, magnitudes = magnitude(p.c[0]);
    for (int i = 1; i <= degree; ++i) {
        slope = slope * x + value;
        value = value * x + p.c[i];
        magnitudes = magnitudes * magnitude(x) + magnitude(p.c[i]);
    }
    return {value, slope, magnitudes};
}

// The same, the value as if with twice the digits and then rounded: what rounding takes off is a
// polynomial, too, and its value is added.
template <int degree>
QVR_INLINE Value evaluateTwofold(Polynomial<degree> const& p, double x) noexcept
{
    errorFree::Halves const halves = errorFree::halvesOf(x);
    double value = p.c[0], slope = 0, lost = 0, magnitudes = magnitude(p.c[0]);
    for (int i = 1; i <= degree; ++i) {
        slope = slope * x + value;
        auto const product = errorFree::twoProduct(value, errorFree::halvesOf(value), x, halves);
        auto const sum = errorFree::twoSum(product.high, p.c[i]);
        lost = lost * x + (product.low + sum.low);
        value = sum.high;
        magnitudes = magnitudes * magnitude(x) + magnitude(p.c[i]);
    }
    return {value + lost, slope, magnitudes};
}

// What is asked of a root, relative to it, beside the rounding of the result.
template <typename T> inline constexpr double kAsked = 0;
template <> inline constexpr double kAsked<double> = 0x1p-64;  // 2^-11 units in the last place
template <> inline constexpr double kAsked<float> = 0x1p-35;
// Results that are nearer than this are one root: certain ones are at least 2^-39 (2^-18) apart.
template <typename T> inline constexpr double kApart = 0;
template <> inline constexpr double kApart<double> = 0x1p-50;
template <> inline constexpr double kApart<float> = 0x1p-26;

struct Root {
    double value;
    bool isCertain;
};

// The root that Newton's method finds from x within a few steps; certain when it is shown to be one
// and the only one within 2^-40 of itself, and the error to be less than what is asked.
//
// With t the last step over x, and k = magnitudes / |x slope|, the condition of the root: the next
// step would be at most degree (degree - 1) k t^2, the second derivative being bounded by the
// magnitudes; the residual is wrong by (2 degree u)^2 of the magnitudes, u = 2^-53, and by 2 degree
// u when it is not twofold (Graillat, Louvet, Langlois, theorem 5); the slope by less than 2
// degree^2 u k, relative. All are doubled here. That the bound is small makes k t small, which is
// what the existence of the root needs (the theorem of Newton and Kantorovich).
template <typename T, int degree> Root improved(Polynomial<degree> const& p, double x) noexcept
{
    constexpr bool isTwofold = kAsked<T> < 0x1p-50;
    constexpr double u = 0x1p-53;
    constexpr double ofResidual =
        isTwofold ? 2 * (2 * degree * u) * (2 * degree * u) : 2 * (2 * degree * u);
    constexpr double ofSlope = 4 * degree * degree * u;
    constexpr double ofCurvature = 2 * degree * (degree - 1);
    for (int i = 0; i < 8; ++i) {
        Value const v = isTwofold ? evaluateTwofold(p, x) : evaluate(p, x);
        double const inverse = 1 / (x * v.slope);
        double const condition = v.magnitudes * magnitude(inverse);
        double const step = v.value * inverse;
        double const t = magnitude(step);
        x -= step * x;
        double const error = condition * (ofResidual + t * (ofSlope + ofCurvature * t)) + 2 * t * u;
        if (error <= kAsked<T>)
            return {x, true};
        bool const isHopeless = !(condition * ofResidual <= kAsked<T>);
        if (isHopeless && i > 2)
            break;
    }
    return {x, false};
}

// What is left of p when the root x is divided out: from the highest power down to the largest
// term, and from the lowest up to it, which is where rounding does least (J. H. Wilkinson's
// composite deflation).
template <int degree>
Polynomial<degree - 1> withoutRoot(Polynomial<degree> const& p, double x) noexcept
{
    int join = 0;
    double largest = 0, power = 1;
    for (int i = degree; i >= 0; --i) {
        if (magnitude(p.c[i]) * power > largest)
            largest = magnitude(p.c[i]) * power, join = i;
        power *= magnitude(x);
    }
    Polynomial<degree - 1> quotient;
    double value = 0;
    for (int i = 0; i < join; ++i)
        quotient.c[i] = value = value * x + p.c[i];
    value = 0;
    for (int i = degree - 1; i >= join; --i)
        quotient.c[i] = value = (value - p.c[i + 1]) / x;
    return quotient;
}

}  // namespace qvr::newton
