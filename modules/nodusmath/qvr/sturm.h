// Real roots by Sturm's theorem in exact arithmetic: right for every polynomial, at a price.
#pragma once

namespace qvr::sturm {

// A polynomial with finite coefficients, the highest power first and not 0.
struct Polynomial {
    double const* coefficients;
    int degree;  // 1 to 4
};

// Writes the roots, each the nearest double (at a tie either), ascending, to roots, as often as
// they are roots, and says how many there are. Guesses, which need not be right nor in order, make
// it faster.
int realRoots(Polynomial p, double const* guesses, int guessCount, double* roots) noexcept;

}  // namespace qvr::sturm
