// What is built on first use, raced for by the threads of many fresh processes.
#include "support/command.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>

namespace {

std::string withSeed(int seed) { return std::string(FIRST_CALLS " ") + std::to_string(seed); }

}  // namespace

TEST(FirstCalls, FromEightThreadsSeeCompleteTables)
{
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    for (int seed = 1; seed <= 2000 && std::chrono::steady_clock::now() < end; ++seed)
        ASSERT_EQ(std::system((withSeed(seed) + " >/dev/null").c_str()), 0) << "seed " << seed;
}

// A gradient of length zero has no direction: NaN, which reaches all positions next to it. Of the
// seeds from 1 on, 15 is the first that draws one.
TEST(FirstCalls, DrawTheTablesOnceAndZeroVectorsAreNaN)
{
    EXPECT_THAT(nodus::test::linesOf(withSeed(1)), testing::ElementsAre("0 NaN, 0x1.4cp-4"));
    EXPECT_THAT(nodus::test::linesOf(withSeed(15)), testing::ElementsAre("4 NaN, -0x1.58p-4"));
}
