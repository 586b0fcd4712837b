// Roots and eigensystems of the transform library beside Eigen and Imath: errors and times of the
// same inputs in one run, as the Markdown tables of docs/solvers.md.
#include "qvr/eigen3.h"
#include "qvr/roots.h"

#include <Eigen/Dense>
#include <Imath/ImathMatrixAlgo.h>
#include <Imath/ImathRoots.h>
#include <mpfr.h>
#include <unsupported/Eigen/Polynomials>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <set>
#include <vector>

namespace {

constexpr std::size_t kInputs = 4000;
constexpr int kRounds = 40;

std::mt19937_64 g_engine{1};
double between(double low, double high)
{
    return low + (high - low) * std::ldexp(static_cast<double>(g_engine() >> 11), -53);
}
double power(double most) { return std::exp2(-std::floor(between(0, most + 1))); }

// The least of the times, in nanoseconds a call; all contestants take turns.
template <typename Input, typename Function>
std::vector<double> timesOf(std::vector<Function> const& functions,
                            std::vector<Input> const& inputs)
{
    using Clock = std::chrono::steady_clock;
    std::vector<double> least(functions.size(), std::numeric_limits<double>::infinity());
    double volatile sink = 0;
    for (int round = 0; round < kRounds; ++round)
        for (std::size_t i = 0; i < functions.size(); ++i) {
            auto const begin = Clock::now();
            double sum = 0;
            for (Input const& input : inputs)
                sum += functions[i](input).values[0];
            std::chrono::duration<double, std::nano> const took = Clock::now() - begin;
            sink = sink + sum;
            least[i] = std::min(least[i], took.count() / static_cast<double>(inputs.size()));
        }
    return least;
}
double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// ---- roots ----

// The highest power first, in the last places.
struct Polynomial {
    int degree;
    double c[5];
};
struct Found {
    double values[4] = {};
    int count = 0;
};

// Of these degrees, or of none.
struct Finder {
    char const* name;
    int lowest, highest;
    Found (*find)(Polynomial const&);

    Found operator()(Polynomial const& p) const { return find(p); }
};

Found byQvr(Polynomial const& p)
{
    auto const& c = p.c;
    Found found;
    auto const take = [&found](auto const& roots) {
        for (double const root : roots)
            found.values[found.count++] = root;
    };
    p.degree == 2   ? take(qvr::solveQuadratic(c[0], c[1], c[2]))
    : p.degree == 3 ? take(qvr::solveCubic(c[0], c[1], c[2], c[3]))
                    : take(qvr::solveQuartic(c[0], c[1], c[2], c[3], c[4]));
    return found;
}
Found byImath(Polynomial const& p)
{
    auto const& c = p.c;
    Found found;
    found.count = p.degree == 2 ? Imath::solveQuadratic(c[0], c[1], c[2], found.values)
                                : Imath::solveCubic(c[0], c[1], c[2], c[3], found.values);
    return found;
}
template <int degree> Found byCompanion(Polynomial const& p)
{
    Eigen::Matrix<double, degree + 1, 1> rising;
    for (int i = 0; i <= degree; ++i)
        rising[i] = p.c[degree - i];
    Eigen::PolynomialSolver<double, degree> const solver(rising);
    Found found;
    for (auto const& root : solver.roots())
        if (std::abs(root.imag()) <= 1e-12 * std::abs(root))
            found.values[found.count++] = root.real();
    return found;
}
Found byEigen(Polynomial const& p)
{
    return p.degree == 2   ? byCompanion<2>(p)
           : p.degree == 3 ? byCompanion<3>(p)
                           : byCompanion<4>(p);
}

// The distance of x from the root next to it, in units in the last place of that, by Newton's
// method with 600 bits from a start next to it.
double distanceInUnits(Polynomial const& p, double start, double x)
{
    mpfr_t root, value, slope;
    mpfr_inits2(600, root, value, slope, nullptr);
    mpfr_set_d(root, start, MPFR_RNDN);
    for (int step = 0; step < 12; ++step) {
        mpfr_set_zero(value, 1);
        mpfr_set_zero(slope, 1);
        for (int i = 0; i <= p.degree; ++i) {
            mpfr_fma(slope, slope, root, value, MPFR_RNDN);
            mpfr_mul(value, value, root, MPFR_RNDN);
            mpfr_add_d(value, value, p.c[i], MPFR_RNDN);
        }
        if (mpfr_zero_p(value) || mpfr_zero_p(slope))
            break;
        mpfr_div(value, value, slope, MPFR_RNDN);
        mpfr_sub(root, root, value, MPFR_RNDN);
    }
    double const size = std::abs(mpfr_get_d(root, MPFR_RNDN));
    mpfr_sub_d(root, root, x, MPFR_RNDN);
    double const difference = std::abs(mpfr_get_d(root, MPFR_RNDN));
    mpfr_clears(root, value, slope, nullptr);
    return difference / (std::nextafter(size, std::numeric_limits<double>::infinity()) - size);
}
// |p(x)| in units of epsilon times the sum of its terms' magnitudes.
double backwardError(Polynomial const& p, double x)
{
    long double value = 0, terms = 0;
    for (int i = 0; i <= p.degree; ++i) {
        value = value * x + p.c[i];
        terms = terms * std::abs(x) + std::abs(p.c[i]);
    }
    return static_cast<double>(std::abs(value) / terms) * 0x1p52;
}

Polynomial expanded(int degree, std::array<double, 4> const& roots)
{
    Polynomial p{degree, {1}};
    for (int k = 0; k < degree; ++k)
        for (int i = k + 1; i > 0; --i)
            p.c[i] -= roots[static_cast<std::size_t>(k)] * p.c[i - 1];
    return p;
}
std::array<double, 4> rootsIn(double spread)
{
    std::array<double, 4> roots;
    for (double& root : roots)
        root = between(-1, 1) * power(spread);
    return roots;
}

struct PolynomialFamily {
    char const* name;
    Polynomial (*draw)(int degree);
};
constexpr PolynomialFamily kPolynomials[] = {
    {"coefficients in [-1, 1]",
     [](int degree) {
         Polynomial p{degree, {}};
         for (double& c : p.c)
             c = between(-1, 1);
         return p;
     }},
    {"all roots in [-1, 1]", [](int degree) { return expanded(degree, rootsIn(0)); }},
    {"roots from 2^-40 to 1", [](int degree) { return expanded(degree, rootsIn(40)); }},
    {"two nearly equal",
     [](int degree) {
         auto roots = rootsIn(0);
         roots[1] = roots[0] * (1 + power(40));
         return expanded(degree, roots);
     }},
};

void compareRoots()
{
    std::vector<Finder> const all{
        {"qvr", 2, 4, byQvr}, {"Imath", 2, 3, byImath}, {"Eigen, companion matrix", 2, 4, byEigen}};
    std::puts("| degree | polynomials | by | other number of roots | units, largest | typical | "
              "backward, largest | ns |");
    std::puts("|---|---|---|---|---|---|---|---|");
    for (int degree = 2; degree <= 4; ++degree)
        for (PolynomialFamily const& family : kPolynomials) {
            std::vector<Polynomial> inputs(kInputs);
            for (Polynomial& p : inputs)
                p = family.draw(degree);
            std::vector<Finder> finders;
            std::copy_if(all.begin(), all.end(), std::back_inserter(finders),
                         [degree](Finder const& f) { return degree <= f.highest; });
            auto const times = timesOf(finders, inputs);
            for (std::size_t i = 0; i < finders.size(); ++i) {
                std::vector<double> units;
                double backward = 0;
                int others = 0;
                for (Polynomial const& p : inputs) {
                    Found const exact = byQvr(p);
                    Found const found = finders[i](p);
                    if (found.count != exact.count) {
                        ++others;
                        continue;
                    }
                    std::multiset<double> const roots(found.values, found.values + found.count);
                    for (int k = 0; double const root : roots) {
                        units.push_back(distanceInUnits(p, exact.values[k++], root));
                        backward = std::max(backward, backwardError(p, root));
                    }
                }
                std::printf("| %d | %s | %s | %.1f %% | %.3g | %.2g | %.2g | %.0f |\n", degree,
                            family.name, finders[i].name, 100.0 * others / kInputs,
                            units.empty() ? 0 : *std::max_element(units.begin(), units.end()),
                            median(units), backward, times[i]);
            }
        }
}

// ---- eigensystems ----

template <typename T> using Matrix = qvr::SymmetricMatrix3<T>;
template <typename T> using System = qvr::Eigensystem3<T>;

template <typename T> Eigen::Matrix<T, 3, 3> dense(Matrix<T> const& m)
{
    Eigen::Matrix<T, 3, 3> d;
    d << m.xx, m.xy, m.xz, m.xy, m.yy, m.yz, m.xz, m.yz, m.zz;
    return d;
}
template <typename T, typename Solver> System<T> systemOf(Solver const& solver)
{
    System<T> system;
    for (int i = 0; i < 3; ++i) {
        system.values[i] = solver.eigenvalues()[i];
        for (int k = 0; k < 3; ++k)
            system.vectors[i][k] = solver.eigenvectors()(k, i);
    }
    return system;
}
template <typename T> struct SystemSolver {
    char const* name;
    System<T> (*solve)(Matrix<T> const&);

    System<T> operator()(Matrix<T> const& m) const { return solve(m); }
};
template <typename T>
std::vector<SystemSolver<T>> const kSolvers{
    {"qvr", [](Matrix<T> const& m) { return qvr::eigensystem(m); }},
    {"Eigen, iterative",
     [](Matrix<T> const& m) {
         return systemOf<T>(Eigen::SelfAdjointEigenSolver<Eigen::Matrix<T, 3, 3>>(dense(m)));
     }},
    {"Eigen, direct",
     [](Matrix<T> const& m) {
         Eigen::SelfAdjointEigenSolver<Eigen::Matrix<T, 3, 3>> solver;
         return systemOf<T>(solver.computeDirect(dense(m)));
     }},
    {"Imath, Jacobi", [](Matrix<T> const& m) {
         Imath::Matrix33<T> a(m.xx, m.xy, m.xz, m.xy, m.yy, m.yz, m.xz, m.yz, m.zz), vectors;
         Imath::Vec3<T> values;
         Imath::jacobiEigenSolver(a, values, vectors);
         System<T> system;
         for (int i = 0; i < 3; ++i) {
             system.values[i] = values[i];
             for (int k = 0; k < 3; ++k)
                 system.vectors[i][k] = vectors[k][i];
         }
         return system;
     }}};

using Wide = Eigen::Matrix<long double, 3, 3>;

Matrix<double> turned(double a, double b, double c)
{
    Eigen::Quaterniond q(between(-1, 1), between(-1, 1), between(-1, 1), between(-1, 1));
    Eigen::Matrix3d const r = q.normalized().toRotationMatrix();
    Eigen::Matrix3d const m = r * Eigen::Vector3d(a, b, c).asDiagonal() * r.transpose();
    return {m(0, 0), m(0, 1), m(0, 2), m(1, 1), m(1, 2), m(2, 2)};
}
struct MatrixFamily {
    char const* name;
    Matrix<double> (*draw)();
};
constexpr MatrixFamily kMatrices[] = {
    {"lanes in [-1, 1]",
     []() -> Matrix<double> {
         auto const lane = [] { return between(-1, 1); };
         return {lane(), lane(), lane(), lane(), lane(), lane()};
     }},
    {"two equal",
     [] {
         double const a = between(-1, 1);
         return turned(a, a, between(-1, 1));
     }},
    {"from 2^-40 to 1", [] { return turned(power(40), power(40), 1); }},
    {"nearly diagonal",
     []() -> Matrix<double> {
         double const e = power(40);
         return {between(-1, 1), e, -e, between(-1, 1), e, between(-1, 1)};
     }},
};

template <typename T> void compareSystems(char const* type)
{
    for (MatrixFamily const& family : kMatrices) {
        std::vector<Matrix<T>> inputs(kInputs);
        for (Matrix<T>& input : inputs) {
            Matrix<double> const m = family.draw();
            input = {static_cast<T>(m.xx), static_cast<T>(m.xy), static_cast<T>(m.xz),
                     static_cast<T>(m.yy), static_cast<T>(m.yz), static_cast<T>(m.zz)};
        }
        auto const times = timesOf(kSolvers<T>, inputs);
        for (std::size_t i = 0; i < kSolvers<T>.size(); ++i) {
            std::vector<double> residuals, orthogonalities;
            for (Matrix<T> const& input : inputs) {
                System<T> const s = kSolvers<T>[i](input);
                Wide const m = dense(input).template cast<long double>();
                Wide v;
                Eigen::Matrix<long double, 3, 1> values;
                for (int k = 0; k < 3; ++k) {
                    values[k] = s.values[k];
                    for (int row = 0; row < 3; ++row)
                        v(row, k) = s.vectors[k][row];
                }
                long double const epsilon = std::numeric_limits<T>::epsilon();
                Wide const residual = m * v - v * values.asDiagonal();
                residuals.push_back(static_cast<double>(residual.colwise().norm().maxCoeff() /
                                                        values.cwiseAbs().maxCoeff() / epsilon));
                orthogonalities.push_back(
                    static_cast<double>((v.transpose() * v - Wide::Identity()).norm() / epsilon));
            }
            std::printf("| %s | %s | %s | %.3g | %.2g | %.3g | %.2g | %.0f |\n", type, family.name,
                        kSolvers<T>[i].name, *std::max_element(residuals.begin(), residuals.end()),
                        median(residuals),
                        *std::max_element(orthogonalities.begin(), orthogonalities.end()),
                        median(orthogonalities), times[i]);
        }
    }
}

}  // namespace

int main()
{
    compareRoots();
    std::puts("\n| type | matrices | by | residual, largest | typical | orthogonality, largest | "
              "typical | ns |");
    std::puts("|---|---|---|---|---|---|---|---|");
    compareSystems<float>("float");
    compareSystems<double>("double");
}
