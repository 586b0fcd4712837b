// The number of roots up to any point is a difference of sign changes along a chain of polynomials
// (J. C. F. Sturm, 1829), here of exact numbers, so it is always right; the doubles between which
// it grows are the roots. Every polynomial of the chain has one power less than the one before and,
// in its coefficients, the sum of the lengths that it was made of: 1, 1, 3, 7 and 17 times the
// length of the given coefficients.
#include "qvr/sturm.h"

#include "qvr/dyadic.h"
#include "qvr/scalar.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

namespace qvr::sturm {

namespace {

using dyadic::Number;

constexpr int kDegree = 4;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
// Limbs from the lowest bit of a double to the highest, and one for carries.
constexpr int kLength = (1074 + 1024) / 32 + 2;
// The given coefficients and their derivative are short; then the chain, and on the way to its last
// member two remainders.
using Space = dyadic::Space<(1 + 3 * 3 + 2 * 7 + 2 * 10 + 17) * kLength>;
// Two products on the way to the last member; the values of a polynomial of the fourth degree.
using Scratch = dyadic::Space<(2 + 2 * 17) * kLength>;

// The power i has the coefficient i; a degree below 0 is the polynomial 0.
struct Exact {
    Number coefficients[kDegree + 1];
    int degree = -1;

    Number const& leading() const noexcept { return coefficients[degree]; }
    void dropLeadingZeros() noexcept
    {
        while (degree >= 0 && leading().sign == 0)
            --degree;
    }
};

template <typename Space> Exact derivativeOf(Exact const& p, Space& space) noexcept
{
    Exact derivative;
    derivative.degree = p.degree - 1;
    for (int i = 1; i <= p.degree; ++i) {
        Number const factor = dyadic::numberOf(i, space);
        derivative.coefficients[i - 1] = dyadic::product(factor, p.coefficients[i], space);
    }
    return derivative;
}

// What is left of a when multiples of b are taken off, times something positive, and negated.
Exact negatedRemainder(Exact a, Exact const& b, Space& space, Scratch& scratch) noexcept
{
    int const begin = space.used();
    while (a.degree >= b.degree) {
        int const shift = a.degree - b.degree;
        Number const ofA = b.leading().times(b.leading().sign);
        Number const ofB = a.leading().times(-b.leading().sign);
        for (int i = 0; i < a.degree; ++i) {
            scratch.giveBackTo(0);
            Number const kept = dyadic::product(ofA, a.coefficients[i], scratch);
            Number const taken =
                i < shift ? Number{} : dyadic::product(ofB, b.coefficients[i - shift], scratch);
            a.coefficients[i] = dyadic::sum(kept, taken, space);
        }
        --a.degree;
        a.dropLeadingZeros();
    }
    // The steps on the way go, the last one moves to their place.
    scratch.giveBackTo(0);
    for (int i = 0; i <= a.degree; ++i)
        a.coefficients[i] = dyadic::sum(a.coefficients[i], {}, scratch);
    space.giveBackTo(begin);
    for (int i = 0; i <= a.degree; ++i)
        a.coefficients[i] = dyadic::sum(a.coefficients[i].times(-1), {}, space);
    return a;
}

// The sign of p at x or, where it is 0 there, right of x.
int signRightOf(Exact p, Number const& x, Scratch& scratch) noexcept
{
    for (; p.degree >= 0; p = derivativeOf(p, scratch)) {
        int const used = scratch.used();
        Number value = p.leading();
        for (int i = p.degree - 1; i >= 0; --i)
            value = dyadic::sum(dyadic::product(value, x, scratch), p.coefficients[i], scratch);
        if (value.sign != 0)
            return value.sign;
        scratch.giveBackTo(used);
    }
    return 0;
}

// How often neighbours in a sequence of signs differ, zeros left out.
class SignChanges {
public:
    void next(int sign) noexcept
    {
        m_count += sign * m_last < 0 ? 1 : 0;
        m_last = sign == 0 ? m_last : sign;
    }
    int count() const noexcept { return m_count; }

private:
    int m_count = 0, m_last = 0;
};

// A member of a chain, and its coefficients in double: these are enough for the sign wherever the
// value is not small beside its terms.
class Member {
public:
    Member() = default;
    explicit Member(Exact const& p) noexcept : m_exact(p)
    {
        int end = p.leading().end();
        for (int i = 0; i < p.degree; ++i)
            if (p.coefficients[i].sign != 0)
                end = std::max(end, p.coefficients[i].end());
        for (int i = 0; i <= p.degree; ++i) {
            m_rounded[i] = dyadic::approximation(p.coefficients[i].shifted(-end));
            if (p.coefficients[i].sign != 0 && magnitude(m_rounded[i]) < 0x1p-900)
                m_rounded[p.degree] = kNone;
        }
    }
    Exact const& exact() const noexcept { return m_exact; }
    int degree() const noexcept { return m_exact.degree; }

    // The sign at x or, where it is 0 there, right of x; rounded is a double next to x, or NaN.
    int signRightOf(Number const& x, double rounded, Scratch& scratch) const noexcept
    {
        double value = 0, magnitudes = 0;
        for (int i = m_exact.degree; i >= 0; --i) {
            value = value * rounded + m_rounded[i];
            magnitudes = magnitudes * magnitude(rounded) + magnitude(m_rounded[i]);
        }
        // Coefficients and x are rounded, and so is each of at most eight operations.
        if (magnitude(value) > 0x1p-48 * magnitudes)
            return value < 0 ? -1 : 1;
        return sturm::signRightOf(m_exact, x, scratch);
    }

private:
    Exact m_exact;
    double m_rounded[kDegree + 1] = {};
};

class Chain {
public:
    Chain() = default;
    Chain(Exact const& p, Space& space, Scratch& scratch) noexcept
    {
        Exact before = p, next = derivativeOf(p, space);
        m_members[m_size++] = Member(p);
        while (next.degree >= 0) {
            m_members[m_size++] = Member(next);
            if (next.degree == 0)
                break;
            before = std::exchange(next, negatedRemainder(before, next, space, scratch));
        }
        SignChanges left, right;
        for (int i = 0; i < m_size; ++i) {
            int const sign = m_members[i].exact().leading().sign;
            left.next(m_members[i].degree() % 2 == 0 ? sign : -sign);
            right.next(sign);
        }
        m_changesLeft = left.count();
        m_roots = left.count() - right.count();
    }

    // What p and its derivative have in common: the roots that p has more than once, once less.
    Exact const& last() const noexcept { return m_members[m_size - 1].exact(); }
    int roots() const noexcept { return m_roots; }
    // How many numbers up to x, and x itself, are roots.
    int rootsUpTo(Number const& x, double rounded, Scratch& scratch) const noexcept
    {
        SignChanges changes;
        int const used = scratch.used();
        for (int i = 0; i < m_size; ++i) {
            changes.next(m_members[i].signRightOf(x, rounded, scratch));
            scratch.giveBackTo(used);
        }
        return m_changesLeft - changes.count();
    }

private:
    Member m_members[kDegree + 1];
    int m_size = 0, m_changesLeft = 0, m_roots = 0;
};

// Doubles by their place in ascending order: 0 for 0, and the infinities at the ends.
using Place = std::int64_t;
constexpr Place kInfinity = 0x7FF0'0000'0000'0000;

Place placeOf(double v) noexcept
{
    auto const pattern = std::bit_cast<Place>(v);
    return pattern >= 0 ? pattern : -(pattern & 0x7FFF'FFFF'FFFF'FFFF);
}
double doubleAt(Place place) noexcept
{
    double const v = std::bit_cast<double>(place < 0 ? -place : place);
    return place < 0 ? -v : v;
}

class Roots {
public:
    explicit Roots(Polynomial p) noexcept
    {
        Exact exact;
        exact.degree = p.degree;
        for (int i = 0; i <= p.degree; ++i)
            exact.coefficients[p.degree - i] = dyadic::numberOf(p.coefficients[i], m_space);
        // One chain for the numbers that are roots, one for those that are so twice, and so on.
        for (; exact.degree > 0; exact = m_chains[m_chainCount++].last()) {
            m_chains[m_chainCount] = Chain(exact, m_space, m_scratch);
            m_count += m_chains[m_chainCount].roots();
        }
        for (int k = 0; k < m_count; ++k)
            m_below[k] = -kInfinity - 1, m_above[k] = kInfinity;
    }
    int count() const noexcept { return m_count; }

    // Counts the roots up to the middle between the double at a place and the next, and narrows
    // down where all roots are.
    void lookAt(Place place) noexcept
    {
        m_scratch.giveBackTo(0);
        Number const middle = place < 0 ? dyadic::numberOf(-doubleAt(-place - 1), m_scratch, true)
                                        : dyadic::numberOf(doubleAt(place), m_scratch, true);
        double const near = doubleAt(place);
        double const rounded = magnitude(near) < 0x1p-1000 ? kNone : near;
        int count = 0;
        for (int i = 0; i < m_chainCount; ++i)
            count += m_chains[i].rootsUpTo(middle, rounded, m_scratch);
        for (int k = 0; k < m_count; ++k)
            if (k < count)
                m_above[k] = std::min(m_above[k], place);
            else
                m_below[k] = std::max(m_below[k], place);
    }
    // Unless all roots are known that may be there.
    void lookAround(double guess) noexcept
    {
        Place const place = placeOf(guess);
        for (Place const side : {place, place - 1})
            for (int k = 0; k < m_count; ++k)
                if (m_below[k] < side && side < m_above[k]) {
                    lookAt(side);
                    break;
                }
    }

    // The root number k, from 0: from both ends of where it is, in steps that grow.
    double root(int k) noexcept
    {
        Place const &below = m_below[k], &above = m_above[k];
        if (below < 0 && above > 0)
            lookAt(0);
        Place step = 1;
        while (above - below > 1)
            if ((above - below) / 4 <= step) {
                lookAt(below + (above - below) / 2);
            } else {
                lookAt(above - step);
                lookAt(below + step);
                step *= 4;
            }
        return doubleAt(above);
    }

private:
    Space m_space;
    Scratch m_scratch;
    Chain m_chains[kDegree];
    int m_chainCount = 0, m_count = 0;
    // The root number k is nearest to a double behind the place below and not behind above.
    Place m_below[kDegree], m_above[kDegree];
};

}  // namespace

int realRoots(Polynomial p, double const* guesses, int guessCount, double* roots) noexcept
{
    Roots search(p);
    for (int i = 0; i < guessCount && search.count() > 0; ++i)
        search.lookAround(guesses[i]);
    for (int k = 0; k < search.count(); ++k)
        roots[k] = search.root(k);
    return search.count();
}

}  // namespace qvr::sturm
