// A portable build computes the digests that are kept of many seeds, on whatever processor: one
// seed does not see every argument for which a function is rounded otherwise.
#include "host/fixtures.h"

#include "nodus/host/digest.h"

#include <fstream>

// In order, as a user who wants to know where they differ goes on: nodus digest --seed N on both.
TEST(Seeds, AllFamiliesHaveTheDigestsThatAreKept)
{
    std::ifstream kept(SEEDS_FILE);
    int count = 0;
    std::string all, digest;
    for (std::uint32_t seed = 0; kept >> seed >> all >> digest; ++count) {
        auto const report = nodus::host::digestReport(fixtures::catalogue(), seed);
        EXPECT_TRUE(report.ends_with(digest + "\n")) << "seed " << seed << "\n" << report;
    }
    EXPECT_GE(count, 20);
}
