// The current frame and the services belong to the innermost evaluation of the calling thread.
#include "nodus/runtime/CurrentFrame.h"
#include "nodus/runtime/EvaluationScope.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

using namespace nodus::runtime;

TEST(EvaluationScope, NestsAndEndsWithItsBlock)
{
    LocalServiceTable outerTable, innerTable;
    EXPECT_EQ(GetCurrentFrame(), 0);
    EXPECT_EQ(GetLocalServiceTable(), nullptr);
    {
        EvaluationScope outer(12, &outerTable);
        {
            EvaluationScope inner(-7, &innerTable);
            inner.setFrame(-6);
            EXPECT_EQ(GetCurrentFrame(), -6);
            EXPECT_EQ(GetLocalServiceTable(), &innerTable);
            EvaluationScope silent(3, nullptr);
            EXPECT_EQ(GetLocalServiceTable(), nullptr);
        }
        EXPECT_EQ(GetCurrentFrame(), 12);
        EXPECT_EQ(GetLocalServiceTable(), &outerTable);
    }
    EXPECT_EQ(GetCurrentFrame(), 0);
    EXPECT_EQ(GetLocalServiceTable(), nullptr);
}

TEST(EvaluationScope, ThreadsDoNotSeeEachOther)
{
    EvaluationScope mine(1, nullptr);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([thread] {
            EXPECT_EQ(GetCurrentFrame(), 0);
            LocalServiceTable table;
            EvaluationScope scope(0, &table);
            for (int frame = 0; frame < 10000; ++frame) {
                scope.setFrame(frame * 8 + thread);
                ASSERT_EQ(GetCurrentFrame(), frame * 8 + thread);
                ASSERT_EQ(GetLocalServiceTable(), &table);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(GetCurrentFrame(), 1);
}

// Modules call the message operation by its place: third in the virtual table of the object that
// the sixth field of the service table points to.
TEST(EvaluationScope, LogServiceLiesWhereModulesLookForIt)
{
    struct Listener : LogService {
        std::string heard;
        void message(char const* text) override { heard = text; }
    } listener;
    LocalServiceTable table;
    table.log = &listener;

    void* object = nullptr;
    std::memcpy(&object, reinterpret_cast<char const*>(&table) + 40, sizeof object);
    using Message = void (*)(void*, char const*);
    Message const* virtualTable = nullptr;
    std::memcpy(&virtualTable, object, sizeof virtualTable);
    virtualTable[2](object, "third entry");
    EXPECT_EQ(listener.heard, "third entry");
}
