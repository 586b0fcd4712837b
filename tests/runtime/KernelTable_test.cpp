// Registration and look-up: order, duplicates, removal, and look-ups while records come and go.
#include "nodus/runtime/KernelTable.h"
#include "nodus/runtime/NodusAutoSymbol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace nodus::runtime;
using testing::ElementsAre;

namespace {

std::vector<std::string> names()
{
    std::vector<std::string> result;
    for (RegisteredKernel const& kernel : registeredKernels())
        result.emplace_back(kernel.name);
    return result;
}

void const* const kEntry = reinterpret_cast<void const*>(&names);

}  // namespace

TEST(KernelTable, KeepsTheOrderOfRegistrationWhateverIsRemoved)
{
    auto first = std::make_unique<NodusAutoSymbol>("first", "(*,*)", kEntry);
    auto second = std::make_unique<NodusAutoSymbol>("second", "(*,*,*)", kEntry);
    auto third = std::make_unique<NodusAutoSymbol>("third", "(*,*)", kEntry);
    EXPECT_THAT(names(), ElementsAre("first", "second", "third"));

    auto const found = findKernel("second");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->signature, "(*,*,*)");
    EXPECT_EQ(found->entry, kEntry);
    EXPECT_FALSE(findKernel("secon").has_value());
    EXPECT_FALSE(findKernel("").has_value());

    second.reset();
    EXPECT_THAT(names(), ElementsAre("first", "third"));
    first.reset();
    NodusAutoSymbol const fourth("fourth", "(*,*)", kEntry);
    EXPECT_THAT(names(), ElementsAre("third", "fourth"));
    third.reset();
    EXPECT_THAT(names(), ElementsAre("fourth"));
}

TEST(KernelTable, ADuplicateIsReportedWithBothFilesAndTheFirstStaysInUse)
{
    NodusAutoSymbol const first("same", "(*,*)", kEntry);
    NodusAutoSymbol const other("other", "(*,*)", kEntry);
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
    NodusAutoSymbol const lasting("lasting", "(*,*)", kEntry);
    std::atomic<bool> stop = false;
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 4; ++reader)
        readers.emplace_back([&stop] {
            while (!stop) {
                ASSERT_TRUE(findKernel("lasting").has_value());
                ASSERT_FALSE(findKernel("never").has_value());
                ASSERT_GE(registeredKernels().size(), 1u);
            }
        });
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 2; ++writer)
        writers.emplace_back([] {
            for (int round = 0; round < 2000; ++round) {
                NodusAutoSymbol const brief("brief", "(*,*)", kEntry);
                ASSERT_TRUE(findKernel("brief").has_value());
            }
        });
    for (std::thread& writer : writers)
        writer.join();
    stop = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_THAT(names(), ElementsAre("lasting"));
}
