// Noise1D, Noise2D and Noise3D: the field, its edges, and what lies beyond them.
#include "nodusmath/reference_noise.h"
#include "support/kernel_call.h"

#include "kernels.h"

#include <cmath>
#include <limits>
#include <random>

using namespace nodusmath;
using nodus::test::bits;
using nodus::test::call;
using nodus::test::ReferenceNoise;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

float noise(float x) { return call<Float>(NodusNoise1D_Solve, x); }
float noise(float x, float y) { return call<Float>(NodusNoise2D_Solve, Float2{x, y}); }
float noise(float x, float y, float z) { return call<Float>(NodusNoise3D_Solve, Float3{x, y, z}); }

class Noise : public testing::Test {
protected:
    // The first noise of the process draws the same numbers as the reference.
    static ReferenceNoise const& reference()
    {
        static ReferenceNoise const tables = [] {
            std::srand(1);
            ReferenceNoise const drawn;
            std::srand(1);
            noise(0.5f, 0.5f, 0.5f);
            return drawn;
        }();
        return tables;
    }

    template <typename... Coordinates> static void expectReference(Coordinates... c)
    {
        float const expected = reference().at(c...), got = noise(c...);
        if (!std::isnan(expected) || !std::isnan(got)) {
            EXPECT_EQ(bits(got), bits(expected)) << testing::PrintToString(std::tuple(c...));
        }
    }
};

}  // namespace

TEST_F(Noise, EqualsTheReferenceBitForBit)
{
    std::mt19937 random(2026);
    for (float const extent : {1.0f, 300.0f, 5000.0f, 1e6f, 1e9f}) {
        std::uniform_real_distribution<float> coordinate(-extent, extent);
        for (int i = 0; i < 2000; ++i) {
            float const x = coordinate(random), y = coordinate(random), z = coordinate(random);
            expectReference(x);
            expectReference(x, y);
            expectReference(x, y, z);
        }
    }
}

TEST_F(Noise, IsZeroAtWholePositions)
{
    reference();
    for (float const x : {0.0f, -1.0f, 255.0f, -4096.0f, -4097.0f, 0x1p24f, -0x1p30f}) {
        for (float const y : {7.0f, -300.0f, 0x1p25f}) {
            EXPECT_EQ(noise(x), 0.0f) << x;
            EXPECT_EQ(noise(x, y), 0.0f) << x << ' ' << y;
            EXPECT_EQ(noise(x, y, 3.0f), 0.0f) << x << ' ' << y;
        }
    }
}

// At multiples of 1/64 all sums with the offset of the lattice are exact.
TEST_F(Noise, RepeatsEvery256InEachCoordinateButNotSooner)
{
    reference();
    int sooner = 0;
    for (int i = 0; i < 512; ++i) {
        float const x = static_cast<float>(i) * 0.984375f - 200.0f;
        float const y = 100.0f - x, z = 0.5f * x;
        EXPECT_EQ(noise(x), noise(x + 256.0f));
        EXPECT_EQ(noise(x, y), noise(x + 256.0f, y - 256.0f));
        EXPECT_EQ(noise(x, y, z), noise(x + 256.0f, y, z - 512.0f));
        EXPECT_EQ(noise(x, y, z), noise(x, y + 256.0f, z));
        EXPECT_LE(std::abs(noise(x)), 0.5f);
        sooner += noise(x, y) == noise(x + 128.0f, y) || noise(x, y) == noise(x, y + 128.0f);
    }
    EXPECT_LT(sooner, 51) << "whole positions are zero, others repeat by chance only";
}

TEST_F(Noise, BeyondTheLatticeIsZeroOrNotANumber)
{
    reference();
    constexpr float kLargest = std::numeric_limits<float>::max();
    for (float const far :
         {0x1p31f - 4096.0f, -0x1p31f - 4096.0f, -3e9f, 1e30f, kLargest, -kLargest}) {
        EXPECT_EQ(bits(noise(far)), 0u) << far;
        for (float const near : {0.5f, -7000.25f, far}) {
            EXPECT_EQ(bits(noise(far, near)), 0u) << far << ' ' << near;
            EXPECT_EQ(bits(noise(near, far)), 0u) << far << ' ' << near;
            EXPECT_EQ(bits(noise(near, 0.5f, far)), 0u) << far << ' ' << near;
        }
        EXPECT_TRUE(std::isnan(noise(far, kNaN)));
    }
    for (float const none : {kInfinity, -kInfinity, kNaN}) {
        EXPECT_TRUE(std::isnan(noise(none)));
        EXPECT_TRUE(std::isnan(noise(none, 0.5f)) && std::isnan(noise(0.5f, none)));
        EXPECT_TRUE(std::isnan(noise(none, 0.5f, 0.5f)) && std::isnan(noise(0.5f, none, 1e30f)));
        EXPECT_TRUE(std::isnan(noise(0.5f, 0.5f, none)));
    }
    EXPECT_NE(noise(-0x1p31f, 0.5f), 0.0f) << "the last whole coordinate leaves the others";
}
