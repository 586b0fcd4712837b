// CRandomNumberSequence: known values, and the two ways to every other one.
#include "randomsequence.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr int kPeriod = 1 << 30;
constexpr int kLowest = std::numeric_limits<int>::min();
constexpr int kHighest = std::numeric_limits<int>::max();

// The sequence of a random generator node.
CRandomNumberSequence nodeSequence(int seed)
{
    return CRandomNumberSequence(CRandomNumberSequence(1911660)[seed] + 12345);
}

}  // namespace

TEST(RandomSequence, KnownValues)
{
    struct Row {
        char const* why;
        CRandomNumberSequence sequence;
        int values[4];
    };
    Row const rows[] = {
        {"seed 0 starts at 0", CRandomNumberSequence(0), {0, 2500001, 94111814, 10450431}},
        {"a seed is a place", CRandomNumberSequence(1), {2500001, 94111814, 10450431, 294247708}},
        {"node seed 0", nodeSequence(0), {284395429, 169757786, 403737699, 231282448}},
        {"node seed 1", nodeSequence(1), {54211178, 207712947, 574856864, 456740545}},
        {"node seed -1", nodeSequence(-1), {956962064, 205158129, 995043030, 1488591}},
    };
    for (Row const& row : rows)
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(row.sequence[i], row.values[i]) << row.why << ", index " << i;
    EXPECT_EQ(CRandomNumberSequence(1911660)[0], 904302260);
    EXPECT_EQ(CRandomNumberSequence(1911660)[1], 325828901);
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

TEST(RandomSequence, IndicesRepeatAfterThePeriodAndBackwards)
{
    for (int const seed : {0, 1, -1, 904314605, kLowest, kHighest}) {
        CRandomNumberSequence const sequence(seed);
        for (int const n : {0, 1, 12345, kPeriod - 1}) {
            EXPECT_EQ(sequence[n], sequence[n - kPeriod]);
            EXPECT_EQ(sequence[n], CRandomNumberSequence(seed)[n | kPeriod]);
            EXPECT_EQ(sequence[n], sequence[n - kPeriod - kPeriod]) << "bit 31 is ignored too";
        }
        EXPECT_EQ(sequence[-1], CRandomNumberSequence::Advance(sequence[0], -1));
    }
}

TEST(RandomSequence, AdvanceGoesAsFarAsTheIndexDoes)
{
    std::vector<int> distances = {1000, -1000, kPeriod - 1, kPeriod, kHighest, kLowest};
    for (int d = -20; d <= 20; ++d)
        distances.push_back(d);
    CRandomNumberSequence const sequence(20);
    for (int const d : distances) {
        EXPECT_EQ(CRandomNumberSequence::Advance(sequence[3], d),
                  sequence[static_cast<int>(3u + static_cast<unsigned>(d))])
            << d;
        for (int const value : {0, 1, 500000000, kPeriod - 1}) {
            int const there = CRandomNumberSequence::Advance(value, d);
            EXPECT_GE(there, 0);
            EXPECT_LT(there, kPeriod);
            int const back = static_cast<int>(0u - static_cast<unsigned>(d));
            EXPECT_EQ(CRandomNumberSequence::Advance(there, back), value) << d;
        }
    }
    EXPECT_EQ(CRandomNumberSequence::Advance(-7, 0), -7) << "no step keeps what is no number";
}
