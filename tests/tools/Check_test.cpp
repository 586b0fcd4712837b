// nodus check: every fault that the broken module has is named, and our module has none.
#include "support/process.h"

#include <nlohmann/json.hpp>

#include <map>

using support::Finished;

namespace {

struct Found {
    Finished run;
    nlohmann::json report;
};

Found check(std::string const& module)
{
    Found found{
        support::runProcess({NODUS_TEST_COMMAND, "check", module, "--seconds", "1", "--json"}), {}};
    found.report = nlohmann::json::parse(found.run.out, nullptr, false);
    return found;
}

}  // namespace

TEST(Check, OurModuleHasNoFault)
{
    Found const found = check(NODUS_TEST_MODULE);
    EXPECT_EQ(found.run.exitStatus, 0) << found.run.out << found.run.error;
    EXPECT_GT(found.report["kernels"], 290);
    EXPECT_EQ(found.report["tried"], found.report["kernels"]);
    EXPECT_GT(found.report["inputs"], 50000);
    EXPECT_EQ(found.report["faults"].size(), 0u);
}

#ifndef NODUS_TEST_SANITIZED
TEST(Check, EveryFaultOfABrokenModuleIsNamed)
{
    struct Row {
        char const *kernel, *check, *text, *input;
    } const rows[] = {
        {"Null", "signal", "SIGSEGV at a null pointer", "nan"},
        {"Beyond", "signal", "SIGSEGV at byte 16 of its input block, which has 16", "value=("},
        {"Before", "signal", "SIGSEGV 4 bytes before its input block", "value=("},
        {"Divides", "signal", "SIGFPE", ", 255, "},
        {"Illegal", "signal", "SIGILL", "inf"},
        {"Aborts", "signal", "SIGABRT", "value=("},
        {"Bus", "signal", "SIGBUS", "value=(-"},
        {"Leaves", "process", "status 3", ", 0.5), frame "},
        {"Hangs", "hang", "does not return", "value=(-2147483648, "},
        {"WritesInput", "input", "writes to its input block", "value=(255, "},
        {"WritesBehind", "output", "behind its output ports", "value=("},
        {"WritesBetween", "output", "between", "frame "},
        {"Forgets", "written", "does not write", "value=(-"},
        {"Counts", "again", "called again", "value=("},
        {"Address", "elsewhere", "another address", "value=("},
        {"ReadsBetween", "padding", "between and behind the input ports", "flag="},
        {"Threads", "threads", "two threads", "value=("},
        {"Text", "texts", "keeps references to texts", ""},
        {"Flushes", "control", "control state", "value=("},
        {"Precision", "control", "control state", "value=("},
        {"Raises", "exceptions", "no value explains", ", 255, "},
        {"Logs", "again", "called again", "value=("},
        {"History", "history", "other frames", "frame "},
        {"Workspace", "output", "output ports", "frame "},
        {"Unregistered", "records", "is exported, but not registered", ""},
        {"Hidden", "records", "is registered, but not exported", ""},
        {"Moved", "records", "not the exported symbol", ""},
        {"Undescribed", "records", "does not describe", ""},
        {"Signature", "records", "is described as (*,*), but registered as (*,*,*)", ""},
        {"Missing", "records", "does not register", ""},
    };
    Found const found = check(NODUS_TEST_BROKEN_MODULE);
    EXPECT_EQ(found.run.exitStatus, 1) << found.run.error;
    std::map<std::string, nlohmann::json> faults;  // by what is told, which names the kernel
    for (auto const& fault : found.report["faults"])
        faults[std::string(fault["check"]) + ": " + std::string(fault["kernel"]) + " " +
               std::string(fault["text"])] = fault;
    for (Row const& row : rows) {
        auto const at = std::ranges::find_if(faults, [&](auto const& fault) {
            return fault.first.starts_with(row.check) &&
                   fault.first.find("NodusBroken" + std::string(row.kernel) + "_") !=
                       std::string::npos &&
                   fault.first.find(row.text) != std::string::npos;
        });
        ASSERT_NE(at, faults.end()) << row.kernel << " in " << found.run.out;
        EXPECT_NE(std::string(at->second["input"]).find(row.input), std::string::npos)
            << row.kernel << ": " << at->second;
        faults.erase(at);
    }
    // Of nobody anything else is told.
    for (auto const& [told, fault] : faults)
        ADD_FAILURE() << told;
}
#endif

TEST(Check, WhatIsNoModuleIsWrongInput)
{
    for (char const* const file : {"/nowhere/libx.so", NODUS_TEST_COMMAND}) {
        Finished const run = check(file).run;
        EXPECT_EQ(run.exitStatus, 2);
        EXPECT_TRUE(run.error.starts_with("nodus: cannot load module ")) << run.error;
        EXPECT_EQ(run.out, "");
    }
}
