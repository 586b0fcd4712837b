// The random sequence that other libraries link to, and what generators leave in their workspaces.
// Values are rows.
#include "randomgenerator.h"
#include "randomsequence.h"

#include "support/kernel_call.h"

#include "nodus/runtime/EvaluationScope.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

using namespace nodus::test;
using Workspace = binary::Math::RandomGenerator_Workspace;

namespace {

constexpr Int32 kLowest = std::numeric_limits<Int32>::min();
constexpr Int32 kHighest = std::numeric_limits<Int32>::max();

int seedOfNode(int seed) { return CRandomNumberSequence(1911660)[seed] + 12345; }
int numberOfNode(int seed, int index) { return CRandomNumberSequence(seedOfNode(seed))[index]; }

// What a kernel makes of a workspace. Seed and distribution lie alike in the inputs of all types.
auto left(auto* kernel, Int32 frame, Int32 seed, Int32 distribution, Workspace workspace)
{
    nodus::runtime::EvaluationScope const scope(frame, nullptr);
    alignas(16) Int32 const in[12] = {seed, distribution};
    alignas(16) std::byte out[16];
    if constexpr (std::is_invocable_v<decltype(kernel), void const*, void*>)
        kernel(in, &workspace);
    else
        kernel(in, &workspace, out);
    return bits(workspace);
}

}  // namespace

TEST(RandomSequence, KnownValues)
{
    struct Row {
        char const* why;
        int seed, first, values[4];
    } const rows[] = {
        {"seed 0 starts at 0", 0, 0, {0, 2500001, 94111814, 10450431}},
        {"a seed is a place", 1, 0, {2500001, 94111814, 10450431, 294247708}},
        {"node seed 0", seedOfNode(0), 0, {284395429, 169757786, 403737699, 231282448}},
        {"node seed -1", seedOfNode(-1), 0, {956962064, 205158129, 995043030, 1488591}},
        {"backwards", 3, -3, {0, 2500001, 94111814, 10450431}},
        {"a negative seed", -2, 1, {32996499, 0, 2500001, 94111814}},
        {"the period is 2^30", kLowest, (1 << 30) - 1, {32996499, 0, 2500001, 94111814}},
    };
    using Sequence = CRandomNumberSequence;
    for (auto const& [why, seed, first, values] : rows)
        for (int i = 0; i < 16; ++i) {
            int const from = values[i / 4], to = values[i % 4], steps = i % 4 - i / 4;
            EXPECT_EQ(Sequence(seed)[first + i % 4], to) << why;
            for (int const period : {0, 1 << 30, -1 << 30, kLowest})
                EXPECT_EQ(Sequence::Advance(from, steps ^ period), to) << why << ", " << period;
        }
    EXPECT_EQ(Sequence::Advance(-7, 0), -7) << "no step keeps what is no number";
}

// A number that is not the node's own shows which way was taken.
TEST(RandomGenerator, StepsUpTo15PlacesAndStartsAnewBeyond)
{
    constexpr auto kSolve = NodusRandomGenerator_Float_Solve;
    constexpr int kForeign = 123456789;
    for (int step = -40; step <= 40; ++step) {
        Int32 const frame = 50 + step, anew = numberOfNode(3, frame);
        Int32 const near = CRandomNumberSequence::Advance(kForeign, step);
        EXPECT_EQ(left(kSolve, frame, 3, 0, {3, 50, kForeign}),
                  bits(Workspace{3, frame, std::abs(step) < 16 ? near : anew}))
            << step;
        EXPECT_EQ(left(kSolve, frame, 3, 0, {4, 50, kForeign}), bits(Workspace{3, frame, anew}));
    }
    EXPECT_EQ(left(kSolve, 8, 0, 0, {0, 8, -3}), bits(Workspace{0, 8, -3}))
        << "no step keeps what is no number of a sequence";
}

// The last of the numbers of a frame, of which a normal draw takes more. At the ends of the frames'
// range the indices wrap around.
TEST(RandomGenerator, InitLeavesWhatSolveLeaves)
{
    auto const expectLeft = [](auto* init, auto* solve, std::array<std::int64_t, 3> numbers) {
        for (Int32 const frame : {0, 7, -3, kLowest, kHighest})
            for (Int32 const distribution : {0, 1, 2}) {
                std::int64_t const count = numbers[static_cast<std::size_t>(distribution)];
                auto const last = static_cast<Int32>((frame + 1LL) * count - 1);
                Workspace const expected = {5, last, numberOfNode(5, last)};
                EXPECT_EQ(left(init, frame, 5, distribution, {}), bits(expected)) << last;
                EXPECT_EQ(left(solve, frame, 5, distribution, {}), bits(expected)) << last;
            }
    };
    expectLeft(NodusRandomGenerator_Bool_Init, NodusRandomGenerator_Bool_Solve, {1, 1, 1});
    expectLeft(NodusRandomGenerator_Float_Init, NodusRandomGenerator_Float_Solve, {1, 2, 1});
    expectLeft(NodusRandomGenerator_Float4_Init, NodusRandomGenerator_Float4_Solve, {4, 8, 4});
}
