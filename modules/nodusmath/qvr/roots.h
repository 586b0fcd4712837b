// The real roots of polynomials up to the fourth degree, in float and double.
//
// Coefficients stand with the highest power first: solveCubic(a, b, c, d) is a x^3 + b x^2 + c x +
// d = 0. They are taken as they are, as exact numbers, and so the number of roots is exact: a
// double root is one of the polynomial that was given, not of one near it. Any finite coefficients
// will do, however far apart, subnormal ones too.
//
// Error:  0.501 units in the last place of the root, however close to another root it is; 0.75 of
//         them where the root is subnormal.
// Edge:   leading zeros make a lower degree; a NaN or an infinity among the coefficients gives no
//         roots; a root beyond the largest number is an infinity.
// Method: roots of a closed form (for cubics after J. F. Blinn, "How to solve a cubic equation",
//         2006) are improved by Newton steps whose residual has twice the digits (S. Graillat,
//         N. Louvet, P. Langlois, "Compensated Horner scheme", 2005), until a bound on the error
//         shows that they are right. Where no such bound can be had, near multiple roots, Sturm's
//         theorem is applied in exact arithmetic: microseconds instead of a fraction of one, and up
//         to 50 KB of stack.
#pragma once

namespace qvr {

// How often a root stands in the result whose number is a root more than once: once, so that the
// values are strictly ascending, or as often as it is one, so that a quadratic has 0 or 2 roots.
enum class Repeated { kOnce, kEach };

template <typename T, int degree> struct RealRoots {
    T values[degree];  // ascending; only the first count of them mean anything
    int count;
    bool everyNumber;  // all coefficients are 0: every number is a root, and count is 0

    T const* begin() const noexcept { return values; }
    T const* end() const noexcept { return values + count; }
};

// a x^2 + b x + c = 0
RealRoots<float, 2> solveQuadratic(float a, float b, float c, Repeated = Repeated::kOnce) noexcept;
RealRoots<double, 2> solveQuadratic(double a, double b, double c,
                                    Repeated = Repeated::kOnce) noexcept;

// a x^3 + b x^2 + c x + d = 0
RealRoots<float, 3> solveCubic(float a, float b, float c, float d,
                               Repeated = Repeated::kOnce) noexcept;
RealRoots<double, 3> solveCubic(double a, double b, double c, double d,
                                Repeated = Repeated::kOnce) noexcept;

// a x^4 + b x^3 + c x^2 + d x + e = 0
RealRoots<float, 4> solveQuartic(float a, float b, float c, float d, float e,
                                 Repeated = Repeated::kOnce) noexcept;
RealRoots<double, 4> solveQuartic(double a, double b, double c, double d, double e,
                                  Repeated = Repeated::kOnce) noexcept;

}  // namespace qvr
