// Noise1D, Noise2D and Noise3D: the whole field, and where it repeats. Values and edges are rows.
#include "support/kernel_call.h"

#include <cstdlib>

using namespace nodus::test;

namespace {

float noise(float x) { return call<Float>(NodusNoise1D_Solve, x); }
float noise(float x, float y) { return call<Float>(NodusNoise2D_Solve, Float2{x, y}); }
float noise(float x, float y, float z) { return call<Float>(NodusNoise3D_Solve, Float3{x, y, z}); }

class Noise : public testing::Test {
protected:
    Noise() { std::srand(1); }  // what the first noise of the process draws its tables from
};

}  // namespace

// Positions in every cell of the tables: the sum is that of a second implementation.
TEST_F(Noise, FieldIsTheSameBitForBit)
{
    std::uint64_t sum = 0;
    for (int i = 0; i < 2000; ++i) {
        float const x = static_cast<float>(i) * 0.37f - 300.0f,
                    y = static_cast<float>(i * 91 % 1009) * 0.61f - 200.0f,
                    z = static_cast<float>(i * 57 % 701) * 1.13f - 400.0f;
        for (float const value : {noise(x), noise(x, y), noise(x, y, z)})
            sum = sum * 31 + bits(value);
    }
    EXPECT_EQ(sum, 0x3a62c6f07e9ea777u);
}

// At multiples of 1/64 all sums with the offset of the lattice are exact.
TEST_F(Noise, RepeatsEvery256InEachCoordinateButNotSooner)
{
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
