// What is built on first use, raced for by the threads of many fresh processes.
#include "nodusmath/reference_noise.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>

namespace {

int runWithSeed(unsigned seed)
{
    return std::system((std::string(FIRST_CALLS " ") + std::to_string(seed)).c_str());
}

}  // namespace

TEST(FirstCalls, FromEightThreadsSeeCompleteTables)
{
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    for (unsigned seed = 1; seed <= 2000 && std::chrono::steady_clock::now() < end; ++seed)
        ASSERT_EQ(runWithSeed(seed), 0) << "with seed " << seed;
}

// A gradient of length zero has no direction: NaN, which reaches all positions next to it.
TEST(FirstCalls, ZeroVectorsAreNaN)
{
    for (unsigned seed = 1; seed < 100000; ++seed) {
        std::srand(seed);
        if (nodus::test::ReferenceNoise().hasZeroVectors()) {
            EXPECT_EQ(runWithSeed(seed), 0) << "with seed " << seed;
            return;
        }
    }
    FAIL() << "no seed draws a zero vector";
}
