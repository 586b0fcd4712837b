// The module in a host that is not ours: it loads, registers in order, logs and unloads with
// nothing but the four things that it takes from any host.
#include "nodus/String.h"
#include "nodusmath/listed.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace substitute {
struct Record {
    std::string name, signature;
    void const* entry;
};
std::vector<Record>& records();
std::vector<std::string>& removals();
extern int g_frame;
extern void* g_services;
}  // namespace substitute

namespace {

struct LogObject {
    void const* const* virtualTable;
    std::vector<std::string> messages;
};
void receive(LogObject* log, char const* text) { log->messages.emplace_back(text); }

template <typename... Blocks> void callKernel(char const* name, Blocks*... blocks)
{
    for (substitute::Record const& record : substitute::records())
        if (record.name == name)
            return reinterpret_cast<void (*)(Blocks * ...)>(const_cast<void*>(record.entry))(
                blocks...);
    FAIL() << name << " is not registered";
}

}  // namespace

TEST(SubstituteHost, LoadsCallsLogsAndUnloads)
{
    void* const module = dlopen(NODUSMATH_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();

    std::vector<std::string> names;
    for (substitute::Record const& record : substitute::records())
        names.push_back(record.name);
    EXPECT_EQ(names, nodus::test::kListed);

    alignas(16) float const terms[] = {1.5f, 2.25f};
    alignas(16) float sum = 0;
    callKernel("NodusAdd_Float_Solve", static_cast<void const*>(terms), static_cast<void*>(&sum));
    EXPECT_EQ(sum, 3.75f);

    void const* const virtualTable[] = {nullptr, nullptr, reinterpret_cast<void const*>(&receive)};
    LogObject log{virtualTable, {}};
    void* services[6] = {};
    services[5] = &log;
    substitute::g_services = services;
    struct alignas(16) {
        std::int32_t value = 7;
        nodus::String prefix{std::string("n = ")};
    } const in;
    alignas(16) std::int32_t out = 0;
    callKernel("NodusLogValueInt32_Solve", static_cast<void const*>(&in), static_cast<void*>(&out));
    EXPECT_EQ(out, 7);
    EXPECT_EQ(log.messages, std::vector<std::string>{"n = 7"});

    dlclose(module);
    std::reverse(names.begin(), names.end());
    EXPECT_EQ(substitute::removals(), names) << "records are destroyed in reverse";
}
