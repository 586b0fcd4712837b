// The runtime's functions for C, beside what C++ sees of the same things.
#include "nodus/runtime.h"
#include "nodus/runtime/EvaluationScope.h"
#include "nodus/runtime/KernelTable.h"
#include "nodus/runtime/NodusAutoSymbol.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace nodus::runtime;

TEST(RuntimeForC, AnEvaluationHoldsForItsThreadAndReturnsAfterAScope)
{
    std::string heard;
    NodusLog* const log = [](void* context, char const* text) {
        *static_cast<std::string*>(context) += std::to_string(nodusCurrentFrame()) + text;
    };
    NodusServices* const services = nodusMakeServices(log, &heard);
    nodusSetEvaluation(5, services);
    std::thread([] {
        EXPECT_EQ(nodusCurrentFrame(), 0);
        EXPECT_EQ(GetLocalServiceTable(), nullptr);
    }).join();
    {
        EvaluationScope const scope(6, nullptr);
        EXPECT_EQ(nodusCurrentFrame(), 6);
    }
    GetLocalServiceTable()->log->message(" said");
    EXPECT_EQ(heard, "5 said");
    nodusSetEvaluation(0, nullptr);
    EXPECT_EQ(GetLocalServiceTable(), nullptr);
    nodusReleaseServices(services);
}

TEST(RuntimeForC, KernelsAreFoundAndWalkedInOrderUntilTheVisitorHasEnough)
{
    static char const entries[3] = {};
    NodusAutoSymbol const first("C_first", "(*,*)", &entries[0]),
        second("C_second", "(*)", &entries[1]);
    NodusKernel kernel{"untouched", nullptr, nullptr};
    EXPECT_EQ(nodusFindKernel("C_third", &kernel), 0);
    EXPECT_STREQ(kernel.name, "untouched");
    ASSERT_EQ(nodusFindKernel("C_second", &kernel), 1);
    EXPECT_STREQ(kernel.signature, "(*)");
    EXPECT_EQ(reinterpret_cast<void const*>(kernel.entry), &entries[1]);

    // The visitor may ask the table itself.
    using Names = std::vector<std::string>;
    auto const visit = [](void* context, NodusKernel const* each) {
        NodusKernel same;
        EXPECT_EQ(nodusFindKernel(each->name, &same), 1);
        static_cast<Names*>(context)->push_back(each->name);
        return each->name == std::string("C_first") ? 1 : 0;
    };
    Names names;
    std::size_t const visited = nodusWalkKernels(visit, &names);
    EXPECT_EQ(visited, names.size());
    EXPECT_EQ(names.back(), "C_first");
    NodusAutoSymbol const third("C_third", "(*)", &entries[2]);
    EXPECT_EQ(nodusWalkKernels([](void*, NodusKernel const*) { return 0; }, nullptr),
              registeredKernels().size());
}

TEST(RuntimeForC, TextsAreSharedUntilTheLastReferenceIsReleased)
{
    NodusString one{}, other{};
    std::size_t length = 7;
    EXPECT_STREQ(nodusTextOf(&one, &length), "");
    EXPECT_EQ(length, 0u);
    ASSERT_EQ(nodusMakeString(&one, "a\0b", 3), 1);
    nodusShareString(&other, &one);
    char const* const text = nodusTextOf(&one, &length);
    EXPECT_EQ(std::string(text, length), std::string("a\0b", 3));
    ASSERT_EQ(nodusMakeString(&one, "new", 3), 1);
    EXPECT_EQ(nodusTextOf(&other, nullptr), text);
    // No text is as long as all memory: what was there stays.
    EXPECT_EQ(nodusMakeString(&one, "", SIZE_MAX), 0);
    EXPECT_STREQ(nodusTextOf(&one, nullptr), "new");
    for (NodusString* const each : {&one, &other, &one}) {
        nodusReleaseString(each);
        EXPECT_EQ(each->text, nullptr);
        EXPECT_EQ(each->owners, nullptr);
    }
}
