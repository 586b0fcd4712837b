// The value logging kernels: truncation, strings, and who may be missing. Texts are rows.
#include "support/kernel_call.h"

#include "nodus/runtime/EvaluationScope.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

using namespace nodus::test;
using nodus::runtime::EvaluationScope;
using nodus::runtime::LocalServiceTable;
using testing::ElementsAre;

namespace {

// The input block of a logging node.
template <typename T> struct alignas(16) Inputs {
    T value;
    String prefix;
};

struct Listener : nodus::runtime::LogService {
    std::mutex mutex;
    std::vector<std::string> messages;
    LocalServiceTable services{{}, this};

    void message(char const* text) override
    {
        std::lock_guard const lock(mutex);
        messages.emplace_back(text);
    }
};

// The messages that are sent while out is computed.
template <typename T> std::vector<std::string> log(Kernel* kernel, Inputs<T> const& in, T& out)
{
    Listener listener;
    EvaluationScope const scope(0, &listener.services);
    kernel(&in, &out);
    return listener.messages;
}

}  // namespace

TEST(LogValue, LongMessagesAreCutAt511Characters)
{
    alignas(16) Float out;
    for (std::size_t const length : {505u, 600u}) {
        std::string const prefix(length, 'p');
        EXPECT_THAT(log(NodusLogValueFloat_Solve, {1.5f, String(prefix)}, out),
                    ElementsAre((prefix + "1.500000").substr(0, 511)));
    }
}

TEST(LogValue, StringIsPrintedUpToNulSharedWholeAndReleasesWhatWasThere)
{
    auto const oldText = std::make_shared<std::string>("old");
    auto const text = std::make_shared<std::string>(std::string("ab\0cd", 5));
    alignas(16) String out(oldText);
    EXPECT_THAT(log(NodusLogValueString_Solve, {String(text), String("<")}, out),
                ElementsAre("<ab"));
    EXPECT_EQ(&static_cast<std::string const&>(out), text.get());
    EXPECT_EQ(text.use_count(), 2);
    EXPECT_EQ(oldText.use_count(), 1);
    // A null one reads as the one empty string.
    EXPECT_THAT(log(NodusLogValueString_Solve, {String(), String()}, out), ElementsAre(""));
    EXPECT_EQ(&static_cast<std::string const&>(out), &static_cast<std::string const&>(String()));
}

TEST(LogValue, ValuesPassWithoutTableOrService)
{
    LocalServiceTable const silent;
    Inputs<Int32> const in{42, String("nobody listens")};
    Inputs<String> const text{String("passes"), String("nobody listens")};
    for (auto const* const services : {static_cast<LocalServiceTable const*>(nullptr), &silent}) {
        EvaluationScope const scope(0, services);
        alignas(16) Int32 out = 0;
        NodusLogValueInt32_Solve(&in, &out);
        EXPECT_EQ(out, 42);
        alignas(16) String shared;
        NodusLogValueString_Solve(&text, &shared);
        EXPECT_EQ(static_cast<std::string const&>(shared), "passes");
    }
}

// Threads that start with null strings race for the first use of the shared empty string, and the
// counts of the strings that they share must balance.
TEST(LogValueThreads, SharedStringsStayBalanced)
{
    auto const text = std::make_shared<std::string>("shared");
    Listener listener;
    constexpr int kThreads = 8, kRounds = 500;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&] {
            EvaluationScope const scope(0, &listener.services);
            Inputs<String> const nothing{String(), String()}, shared{String(text), String(text)};
            alignas(16) String out;
            for (int round = 0; round < kRounds; ++round) {
                NodusLogValueString_Solve(&nothing, &out);
                NodusLogValueString_Solve(&shared, &out);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(text.use_count(), 1);
    EXPECT_EQ(std::ranges::count(listener.messages, ""), kThreads * kRounds);
    EXPECT_EQ(std::ranges::count(listener.messages, "sharedshared"), kThreads * kRounds);
}
