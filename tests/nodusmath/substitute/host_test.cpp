// The module in a host that is not ours: it loads, registers in order, logs and unloads with
// nothing but the four things that it takes from any host.
#include "nodus/String.h"
#include "nodusmath/listed.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace substitute {
struct Record {
    std::string name;
    void const* entry;
};
std::vector<Record>& records();
extern void* g_services;
}  // namespace substitute

namespace {

struct LogObject {
    void const* const* virtualTable;
    std::string message;
};
void receive(LogObject* log, char const* text) { log->message += text; }

}  // namespace

TEST(SubstituteHost, LoadsCallsLogsAndUnloads)
{
    void* const module = dlopen(NODUS_TEST_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    auto const& records = substitute::records();
    EXPECT_TRUE(std::ranges::equal(records, nodus::test::kListed, {}, &substitute::Record::name));

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
    auto const entry =
        std::ranges::find(records, "NodusLogValueInt32_Solve", &substitute::Record::name);
    ASSERT_NE(entry, records.end());
    reinterpret_cast<void (*)(void const*, void*)>(const_cast<void*>(entry->entry))(&in, &out);
    EXPECT_EQ(out, 7);
    EXPECT_EQ(log.message, "n = 7");

    dlclose(module);
    EXPECT_TRUE(records.empty()) << "records are destroyed in reverse";
}
