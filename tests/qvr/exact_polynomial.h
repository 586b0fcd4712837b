// A polynomial whose values and number of real roots are found without any rounding.
#pragma once

#include <gmpxx.h>

#include <vector>

namespace nodus::test {

// So many bits that none is lost in products of six doubles, from 2^-1074 to 2^1024, and their
// sums.
inline bool const kIsExact = (mpf_set_default_prec(14000), true);
using Exact = mpf_class;

// The highest power first and not 0.
class ExactPolynomial {
public:
    explicit ExactPolynomial(std::vector<double> const& c) : m_c(c.begin(), c.end()) {}

    int signAt(Exact const& x) const
    {
        Exact value;
        for (Exact const& c : m_c)
            value = value * x + c;
        return sgn(value);
    }

    // How many real roots, by the signs of the discriminant and, for a quartic, of two more; -1
    // where some are equal.
    int distinctRoots() const
    {
        Exact const &a = m_c[0], &b = m_c[1], &c = m_c[2];
        if (m_c.size() == 3) {
            int const sign = sgn(b * b - 4 * a * c);
            return sign == 0 ? -1 : 1 + sign;
        }
        Exact const& d = m_c[3];
        if (m_c.size() == 4) {
            int const sign = sgn(b * b * c * c - 4 * a * c * c * c - 4 * b * b * b * d +
                                 18 * a * b * c * d - 27 * a * a * d * d);
            return sign == 0 ? -1 : 2 + sign;
        }
        Exact const& e = m_c[4];
        int const sign = sgn(
            256 * a * a * a * e * e * e - 192 * a * a * b * d * e * e -
            128 * a * a * c * c * e * e + 144 * a * a * c * d * d * e - 27 * a * a * d * d * d * d +
            144 * a * b * b * c * e * e - 6 * a * b * b * d * d * e - 80 * a * b * c * c * d * e +
            18 * a * b * c * d * d * d + 16 * a * c * c * c * c * e - 4 * a * c * c * c * d * d -
            27 * b * b * b * b * e * e + 18 * b * b * b * c * d * e - 4 * b * b * b * d * d * d -
            4 * b * b * c * c * c * e + b * b * c * c * d * d);
        if (sign <= 0)
            return sign == 0 ? -1 : 2;
        bool const areReal = sgn(8 * a * c - 3 * b * b) < 0 &&
                             sgn(64 * a * a * a * e - 16 * a * a * c * c + 16 * a * b * b * c -
                                 16 * a * a * b * d - 3 * b * b * b * b) < 0;
        return areReal ? 4 : 0;
    }

private:
    std::vector<Exact> m_c;
};

}  // namespace nodus::test
