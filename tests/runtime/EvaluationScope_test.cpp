// The current frame and the services belong to the innermost evaluation of the calling thread.
#include "nodus/runtime/CurrentFrame.h"
#include "nodus/runtime/EvaluationScope.h"

#include <gtest/gtest.h>

#include <barrier>
#include <thread>

using namespace nodus::runtime;

namespace {

void expectSeen(std::int32_t frame, LocalServiceTable const* services)
{
    EXPECT_EQ(GetCurrentFrame(), frame);
    EXPECT_EQ(GetLocalServiceTable(), services);
}

}  // namespace

TEST(EvaluationScope, NestsAndEndsWithItsBlock)
{
    LocalServiceTable outerTable, innerTable;
    expectSeen(0, nullptr);
    {
        EvaluationScope outer(12, &outerTable);
        {
            EvaluationScope inner(-7, &innerTable);
            inner.setFrame(-6);
            expectSeen(-6, &innerTable);
            EvaluationScope silent(3, nullptr);
            expectSeen(3, nullptr);
        }
        expectSeen(12, &outerTable);
    }
    expectSeen(0, nullptr);
}

TEST(EvaluationScope, ThreadsDoNotSeeEachOther)
{
    EvaluationScope mine(1, nullptr);
    std::barrier line(2);
    std::jthread const other([&line] {
        expectSeen(0, nullptr);
        LocalServiceTable table;
        EvaluationScope const scope(2, &table);
        line.arrive_and_wait();
        expectSeen(2, &table);
        line.arrive_and_wait();
    });
    line.arrive_and_wait();
    expectSeen(1, nullptr);
    line.arrive_and_wait();
}
