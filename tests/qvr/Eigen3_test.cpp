// Eigenvalues and eigenvectors of symmetric 3x3 matrices: by what they promise, for families of
// matrices that are hard in one way each; edges.
#include "qvr/rotations.h"

#include "qvr/eigen3.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace nodus::test;
using qvr::Eigensystem3;
using qvr::SymmetricMatrix3;

namespace {

using Matrix = SymmetricMatrix3<double>;

Matrix drawn(Random& r, double ofDiagonal, double ofRest)
{
    auto const in = [&r](double size) { return r.between(-size, size); };
    return {in(ofDiagonal), in(ofRest), in(ofRest), in(ofDiagonal), in(ofRest), in(ofDiagonal)};
}

// With these eigenvalues, but for rounding.
Matrix turned(Random& r, double a, double b, double c)
{
    qvr::Quatd const q = rotationIn(r);
    auto const u = rotated(q, {1, 0, 0}), v = rotated(q, {0, 1, 0}), w = rotated(q, {0, 0, 1});
    auto const at = [&](double qvr::Vec3d::*i, double qvr::Vec3d::*j) {
        return a * u.*i * u.*j + b * v.*i * v.*j + c * w.*i * w.*j;
    };
    using V = qvr::Vec3d;
    return {at(&V::x, &V::x), at(&V::x, &V::y), at(&V::x, &V::z),
            at(&V::y, &V::y), at(&V::y, &V::z), at(&V::z, &V::z)};
}

struct Family {
    char const* name;
    Matrix (*draw)(Random&);
};
double near0(Random& r) { return std::ldexp(r.between(-1, 1), -r.integer(0, 60)); }
constexpr Family kFamilies[] = {
    {"random", [](Random& r) { return drawn(r, 1, 1); }},
    {"nearly a multiple of the unit matrix",
     [](Random& r) {
         double const size = near0(r);
         Matrix m = drawn(r, size, size);
         m.xx += 1, m.yy += 1, m.zz += 1;
         return m;
     }},
    {"two equal",
     [](Random& r) {
         double const a = r.between(-1, 1);
         return turned(r, a, a, near0(r));
     }},
    {"two nearly equal",
     [](Random& r) {
         double const a = r.between(-1, 1);
         return turned(r, a, a + near0(r), r.between(-1, 1));
     }},
    {"far apart", [](Random& r) { return turned(r, near0(r), near0(r), 1); }},
    {"nearly diagonal", [](Random& r) { return drawn(r, 1, near0(r)); }},
    {"large rest", [](Random& r) { return drawn(r, near0(r), 1); }},
    {"small integers",
     [](Random& r) -> Matrix {
         auto const i = [&r] { return double(r.integer(-3, 3)); };
         return {i(), i(), i(), i(), i(), i()};
     }},
    {"a plane alone",
     [](Random& r) -> Matrix {
         return {r.between(-1, 1), near0(r), 0, r.between(-1, 1), 0, near0(r)};
     }},
};

template <typename T> SymmetricMatrix3<T> scaled(Matrix const& m, double by)
{
    auto const lane = [by](double v) { return static_cast<T>(v * by); };
    return {lane(m.xx), lane(m.xy), lane(m.xz), lane(m.yy), lane(m.yz), lane(m.zz)};
}

template <typename T> bool isRightHanded(Eigensystem3<T> const& s)
{
    auto const& [a, b, c] = s.vectors;
    return (a[1] * b[2] - a[2] * b[1]) * c[0] + (a[2] * b[0] - a[0] * b[2]) * c[1] +
               (a[0] * b[1] - a[1] * b[0]) * c[2] >
           0;
}

// The stated errors: |A v - lambda v| to |A| and |V^T V - 1| are below 1.5 epsilon.
template <typename T> void checkSystem(SymmetricMatrix3<T> const& m)
{
    using Wide = long double;
    auto const s = eigensystem(m);
    ASSERT_TRUE(std::ranges::is_sorted(s.values));
    ASSERT_TRUE(isRightHanded(s));
    Wide const rows[3][3] = {{m.xx, m.xy, m.xz}, {m.xy, m.yy, m.yz}, {m.xz, m.yz, m.zz}};
    Wide const most = Wide(1.5) * std::numeric_limits<T>::epsilon();
    Wide const norm = std::max(std::abs(s.values[0]), std::abs(s.values[2]));
    Wide squares = 0;
    for (int i = 0; i < 3; ++i) {
        Wide residual = 0;
        for (int j = 0; j < 3; ++j) {
            Wide lane = -Wide(s.values[i]) * s.vectors[i][j], product = i == j ? -1 : 0;
            for (int k = 0; k < 3; ++k) {
                lane += rows[j][k] * s.vectors[i][k];
                product += Wide(s.vectors[i][k]) * s.vectors[j][k];
            }
            residual += lane * lane;
            squares += product * product;
        }
        ASSERT_LE(std::sqrt(residual), most * norm);
    }
    ASSERT_LT(std::sqrt(squares), most);
}

}  // namespace

template <typename T> class Eigen3 : public testing::Test {
};
using EigenTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(Eigen3, EigenTypes);

TYPED_TEST(Eigen3, SystemsAreWithinTheStatedErrorsAtEverySize)
{
    using Limits = std::numeric_limits<TypeParam>;
    for (Family const& family : kFamilies)
        for (int const exponent : {0, Limits::min_exponent + 30, Limits::max_exponent - 4}) {
            SCOPED_TRACE(testing::Message() << family.name << " times 2^" << exponent);
            Random random;
            double const scale = std::ldexp(1.0, exponent);
            for (int i = 0; i < (exponent == 0 ? 10000 : 500); ++i) {
                checkSystem(scaled<TypeParam>(family.draw(random), scale));
                ASSERT_FALSE(this->HasFatalFailure());
            }
        }
}

TYPED_TEST(Eigen3, OfEdges)
{
    using Limits = std::numeric_limits<TypeParam>;
    TypeParam const most = Limits::max(), least = Limits::denorm_min();
    for (TypeParam const size : {TypeParam(1), most, least}) {
        auto const diagonal =
            qvr::eigensystem(SymmetricMatrix3<TypeParam>{size, 0, 0, -size, 0, 0});
        EXPECT_EQ(diagonal.values[0], -size);
        EXPECT_EQ(diagonal.values[1], 0);
        EXPECT_EQ(diagonal.values[2], size);
        EXPECT_EQ(std::abs(diagonal.vectors[0][1]), 1);
        EXPECT_EQ(std::abs(diagonal.vectors[2][0]), 1);
        EXPECT_TRUE(isRightHanded(diagonal));

        // Eigenvalues 0, 0 and three times the number.
        auto const alike =
            qvr::eigensystem(SymmetricMatrix3<TypeParam>{size, size, size, size, size, size});
        EXPECT_TRUE(isRightHanded(alike));
        EXPECT_NEAR(std::abs(alike.vectors[2][0]), std::sqrt(1.0 / 3), 1e-6);
        EXPECT_LE(std::abs(alike.values[1]), size * Limits::epsilon());
        EXPECT_EQ(alike.values[2], 3 * size);
    }
    auto const nothing = qvr::eigensystem(SymmetricMatrix3<TypeParam>{});
    EXPECT_EQ(nothing.values[2], 0);
    EXPECT_TRUE(isRightHanded(nothing));

    for (TypeParam const bad : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()})
        for (int lane = 0; lane < 6; ++lane) {
            TypeParam m[6] = {1, 2, 3, 4, 5, 6};
            m[lane] = bad;
            auto const s =
                qvr::eigensystem(SymmetricMatrix3<TypeParam>{m[0], m[1], m[2], m[3], m[4], m[5]});
            for (int i = 0; i < 3; ++i)
                EXPECT_TRUE(std::isnan(s.values[i]) && std::isnan(s.vectors[i][2])) << lane;
        }
}
