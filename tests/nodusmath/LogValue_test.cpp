// The value logging kernels: texts, truncation, what is passed on, and who may be missing.
#include "support/kernel_call.h"

#include "kernels.h"

#include "nodus/runtime/EvaluationScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace nodusmath;
using nodus::runtime::EvaluationScope;
using nodus::runtime::LocalServiceTable;
using nodus::test::bits;
using testing::ElementsAre;

namespace {

using Kernel = void(void const*, void*) noexcept;

class Listener : public nodus::runtime::LogService {
public:
    void message(char const* text) override
    {
        std::lock_guard const lock(m_mutex);
        m_messages.emplace_back(text);
    }
    std::vector<std::string> messages() const { return m_messages; }

private:
    std::mutex m_mutex;
    std::vector<std::string> m_messages;
};

// The blocks of a logging node: the value, then the prefix.
template <typename T> struct Node {
    struct alignas(16) Inputs {
        T value;
        String prefix;
    };
    static_assert(offsetof(Inputs, prefix) == offsetOfPort<1, T, String>);

    // The result, and the messages sent while it was computed.
    static std::pair<T, std::vector<std::string>> call(Kernel* kernel, T value, String prefix)
    {
        Listener listener;
        LocalServiceTable services;
        services.log = &listener;
        EvaluationScope const scope(0, &services);
        Inputs const in{std::move(value), std::move(prefix)};
        alignas(16) T out{};
        kernel(&in, &out);
        return {out, listener.messages()};
    }
};

constexpr float kInfinity = std::numeric_limits<float>::infinity();

}  // namespace

TEST(LogValue, TextsOfEachType)
{
    auto const textOf = []<typename T>(Kernel* kernel, T value) {
        auto const [result, messages] = Node<T>::call(kernel, value, String("v = "));
        EXPECT_EQ(bits(result), bits(value));
        return messages.size() == 1 ? messages[0] : "not exactly one message";
    };
    EXPECT_EQ(textOf(NodusLogValueBool_Solve, Bool{0}), "v = false");
    EXPECT_EQ(textOf(NodusLogValueBool_Solve, Bool{2}), "v = true");
    EXPECT_EQ(textOf(NodusLogValueInt32_Solve, Int32{-2147483647 - 1}), "v = -2147483648");
    EXPECT_EQ(textOf(NodusLogValueUInt32_Solve, UInt32{4294967295u}), "v = 4294967295");
    EXPECT_EQ(textOf(NodusLogValueFloat_Solve, Float{2.5f}), "v = 2.500000");
    EXPECT_EQ(textOf(NodusLogValueFloat_Solve, Float{-kInfinity}), "v = -inf");
    EXPECT_EQ(textOf(NodusLogValueFloat_Solve, Float{3.4028235e38f}),
              "v = 340282346638528859811704183484516925440.000000");
    EXPECT_EQ(textOf(NodusLogValueFloat2_Solve, Float2{1, -2}), "v = (1.000000,-2.000000)");
    EXPECT_EQ(textOf(NodusLogValueFloat3_Solve, Float3{1, 2, 3}),
              "v = (1.000000,2.000000,3.000000)");
    EXPECT_EQ(textOf(NodusLogValueFloat4_Solve, Float4{1, 2, 3, -0.0f}),
              "v = (1.000000,2.000000,3.000000,-0.000000)");
    EXPECT_EQ(textOf(NodusLogValueTQS_Solve, TQS{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}}),
              "v = TQS = [ ( 1.000000, 2.000000, 3.000000, 4.000000 ) ( 5.000000, 6.000000, "
              "7.000000, 8.000000 ) ( 9.000000, 10.000000, 11.000000, 12.000000 ) ]");
}

TEST(LogValue, LongMessagesAreCutAt511Characters)
{
    std::string const longPrefix(600, 'p');
    auto const cut = Node<Float>::call(NodusLogValueFloat_Solve, 1.0f, String(longPrefix)).second;
    EXPECT_THAT(cut, ElementsAre(longPrefix.substr(0, 511)));

    std::string const almost(505, 'p');
    auto const partial = Node<Float>::call(NodusLogValueFloat_Solve, 1.5f, String(almost)).second;
    EXPECT_THAT(partial, ElementsAre(almost + "1.5000"));
}

TEST(LogValue, NullStringsReadAsEmptyAndStayNull)
{
    auto const [result, messages] =
        Node<String>::call(NodusLogValueString_Solve, String(), String());
    EXPECT_THAT(messages, ElementsAre(""));
    void const* word = &word;
    std::memcpy(&word, &result, sizeof word);
    EXPECT_EQ(word, nullptr);
}

TEST(LogValue, StringIsPrintedUpToNulAndSharedWhole)
{
    auto const text = std::make_shared<std::string>(std::string("ab\0cd", 5));
    auto const [result, messages] =
        Node<String>::call(NodusLogValueString_Solve, String(text), String("<"));
    EXPECT_THAT(messages, ElementsAre("<ab"));
    EXPECT_EQ(&static_cast<std::string const&>(result), text.get());
    EXPECT_EQ(text.use_count(), 2);
}

TEST(LogValue, StringResultReleasesWhatItSharedBefore)
{
    auto const oldText = std::make_shared<std::string>("old");
    auto const newText = std::make_shared<std::string>("new");
    Node<String>::Inputs const in{String(newText), String()};
    alignas(16) String out(oldText);
    NodusLogValueString_Solve(&in, &out);
    EXPECT_EQ(oldText.use_count(), 1);
    EXPECT_EQ(newText.use_count(), 3);
}

TEST(LogValue, ValuesPassWithoutTableOrService)
{
    Node<Int32>::Inputs const in{42, String("nobody listens")};
    alignas(16) Int32 out = 0;
    NodusLogValueInt32_Solve(&in, &out);
    EXPECT_EQ(out, 42);

    LocalServiceTable const silent;
    EvaluationScope const scope(0, &silent);
    out = 0;
    NodusLogValueInt32_Solve(&in, &out);
    EXPECT_EQ(out, 42);
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
            Node<String>::Inputs const nothing{String(), String()};
            Node<String>::Inputs const shared{String(text), String(text)};
            alignas(16) String out;
            for (int round = 0; round < kRounds; ++round) {
                NodusLogValueString_Solve(&nothing, &out);
                NodusLogValueString_Solve(&shared, &out);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(text.use_count(), 1);

    auto const messages = listener.messages();
    EXPECT_EQ(std::count(messages.begin(), messages.end(), ""), kThreads * kRounds);
    EXPECT_EQ(std::count(messages.begin(), messages.end(), "sharedshared"), kThreads * kRounds);
}
