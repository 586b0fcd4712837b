// Registration and look-up: order, duplicates, removal, and look-ups while records come and go.
#include "nodus/runtime/KernelTable.h"
#include "nodus/runtime/NodusAutoSymbol.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <thread>

using namespace nodus::runtime;
using testing::ElementsAre;

namespace {

std::vector<std::string_view> names()
{
    std::vector<std::string_view> result;
    for (RegisteredKernel const& kernel : registeredKernels())
        result.push_back(kernel.name);
    return result;
}

void const* const kEntry = reinterpret_cast<void const*>(&names);

auto record(char const* name) { return std::make_unique<NodusAutoSymbol>(name, "(*,*)", kEntry); }

}  // namespace

TEST(KernelTable, KeepsTheOrderOfRegistrationWhateverIsRemoved)
{
    auto first = record("first"), second = record("second"), third = record("third");
    EXPECT_THAT(names(), ElementsAre("first", "second", "third"));
    auto const found = findKernel("second");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->signature, "(*,*)");
    EXPECT_EQ(found->entry, kEntry);
    EXPECT_FALSE(findKernel("secon").has_value());

    second.reset();
    EXPECT_THAT(names(), ElementsAre("first", "third"));
    first.reset();
    auto const fourth = record("fourth");
    EXPECT_THAT(names(), ElementsAre("third", "fourth"));
    third.reset();
    EXPECT_THAT(names(), ElementsAre("fourth"));
}

TEST(KernelTable, ADuplicateIsReportedWithBothFilesAndTheFirstStaysInUse)
{
    auto const first = record("same"), other = record("other");
    {
        NodusAutoSymbol const again("same", "(*,*)", reinterpret_cast<void const*>(&findKernel));
        EXPECT_EQ(findKernel("same")->entry, kEntry);
        auto const duplicates = duplicateKernels();
        ASSERT_EQ(duplicates.size(), 1u);
        EXPECT_EQ(duplicates[0].name, "same");
        EXPECT_THAT(duplicates[0].firstFile, testing::HasSubstr("runtime_test"));
        EXPECT_THAT(duplicates[0].secondFile, testing::HasSubstr("libcompute_runtime.so"));
    }
    EXPECT_TRUE(duplicateKernels().empty());
}

TEST(KernelTable, LookUpsAreSafeWhileRecordsComeAndGo)
{
    auto const lasting = record("lasting");
    {
        std::vector<std::jthread> threads;
        threads.reserve(6);
        for (int thread = 0; thread < 6; ++thread)
            threads.emplace_back([isWriting = thread < 2] {
                for (int round = 0; round < 2000; ++round) {
                    std::optional<NodusAutoSymbol> brief;
                    if (isWriting)
                        brief.emplace("brief", "(*,*)", kEntry);
                    ASSERT_TRUE(findKernel(isWriting ? "brief" : "lasting").has_value());
                    ASSERT_GE(registeredKernels().size(), 1u);
                }
            });
    }
    EXPECT_THAT(names(), ElementsAre("lasting"));
}
