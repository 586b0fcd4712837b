// CRandomNumberSequence: known values, and the two ways to every other one.
#include "randomsequence.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr int kPeriod = 1 << 30;
constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

// Of the sequence of a random generator node.
int seedOfNode(int seed) { return CRandomNumberSequence(1911660)[seed] + 12345; }

}  // namespace

TEST(RandomSequence, KnownValues)
{
    struct Row {
        char const* why;
        int seed, values[4];
    } const rows[] = {
        {"seed 0 starts at 0", 0, {0, 2500001, 94111814, 10450431}},
        {"a seed is a place", 1, {2500001, 94111814, 10450431, 294247708}},
        {"node seed 0", seedOfNode(0), {284395429, 169757786, 403737699, 231282448}},
        {"node seed 1", seedOfNode(1), {54211178, 207712947, 574856864, 456740545}},
        {"node seed -1", seedOfNode(-1), {956962064, 205158129, 995043030, 1488591}},
    };
    for (Row const& row : rows)
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(CRandomNumberSequence(row.seed)[i], row.values[i]) << row.why << ", " << i;
}

// Every bit of an index, alone and with all below it: the numbers come from 30 factors, of which
// a wrong one would show at its own bit only.
TEST(RandomSequence, IndexingAgreesWithSteppingAtEveryBit)
{
    CRandomNumberSequence const sequence(0);
    std::uint64_t power = 10000005;  // to the power 2^bit, by squaring
    for (int bit = 0; bit < 30; ++bit) {
        int const index = 1 << bit;
        EXPECT_EQ(sequence[index], static_cast<int>(static_cast<std::uint32_t>(power) >> 2)) << bit;
        EXPECT_EQ(sequence[index], CRandomNumberSequence::Advance(sequence[index - 1], 1)) << bit;
        EXPECT_EQ(sequence[-index], CRandomNumberSequence::Advance(sequence[1 - index], -1)) << bit;
        power = static_cast<std::uint32_t>(power * power);
    }
}

TEST(RandomSequence, AdvanceGoesAsFarAsTheIndexDoesAndBothRepeatAfterThePeriod)
{
    std::vector<int> distances(41);
    std::iota(distances.begin(), distances.end(), -20);
    for (int const far : {1000, -1000, 12345, kPeriod - 1, kPeriod, kHighest, kLowest})
        distances.push_back(far);
    for (int const seed : {0, 20, -1, kLowest, kHighest}) {
        CRandomNumberSequence const sequence(seed);
        for (int const d : distances) {
            int const there = CRandomNumberSequence::Advance(sequence[0], d);
            EXPECT_THAT(there, testing::AllOf(testing::Ge(0), testing::Lt(kPeriod)));
            EXPECT_EQ(there, sequence[d]) << d;
            EXPECT_EQ(there, sequence[static_cast<int>(static_cast<unsigned>(d) ^ 3u << 30)]) << d;
            int const back = static_cast<int>(0u - static_cast<unsigned>(d));
            EXPECT_EQ(CRandomNumberSequence::Advance(there, back), sequence[0]) << d;
        }
    }
    EXPECT_EQ(CRandomNumberSequence::Advance(-7, 0), -7) << "no step keeps what is no number";
}
