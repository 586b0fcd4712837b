// Quadratics by the exact discriminant; cubics and quartics by closed forms and Newton's method
// while the result is certain, by Sturm's theorem otherwise.
#include "qvr/roots.h"

#include "qvr/closed_forms.h"
#include "qvr/sturm.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace qvr {

namespace {

using errorFree::exponentOf;
using newton::Polynomial;

// Up to four numbers in ascending order; doubles whatever the caller has.
struct Found {
    double values[4];
    int count = 0;

    void insert(double value) noexcept
    {
        int place = count++;
        for (; place > 0 && values[place - 1] > value; --place)
            values[place] = values[place - 1];
        values[place] = value;
    }
};

// Coefficients from 2^-kNear to 2^kNear need no scaling: no product overflows, and what underflows
// is nothing beside the rest. The same is so for zeros between the first and the last.
constexpr int kNear = 100;

bool isNearOne(double c) noexcept
{
    return static_cast<unsigned>(exponentOf(c) + kNear) <= 2u * kNear;
}
template <int degree> bool isNear(Polynomial<degree> const& p) noexcept
{
    bool isNear = isNearOne(p.c[0]) && isNearOne(p.c[degree]);
    for (int i = 1; i < degree; ++i)
        isNear = isNear && (isNearOne(p.c[i]) || p.c[i] == 0);
    return isNear;
}

// A number as one from 1 to 2 in magnitude, or 0, and a power of two.
struct Split {
    double significand;
    int exponent;
};
Split splitOf(double v) noexcept
{
    bool const isSubnormal = magnitude(v) < 0x1p-1022;
    double const normal = isSubnormal ? v * 0x1p200 : v;
    int const exponent = exponentOf(normal), half = exponent / 2;
    return {normal * errorFree::powerOfTwo(-half) * errorFree::powerOfTwo(half - exponent),
            exponent - (isSubnormal ? 200 : 0)};
}

// p(2^shift y) times a power of two, so that the largest coefficient is near 1 and those at the
// ends are alike. isNear tells that these are not far below the largest, and all are exact.
template <int degree> struct Scaled {
    Polynomial<degree> polynomial;
    int shift;
    bool isNear;
};
template <int degree> [[gnu::cold]] Scaled<degree> scaled(Polynomial<degree> const& p) noexcept
{
    Split parts[degree + 1];
    for (int i = 0; i <= degree; ++i)
        parts[i] = splitOf(p.c[i]);
    int const shift = (parts[degree].exponent - parts[0].exponent) / degree;
    int largest = std::numeric_limits<int>::min();
    for (int i = 0; i <= degree; ++i) {
        parts[i].exponent += (degree - i) * shift;
        if (p.c[i] != 0)
            largest = std::max(largest, parts[i].exponent);
    }
    Scaled<degree> result{{}, shift, true};
    for (int i = 0; i <= degree; ++i) {
        int const exponent = parts[i].exponent - largest;
        if (p.c[i] == 0)
            continue;
        if (exponent >= -1000)
            result.polynomial.c[i] = parts[i].significand * errorFree::powerOfTwo(exponent);
        // Beside ends that are near 1 the middle of a quadratic may as well be 0.
        bool const isEnd = i == 0 || i == degree;
        if (exponent < (isEnd ? -kNear : -1000) && (isEnd || degree > 2))
            result.isNear = false;
    }
    return result;
}

// Gathers roots of p that are certain.
template <typename T, int degree> class Search {
public:
    explicit Search(Polynomial<degree> const& p) noexcept : m_p(p) {}
    Found const& found() const noexcept { return m_found; }

    void tryAll(closedForm::Guesses const& guesses) noexcept
    {
        for (int i = 0; i < guesses.count; ++i)
            tryOne(guesses.values[i]);
    }
    // Where the coefficients are far apart, their quotients are near roots.
    [[gnu::cold]] void tryQuotients() noexcept
    {
        for (int i = 0; i < degree; ++i)
            if (m_p.c[i] != 0)
                tryOne(-m_p.c[i + 1] / m_p.c[i]);
    }
    // The closed form for what is left when the roots that were found are divided out.
    [[gnu::cold]] void tryTheRest() noexcept
    {
        if (m_found.count > 0)
            tryRestOf(m_p, m_found.count);
    }

private:
    [[gnu::noinline]] void tryOne(double guess) noexcept
    {
        newton::Root const root = newton::improved<T>(m_p, guess);
        if (!root.isCertain || m_found.count == degree)
            return;
        for (int k = 0; k < m_found.count; ++k)
            if (magnitude(m_found.values[k] - root.value) <=
                newton::kApart<T> * magnitude(root.value))
                return;
        m_found.insert(root.value);
    }
    template <int rest> [[gnu::cold]] void tryRestOf(Polynomial<rest> const& p, int count) noexcept
    {
        if (count == 0)
            tryAll(closedForm::of(p));
        else if constexpr (rest > 1)
            tryRestOf(newton::withoutRoot(p, m_found.values[count - 1]), count - 1);
    }

    Polynomial<degree> const& m_p;
    Found m_found;
};

// Whether the roots that were found are certain to be all.
template <typename T, int degree>
QVR_INLINE bool tell(Polynomial<degree> const& p, Found& found) noexcept
{
    closedForm::Guesses const guesses = closedForm::of(p);
    Search<T, degree> search(p);
    search.tryAll(guesses);
    if (guesses.isSure && search.found().count < guesses.roots) {
        search.tryQuotients();
        search.tryTheRest();
    }
    found = search.found();
    return found.count == guesses.roots && guesses.isSure;
}

// b^2 - 4 a c is found exactly and its root with twice the digits; so are sum and quotients.
// For |a| and |c| from 2^-301 to 2, |b| to 2.
void solveExactly(Polynomial<2> const& p, Found& found) noexcept
{
    auto const [a, b, c] = p.c;
    auto const square = errorFree::twoProduct(b, b), product = errorFree::twoProduct(4 * a, c);
    auto const high = errorFree::twoSum(square.high, -product.high);
    auto const low = errorFree::twoSum(square.low, -product.low);
    auto const sum = errorFree::twoSum(high.high, low.high);
    auto const [d, dLow] = errorFree::quickTwoSum(sum.high, sum.low + (high.low + low.low));
    if (d < 0)
        return;
    if (d == 0) {
        found.values[0] = found.values[1] = b == 0 ? 0 : b / (-2 * a);
        found.count = 2;
        return;
    }
    double const root = squareRoot(d);
    auto const rootSquared = errorFree::twoProduct(root, root);
    double const rootLow = (((d - rootSquared.high) - rootSquared.low) + dLow) * (0.5 / root);
    auto const t = errorFree::twoSum(b, b < 0 ? -root : root);
    double const tLow = t.low + (b < 0 ? -rootLow : rootLow);

    // -t / (2 a) and -2 c / t
    double const perA = -0.5 / a, perT = 1 / t.high;
    double const x = t.high * perA, y = (-2 * c) * perT;
    auto const xa = errorFree::twoProduct(x, -2 * a), yt = errorFree::twoProduct(y, t.high);
    found.insert(x + (((t.high - xa.high) - xa.low) + tLow) * perA);
    found.insert(y + (((-2 * c - yt.high) - yt.low) - y * tLow) * perT);
}

template <typename T> Found ofQuadratic(Polynomial<2> const& p) noexcept
{
    auto const [a, b, c] = p.c;
    Found found;
    if constexpr (sizeof(T) == sizeof(float)) {
        // The products are exact in double, and the difference is not 0 unless it is.
        double const d = b * b - 4 * a * c;
        if (d >= 0) {
            double const t = b < 0 ? b - squareRoot(d) : b + squareRoot(d);
            found.insert(t / (-2 * a));
            found.insert(d == 0 ? t / (-2 * a) : -2 * c / t);
        }
        return found;
    }
    if (isNear(p)) {
        solveExactly(p, found);
    } else if (auto const [y, shift, isScaled] = scaled(p); isScaled) {
        solveExactly(y, found);
        for (int k = 0; k < found.count; ++k)
            found.values[k] = errorFree::scaledBy(found.values[k], shift);
    } else {
        // b^2 is more than 2^200 times as large as a c.
        found.insert(-b / a);
        found.insert(-c / b);
    }
    return found;
}

template <typename T, int degree> Found rootsOf(Polynomial<degree> const& p) noexcept;

// By Sturm's theorem. If the roots are not all certain, some are close together and to one of the
// derivative, around which the polynomial is nearly a parabola; the others are then found by
// dividing that out twice.
template <int degree>
[[gnu::cold]] Found exactRoots(Polynomial<degree> const& p, Found const& certain) noexcept
{
    Polynomial<degree - 1> derivative;
    for (int i = 0; i < degree; ++i)
        derivative.c[i] = (degree - i) * (0.25 * p.c[i]);
    Found const turns = rootsOf<double>(derivative);
    Search<double, degree> search(p);
    double guesses[4 + 3 * (degree - 1) + 4 + degree];
    int count = 0;
    for (int k = 0; k < certain.count; ++k)
        guesses[count++] = certain.values[k];
    for (int k = 0; k < turns.count; ++k) {
        double const x = turns.values[k], value = newton::evaluateTwofold(p, x).value;
        double const curvature = 4 * newton::evaluate(derivative, x).slope;
        double const h = squareRoot(std::max(-2 * value / curvature, 0.0));
        guesses[count++] = x;
        guesses[count++] = x - h;
        guesses[count++] = x + h;
        search.tryAll(closedForm::of(newton::withoutRoot(newton::withoutRoot(p, x), x)));
    }
    for (int k = 0; k < search.found().count; ++k)
        guesses[count++] = search.found().values[k];
    for (int i = 0; i < degree; ++i)
        if (p.c[i] != 0)
            guesses[count++] = -p.c[i + 1] / p.c[i];
    Found exact;
    exact.count = sturm::realRoots({p.c, degree}, guesses, count, exact.values);
    return exact;
}

template <typename T, int degree> Found ofHigher(Polynomial<degree> const& p) noexcept
{
    Found found;
    if (isNear(p)) {
        if (tell<T>(p, found))
            return found;
    } else if (auto const [y, shift, isScaled] = scaled(p); isScaled) {
        bool const isCertain = tell<T>(y, found);
        for (int k = 0; k < found.count; ++k)
            found.values[k] = errorFree::scaledBy(found.values[k], shift);
        if (isCertain)
            return found;
    }
    return exactRoots(p, found);
}

template <typename T, int degree> Found rootsOf(Polynomial<degree> const& p) noexcept
{
    if constexpr (degree == 0) {
        return {};
    } else {
        Polynomial<degree - 1> lower;
        if (p.c[0] == 0) {
            std::copy_n(p.c + 1, degree, lower.c);
            return rootsOf<T>(lower);
        }
        if (p.c[degree] == 0) {
            std::copy_n(p.c, degree, lower.c);
            Found found = rootsOf<T>(lower);
            found.insert(0);
            return found;
        }
        if constexpr (degree == 1)
            return {{-p.c[1] / p.c[0]}, 1};
        else if constexpr (degree == 2)
            return ofQuadratic<T>(p);
        else
            return ofHigher<T>(p);
    }
}

template <typename T, int degree>
RealRoots<T, degree> solve(Polynomial<degree> const& p, Repeated repeated) noexcept
{
    RealRoots<T, degree> roots{};
    if (!isNear(p)) {
        roots.everyNumber = true;
        bool isFinite = true;
        for (double const c : p.c) {
            isFinite = isFinite && magnitude(c) <= std::numeric_limits<double>::max();
            roots.everyNumber = roots.everyNumber && c == 0;
        }
        if (!isFinite)
            return roots;
    }
    Found const found = rootsOf<T>(p);
    for (int k = 0; k < found.count; ++k) {
        auto const value = static_cast<T>(found.values[k]);
        if (k == 0 || value != roots.values[roots.count - 1] || repeated == Repeated::kEach)
            roots.values[roots.count++] = value;
    }
    return roots;
}

}  // namespace

RealRoots<float, 2> solveQuadratic(float a, float b, float c, Repeated repeated) noexcept
{
    return solve<float>(Polynomial<2>{{a, b, c}}, repeated);
}
RealRoots<double, 2> solveQuadratic(double a, double b, double c, Repeated repeated) noexcept
{
    return solve<double>(Polynomial<2>{{a, b, c}}, repeated);
}
RealRoots<float, 3> solveCubic(float a, float b, float c, float d, Repeated repeated) noexcept
{
    return solve<float>(Polynomial<3>{{a, b, c, d}}, repeated);
}
RealRoots<double, 3> solveCubic(double a, double b, double c, double d, Repeated repeated) noexcept
{
    return solve<double>(Polynomial<3>{{a, b, c, d}}, repeated);
}
RealRoots<float, 4> solveQuartic(float a, float b, float c, float d, float e,
                                 Repeated repeated) noexcept
{
    return solve<float>(Polynomial<4>{{a, b, c, d, e}}, repeated);
}
RealRoots<double, 4> solveQuartic(double a, double b, double c, double d, double e,
                                  Repeated repeated) noexcept
{
    return solve<double>(Polynomial<4>{{a, b, c, d, e}}, repeated);
}

}  // namespace qvr
