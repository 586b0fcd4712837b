// Real roots by closed forms in plain double: to start from, and how many there are where that is
// beyond doubt.
#pragma once

#include "newton.h"

#include <algorithm>

namespace qvr::closedForm {

using newton::Polynomial;

// What:   the root of t^3 - 3 t = 2 r in [sqrt(3), 2], which is far from both others: they are
//         -t/2 +- sqrt(3 (1 - t^2 / 4)). It is 2 cos(acos(r) / 3).
// Range:  [0, 1].
// Error:  1e-10 after one step, 1e-14 after two.
// Edge:   NaN gives NaN.
template <int steps> QVR_INLINE double trisection(double r) noexcept
{
    // Both by Remez' algorithm: t within 1.0e-6, and 1 / (3 t^2 - 3), which is Newton's factor
    // without its division, within 6e-4 of it.
    double const rr = r * r;
    double t = (0x1.bb67bf9d058b6p0 + r * 0x1.554006022f03p-2) +
               rr * ((-0x1.85c91dae8fd78p-4 + r * 0x1.6959ad6af47b4p-5) +
                     rr * (-0x1.2b94665f2427dp-6 + r * 0x1.086602fd5ed27p-8));
    double const factor = (0x1.5521e1b2b4367p-3 + r * -0x1.7c331794166d8p-4) +
                          rr * ((0x1.ba26b8ac407f6p-5 + r * -0x1.1130c23a07dap-6));
    for (int i = 0; i < steps; ++i)
        t -= (t * (t * t - 3) - 2 * r) * factor;
    return t;
}

// What:   the cube root.
// Range:  normal numbers and 0.
// Error:  3e-13 of it: the polynomial for [1, 2] is 7.3e-5 off, and Halley's step leaves 2/3 of the
//         cube of that.
// Edge:   0 gives a number near 0; NaN gives NaN.
QVR_INLINE double cubeRoot(double v) noexcept
{
    constexpr double kPowers[] = {1, 0x1.428a2f98d728bp0, 0x1.965fea53d6e3dp0};  // of 2, by 1/3
    int const exponent = errorFree::exponentOf(v) + 1200;
    double const m = std::bit_cast<double>((std::bit_cast<std::uint64_t>(v) & 0x000FFFFFFFFFFFFFu) |
                                           0x3FF0000000000000u);
    double const ofMantissa =
        0x1.1b0babcb62c93p-1 +
        m * (0x1.2c9a3e9acaf92p-1 + m * (-0x1.4dc30b2d85e32p-3 + m * 0x1.7a8d3e76ed9c8p-6));
    double const y = ofMantissa * kPowers[exponent % 3] * errorFree::powerOfTwo(exponent / 3 - 400);
    double const cube = y * y * y, size = magnitude(v);
    double const root = y * (cube + 2 * size) / (2 * cube + size);
    return v < 0 ? -root : root;
}

// As many guesses as count says. Where the number of real roots is beyond doubt, isSure.
struct Guesses {
    double values[4];
    int count, roots;
    bool isSure;

    void addPair(double middle, double half) noexcept
    {
        values[count++] = middle - half;
        values[count++] = middle + half;
    }
};

// The discriminants below are sums of products of at most twenty roundings each, so their error is
// below 2^-48 of the same sum with all terms positive.
inline constexpr double kDoubt = 0x1p-48;

QVR_INLINE Guesses of(Polynomial<1> const& p) noexcept { return {{-p.c[1] / p.c[0]}, 1, 1, true}; }

QVR_INLINE Guesses of(Polynomial<2> const& p) noexcept
{
    auto const [a, b, c] = p.c;
    double const d = b * b - 4 * (a * c), root = squareRoot(std::max(d, 0.0));
    double const t = -0.5 * (b < 0 ? b - root : b + root);
    return {{t / a, c / t}, d < 0 ? 0 : 2, d < 0 ? 0 : 2, false};
}

// After J. F. Blinn, "How to solve a cubic equation", IEEE Computer Graphics and Applications, 2006
// and 2007: the discriminant is that of the Hessian, and the roots are those of the depressed
// cubic.
QVR_INLINE Guesses of(Polynomial<3> const& p) noexcept
{
    auto const [a, b, c, d] = p.c;
    double const h0 = b * b - 3 * (a * c), h1 = b * c - 9 * (a * d), h2 = c * c - 3 * (b * d);
    double const discriminant = 4 * (h0 * h2) - h1 * h1;
    double const m0 = b * b + 3 * magnitude(a * c), m1 = magnitude(b * c) + 9 * magnitude(a * d);
    double const m2 = c * c + 3 * magnitude(b * d);
    bool const isSure = magnitude(discriminant) > kDoubt * (4 * (m0 * m2) + m1 * m1);

    // In y = 3 a x + b the cubic is y^3 - 3 h0 y + r.
    double const r = 2 * (b * h0) - 3 * (a * h1), per = 1 / (3 * a);
    if (discriminant < 0) {
        double const root = 3 * magnitude(a) * squareRoot(-discriminant);
        double const u = cubeRoot(0.5 * (r < 0 ? r - root : r + root));
        return {{(-b - u - h0 / u) * per}, 1, 1, isSure};
    }
    double const scale = squareRoot(std::max(h0, 0.0)), ratio = -0.5 * r / (h0 * scale);
    double const t = trisection<2>(std::min(magnitude(ratio), 1.0));
    double const y = ratio < 0 ? -t * scale : t * scale;
    Guesses guesses{{(y - b) * per}, 1, 3, isSure};
    guesses.addPair((-0.5 * y - b) * per,
                    scale * per * squareRoot(std::max(3 - 0.75 * (t * t), 0.0)));
    return guesses;
}

// The quartic's discriminant with the terms that are taken off times sign: -1 gives it, and 1, of
// magnitudes, the sum of all of its terms.
QVR_INLINE double discriminantOfQuartic(double ae, double bd, double cc, double cadd, double cbbe,
                                        double add, double bbe, double sign) noexcept
{
    double const ofAe = 256 * (ae * ae) + sign * (192 * (ae * bd) + 128 * (ae * cc));
    double const ofBd = cc + sign * 4 * bd;
    double const mixed = 144 * ae + 18 * bd + sign * 4 * cc;
    return ae * (ofAe + 16 * (cc * cc) + sign * (6 * (bd * bd) + 80 * (bd * cc))) + bd * bd * ofBd +
           mixed * (cadd + cbbe) + sign * 27 * (add * add + bbe * bbe);
}

// Ferrari's: two quadratics by the largest root of the resolvent.
inline Guesses of(Polynomial<4> const& polynomial) noexcept
{
    double const side = polynomial.c[0] < 0 ? -1 : 1;
    double const a = side * polynomial.c[0], b = side * polynomial.c[1];
    double const c = side * polynomial.c[2], d = side * polynomial.c[3];
    double const e = side * polynomial.c[4];
    double const aa = a * a, bb = b * b, cc = c * c, ac = a * c, ae = a * e, bd = b * d;
    double const add = a * d * d, bbe = bb * e;
    double const discriminant = discriminantOfQuartic(ae, bd, cc, c * add, c * bbe, add, bbe, -1);
    double const terms =
        discriminantOfQuartic(magnitude(ae), magnitude(bd), cc, magnitude(c * add),
                              magnitude(c * bbe), magnitude(add), magnitude(bbe), 1);
    bool const isSure = magnitude(discriminant) > kDoubt * terms;

    // In y = 4 a x + b the quartic is y^4 + p y^2 + q y + r. None of the roots are real if the
    // discriminant is positive and p > 0 or p^2 < 4 r.
    double const p = 16 * ac - 6 * bb;
    double const q = 8 * (b * (bb - 4 * ac) + 8 * (aa * d));
    double const r = 256 * (aa * ae) - 64 * (aa * bd) + 16 * (bb * ac) - 3 * (bb * bb);
    if (discriminant > 0 && (p > 0 || p * p < 4 * r)) {
        double const mp = 16 * magnitude(ac) + 6 * bb;
        double const mr = 256 * magnitude(aa * ae) + 64 * magnitude(aa * bd) +
                          16 * magnitude(bb * ac) + 3 * (bb * bb);
        bool const areNone = p > kDoubt * mp || 4 * r - p * p > kDoubt * (4 * mr + mp * mp);
        return {{}, 0, 0, isSure && areNone};
    }

    // w is the largest root of w^3 - 3 i w = j, and 4 i^3 - j^2 is 27 times the discriminant.
    double const i = cc - 3 * bd + 12 * ae;
    double const j = c * (2 * cc - 9 * bd - 72 * ae) + 27 * (bbe + add);
    double w;
    if (discriminant < 0) {
        double const root = squareRoot(-27 * discriminant);
        double const u = cubeRoot(0.5 * (j < 0 ? j - root : j + root));
        w = u + i / u;
    } else {
        double const scale = squareRoot(std::max(i, 0.0)), ratio = 0.5 * j / (i * scale);
        double const t = trisection<2>(std::min(magnitude(ratio), 1.0));
        w = scale * (ratio < 0 ? 0.5 * t + squareRoot(std::max(3 - 0.75 * (t * t), 0.0)) : t);
    }
    double const m = std::max((16 * (a * w) - 2 * p) * (1.0 / 3), 0.0), s = squareRoot(m);
    // q / s; where s is lost in rounding, by what the resolvent says of its square.
    double const small = squareRoot(std::max((m + p) * (m + p) - 4 * r, 0.0));
    double const quotient = m > 0x1p-12 * magnitude(p) ? q / s : q < 0 ? -small : small;
    double const first = -m - 2 * p + 2 * quotient, second = -m - 2 * p - 2 * quotient;

    double const per = 0.25 / a;
    Guesses guesses{{}, 0, discriminant < 0 ? 2 : 4, isSure};
    if (discriminant > 0 || first > second)
        guesses.addPair((-0.5 * s - b) * per, 0.5 * per * squareRoot(std::max(first, 0.0)));
    if (discriminant > 0 || first <= second)
        guesses.addPair((0.5 * s - b) * per, 0.5 * per * squareRoot(std::max(second, 0.0)));
    return guesses;
}

}  // namespace qvr::closedForm
