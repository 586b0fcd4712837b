// The bits of everything in double are the same whatever the compiler, its options and the
// processor: one number stands for those of many inputs.
#include "qvr/rotations.h"

#include "qvr/eigen3.h"
#include "qvr/roots.h"
#include "qvr/rotation_limits.h"
#include "qvr/rotation_space.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

using namespace nodus::test;
using namespace qvr;

TEST(Qvr, HasTheSameBitsEverywhere)
{
    std::uint64_t hash = 0xCBF29CE484222325u;  // FNV-1a
    auto const take = [&hash](auto const&... values) {
        ((hash = (hash ^ std::bit_cast<std::uint64_t>(double{values})) * 0x100000001B3u), ...);
    };
    Random random;
    for (int i = 0; i < 5000; ++i) {
        double const a = random.between(-1, 1), b = random.between(-1, 1),
                     c = random.between(-1, 1);
        double const d = random.between(-1, 1), e = random.between(-1, 1), ab = a * b, aa = a * a;
        for (double const root : solveQuadratic(a, b, c))
            take(root);
        for (double const root : solveQuartic(a, b, c, d, e))
            take(root);
        // Nearly double.
        for (double const root : solveCubic(1.0, -2 * a - b, aa + 2 * ab, -aa * b))
            take(root);
        auto const system = eigensystem(SymmetricMatrix3<double>{a, b, c, d, e, ab});
        take(system.values[0], system.vectors[1][1], system.vectors[2][0]);

        Quatd const p = rotationIn(random), q = rotationIn(random);
        AngleLimits const box{i % 13, {-1, a + 1}, {-0.1, b + 1}, {c - 1, 0.5}};
        TwistSwingLimits const cone{{-0.2, d + 1}, 1 + a, 1 + b};
        RotationSpace const space{i % 13, p, q, {i % 2 == 0, i % 3 == 0, true}, {a, b, c}};
        for (Quatd const& r :
             {box.nearest(q), box.soften(p, 0.3), cone.nearest(q), space.nearest(p)})
            take(r.x, r.y, r.z, r.w);
        Eulerd const angles = space.angles(p, {5, -5, 5});
        take(angles.x, angles.y, angles.z);
    }
    EXPECT_EQ(hash, 0x4FA7B6F8201FB160u);
}
