// A polynomial whose values and number of real roots are found without any rounding.
#pragma once

#include <mpfr.h>

#include <array>
#include <initializer_list>
#include <stdexcept>
#include <utility>
#include <vector>

namespace nodus::test {

// Sums and products of doubles with so many bits that none is lost, for results of some ten
// factors.
class Exact {
public:
    Exact(double v = 0)
    {
        mpfr_init2(m_value, 14000);
        mpfr_set_d(m_value, v, MPFR_RNDN);
    }
    Exact(Exact const& v) : Exact() { mpfr_set(m_value, v.m_value, MPFR_RNDN); }
    Exact& operator=(Exact v)
    {
        mpfr_swap(m_value, v.m_value);
        return *this;
    }
    ~Exact() { mpfr_clear(m_value); }

    friend Exact operator+(Exact a, Exact const& b) { return a.by(mpfr_add, b); }
    friend Exact operator-(Exact a, Exact const& b) { return a.by(mpfr_sub, b); }
    friend Exact operator*(Exact a, Exact const& b) { return a.by(mpfr_mul, b); }
    int sign() const { return mpfr_sgn(m_value); }

private:
    template <typename Operation> Exact& by(Operation operation, Exact const& b)
    {
        if (operation(m_value, m_value, b.m_value, MPFR_RNDN) != 0)
            throw std::length_error("an exact result does not fit its bits");
        return *this;
    }
    mpfr_t m_value;
};

// The highest power first and not 0.
class ExactPolynomial {
public:
    explicit ExactPolynomial(std::vector<double> const& c) : m_c(c.begin(), c.end()) {}

    int signAt(Exact const& x) const
    {
        Exact value;
        for (Exact const& c : m_c)
            value = value * x + c;
        return value.sign();
    }

    // How many real roots, by the signs of the discriminant and, for a quartic, of two more; -1
    // where some are equal.
    int distinctRoots() const
    {
        auto const sum = [](std::initializer_list<std::pair<double, std::vector<Exact>>> terms) {
            Exact total;
            for (auto const& [factor, powers] : terms) {
                Exact term = factor;
                for (Exact const& power : powers)
                    term = term * power;
                total = total + term;
            }
            return total.sign();
        };
        Exact const &a = m_c[0], &b = m_c[1], &c = m_c[2];
        if (m_c.size() == 3)
            return std::array{0, -1,
                              2}[static_cast<std::size_t>(1 + sum({{1, {b, b}}, {-4, {a, c}}}))];
        Exact const& d = m_c[3];
        if (m_c.size() == 4) {
            int const sign = sum({{1, {b, b, c, c}},
                                  {-4, {a, c, c, c}},
                                  {-4, {b, b, b, d}},
                                  {18, {a, b, c, d}},
                                  {-27, {a, a, d, d}}});
            return sign == 0 ? -1 : 2 + sign;
        }
        Exact const& e = m_c[4];
        int const sign = sum({{256, {a, a, a, e, e, e}},
                              {-192, {a, a, b, d, e, e}},
                              {-128, {a, a, c, c, e, e}},
                              {144, {a, a, c, d, d, e}},
                              {-27, {a, a, d, d, d, d}},
                              {144, {a, b, b, c, e, e}},
                              {-6, {a, b, b, d, d, e}},
                              {-80, {a, b, c, c, d, e}},
                              {18, {a, b, c, d, d, d}},
                              {16, {a, c, c, c, c, e}},
                              {-4, {a, c, c, c, d, d}},
                              {-27, {b, b, b, b, e, e}},
                              {18, {b, b, b, c, d, e}},
                              {-4, {b, b, b, d, d, d}},
                              {-4, {b, b, c, c, c, e}},
                              {1, {b, b, c, c, d, d}}});
        if (sign <= 0)
            return sign == 0 ? -1 : 2;
        bool const areReal = sum({{8, {a, c}}, {-3, {b, b}}}) < 0 && sum({{64, {a, a, a, e}},
                                                                          {-16, {a, a, c, c}},
                                                                          {16, {a, b, b, c}},
                                                                          {-16, {a, a, b, d}},
                                                                          {-3, {b, b, b, b}}}) < 0;
        return areReal ? 4 : 0;
    }

private:
    std::vector<Exact> m_c;
};

}  // namespace nodus::test
