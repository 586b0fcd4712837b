// The value logging kernels: truncation, strings, and who may be missing. Texts are rows.
#include "support/kernel_call.h"

#include "nodus/runtime/EvaluationScope.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace nodus::test;
using nodus::runtime::EvaluationScope;
using nodus::runtime::LocalServiceTable;
using testing::ElementsAre;

namespace {

class Listener : public nodus::runtime::LogService {
public:
    void message(char const* text) override
    {
        std::lock_guard const lock(m_mutex);
        m_messages.emplace_back(text);
    }
    std::vector<std::string> const& messages() const { return m_messages; }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_messages;
};

// The input block of a logging node.
template <typename T> struct alignas(16) Inputs {
    T value;
    String prefix;
};
static_assert(offsetof(Inputs<String>, prefix) == offsetOfPort<1, String, String>);

// The messages that are sent while out is computed.
template <typename T> std::vector<std::string> log(Kernel* kernel, Inputs<T> const& in, T& out)
{
    Listener listener;
    LocalServiceTable services;
    services.log = &listener;
    EvaluationScope const scope(0, &services);
    kernel(&in, &out);
    return listener.messages();
}

}  // namespace

TEST(LogValue, LongMessagesAreCutAt511Characters)
{
    std::string const longPrefix(600, 'p'), almost(505, 'p');
    alignas(16) Float out;
    EXPECT_THAT(log(NodusLogValueFloat_Solve, {1.0f, String(longPrefix)}, out),
                ElementsAre(longPrefix.substr(0, 511)));
    EXPECT_THAT(log(NodusLogValueFloat_Solve, {1.5f, String(almost)}, out),
                ElementsAre(almost + "1.5000"));
}

TEST(LogValue, NullStringsReadAsEmptyAndStayNull)
{
    alignas(16) String out;
    EXPECT_THAT(log(NodusLogValueString_Solve, {String(), String()}, out), ElementsAre(""));
    void const* word = &word;
    std::memcpy(&word, static_cast<void const*>(&out), sizeof word);
    EXPECT_EQ(word, nullptr);
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
}

TEST(LogValue, ValuesPassWithoutTableOrService)
{
    Inputs<Int32> const in{42, String("nobody listens")};
    LocalServiceTable const silent;
    for (LocalServiceTable const* const services :
         std::initializer_list<LocalServiceTable const*>{nullptr, &silent}) {
        EvaluationScope const scope(0, services);
        alignas(16) Int32 out = 0;
        NodusLogValueInt32_Solve(&in, &out);
        EXPECT_EQ(out, 42);
    }
}

// Threads that start with null strings race for the first use of the shared empty string, and the
// counts of the strings that they share must balance.
TEST(LogValueThreads, SharedStringsStayBalanced)
{
    auto const text = std::make_shared<std::string>("shared");
    Listener listener;
    LocalServiceTable services;
    services.log = &listener;
    constexpr int kThreads = 8, kRounds = 500;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
        threads.emplace_back([&] {
            EvaluationScope const scope(0, &services);
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

    auto const& messages = listener.messages();
    EXPECT_EQ(std::ranges::count(messages, ""), kThreads * kRounds);
    EXPECT_EQ(std::ranges::count(messages, "sharedshared"), kThreads * kRounds);
}
