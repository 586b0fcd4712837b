// Real roots: how far they are from those of the polynomial as it was given, and how many there
// are, found by exact arithmetic; multiple roots and edges.
#include "qvr/exact_polynomial.h"
#include "qvr/random.h"

#include "qvr/roots.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <type_traits>

using namespace nodus::test;
using qvr::Repeated;
using testing::ElementsAreArray;

namespace {

using Coefficients = std::vector<double>;

// Of the degree that the number of coefficients tells.
template <typename T>
std::vector<double> rootsOf(Coefficients const& c, Repeated repeated = Repeated::kOnce)
{
    auto const at = [&c](std::size_t i) { return static_cast<T>(c[i]); };
    auto const listed = [](auto const& roots) {
        EXPECT_FALSE(roots.everyNumber);
        return std::vector<double>(roots.begin(), roots.end());
    };
    switch (c.size()) {
    case 3:
        return listed(qvr::solveQuadratic(at(0), at(1), at(2), repeated));
    case 4:
        return listed(qvr::solveCubic(at(0), at(1), at(2), at(3), repeated));
    default:
        return listed(qvr::solveQuartic(at(0), at(1), at(2), at(3), at(4), repeated));
    }
}

template <typename T> double anyNumber(Random& r)
{
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    return std::bit_cast<T>(static_cast<Bits>(r.bits()));
}

// a (x - roots[0]) (x - roots[1]) ..., rounded as it goes.
Coefficients expanded(std::vector<double> const& roots, double a = 1)
{
    Coefficients c{a};
    for (double const root : roots) {
        c.push_back(0);
        for (std::size_t i = c.size() - 1; i > 0; --i)
            c[i] -= root * c[i - 1];
    }
    return c;
}

// How polynomials of a degree are drawn.
struct Family {
    char const* name;
    std::function<Coefficients(Random&, std::size_t degree)> draw;
};
template <typename Draw> std::vector<double> drawn(std::size_t count, Draw draw)
{
    std::vector<double> values(count);
    std::ranges::generate(values, draw);
    return values;
}
template <typename T>
std::vector<Family> const kFamilies{
    {"random", [](Random& r, auto n) { return drawn(n + 1, [&] { return r.between(-1, 1); }); }},
    {"all real",
     [](Random& r, auto n) { return expanded(drawn(n, [&] { return r.between(-1, 1); })); }},
    {"integers", [](Random& r, auto n) { return drawn(n + 1, [&] { return r.integer(-5, 5); }); }},
    {"nearly double",
     [](Random& r, auto n) {
         std::vector<double> roots = drawn(n, [&] { return r.between(-1, 1); });
         roots[1] = roots[0] * (1 + std::ldexp(r.between(-1, 1), -r.integer(1, 52)));
         return expanded(roots);
     }},
    {"nudged multiple",
     [](Random& r, auto n) {
         std::vector<double> roots = drawn(n, [&] { return r.integer(-99, 99); });
         for (std::size_t i = 1; i < n; ++i)
             roots[i] = r.integer(0, 1) == 0 ? roots[0] : roots[i];
         Coefficients c = expanded(roots);
         double& nudged = c[static_cast<std::size_t>(r.integer(0, static_cast<int>(n)))];
         nudged = std::nextafter(static_cast<T>(nudged), static_cast<T>(r.spread(50)));
         return c;
     }},
    {"spread roots",
     [](Random& r, auto n) { return expanded(drawn(n, [&] { return r.spread(20); })); }},
    {"spread", [](Random& r, auto n) { return drawn(n + 1, [&] { return r.spread(100); }); }},
    {"any bits", [](Random& r, auto n) { return drawn(n + 1, [&] { return anyNumber<T>(r); }); }},
    {"ends",
     [](Random& r, auto n) {
         return drawn(n + 1, [&] {
             using Limits = std::numeric_limits<T>;
             double const ends[] = {Limits::denorm_min(), Limits::min(), 1, Limits::max() / 4};
             return ends[r.integer(0, 3)] * r.integer(-3, 3);
         });
     }},
};

}  // namespace

template <typename T> class Roots : public testing::Test {
};
using RootTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(Roots, RootTypes);

TYPED_TEST(Roots, AreAsManyAndAsNearAsStated)
{
    using Limits = std::numeric_limits<TypeParam>;
    for (Family const& family : kFamilies<TypeParam>)
        for (std::size_t degree = 2; degree <= 4; ++degree) {
            Random random;
            int counted = 0;
            for (int i = 0; i < 500; ++i) {
                Coefficients c = family.draw(random, degree);
                for (double& lane : c)
                    lane = static_cast<TypeParam>(lane);
                bool const isFinite =
                    std::ranges::all_of(c, [](double v) { return std::isfinite(v); });
                if (!isFinite || c[0] == 0)
                    continue;
                SCOPED_TRACE(testing::Message() << family.name << testing::PrintToString(c));
                ExactPolynomial const exact(c);
                std::vector<double> const roots = rootsOf<TypeParam>(c, Repeated::kEach);
                int const count = exact.distinctRoots();
                if (count >= 0) {
                    ++counted;
                    ASSERT_EQ(roots.size(), static_cast<std::size_t>(count));
                }
                for (std::size_t k = 0; k < roots.size(); ++k) {
                    ASSERT_TRUE(k == 0 || roots[k - 1] <= roots[k]);
                    double const size = std::abs(roots[k]);
                    if (std::isinf(size))
                        continue;
                    auto const next =
                        std::nextafter(static_cast<TypeParam>(size), Limits::infinity());
                    double const unit = std::isinf(next)
                                            ? std::ldexp(1.0, Limits::max_exponent - Limits::digits)
                                            : next - size;
                    // 0.501 units: 513/1024 of one.
                    double const parts = size < Limits::min() ? 768 : 513;
                    Exact const off = Exact(unit) * parts * 0x1p-10, at = roots[k];
                    int const below = exact.signAt(at - off), above = exact.signAt(at + off);
                    bool const isAlone = 1 == std::ranges::count_if(roots, [&](double root) {
                                             return std::abs(root - roots[k]) <= 2 * unit;
                                         });
                    ASSERT_TRUE(count < 0 || !isAlone || below * above <= 0) << roots[k];
                }
            }
            EXPECT_GT(counted, 100) << family.name << degree;
        }
}

TYPED_TEST(Roots, AreThereAsOftenAsAsked)
{
    Random random;
    for (std::size_t degree = 2; degree <= 4; ++degree)
        for (int i = 0; i < 2000; ++i) {
            // Products of what is below 2^24 are exact in both types, and so are powers of two.
            std::vector<double> each = drawn(degree, [&] { return random.integer(-20, 20); });
            for (std::size_t k = 1; k < degree; ++k)
                if (random.integer(0, 1) == 0)
                    each[k] = each[k - 1];
            Coefficients c = expanded(each, random.integer(1, 5));
            int const wider = random.integer(-8, 8), higher = random.integer(-60, 60);
            for (std::size_t k = 0; k <= degree; ++k)
                c[k] = std::ldexp(c[k], wider * static_cast<int>(k) + higher);
            for (double& root : each)
                root = std::ldexp(root, wider);
            std::ranges::sort(each);
            SCOPED_TRACE(testing::PrintToString(c));
            ASSERT_THAT(rootsOf<TypeParam>(c, Repeated::kEach), ElementsAreArray(each));
            each.erase(std::unique(each.begin(), each.end()), each.end());
            ASSERT_THAT(rootsOf<TypeParam>(c), ElementsAreArray(each));
        }
}

TYPED_TEST(Roots, OfEdges)
{
    using Limits = std::numeric_limits<TypeParam>;
    double const none = Limits::quiet_NaN(), infinity = Limits::infinity();
    double const most = Limits::max(), least = Limits::denorm_min();
    struct {
        Coefficients coefficients;
        std::vector<double> roots;
        char const* why;
    } const rows[] = {
        {{0, 0, 0, 0, 3}, {}, "no power of x at all"},
        {{0, 0, 0, 2, -3}, {1.5}, "a line"},
        {{0, 0, 1, 0, -4}, {-2, 2}, "a parabola"},
        {{0, 1, 0, 0, -8}, {2}, "a cubic"},
        {{1, 0, 0, 0, 0}, {0}, "four zeros"},
        {{1, 0, -1, 0}, {-1, 0, 1}, "zero between others"},
        {{1, 0, 1}, {}, "no real root"},
        {{most, -most, 0}, {0, 1}, "the largest coefficients"},
        {{most, -most, most / 4}, {0.5}, "a double root of the largest coefficients"},
        {{least, 0, -4 * least}, {-2, 2}, "the smallest coefficients"},
        {{least, most, 1},
         {-infinity, static_cast<TypeParam>(-1 / most)},
         "a root beyond the largest number"},
        {{none, 1, 1}, {}, "a NaN in front"},
        {{1, 2, none, 0, 1}, {}, "a NaN in the middle"},
        {{1, infinity, 0, 1}, {}, "an infinity"},
        {{0, 1, -infinity}, {}, "an infinity behind a zero"},
    };
    for (auto const& row : rows)
        EXPECT_THAT(rootsOf<TypeParam>(row.coefficients), ElementsAreArray(row.roots)) << row.why;

    TypeParam const zero = 0;
    EXPECT_TRUE(qvr::solveQuartic(zero, zero, zero, zero, -zero).everyNumber);
    EXPECT_EQ(qvr::solveQuartic(zero, zero, zero, zero, -zero).count, 0);
}
