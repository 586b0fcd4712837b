// What the command does to files, pipes and memory. What it answers is in sessions/.
#include "nodus_command.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

using namespace command;
namespace fs = std::filesystem;

namespace {

constexpr char kSquare[] = R"({"nodes": {
    "square": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": {"frame": true}}},
    "told":   {"type": "LogValueInt32", "inputs": {"value": {"from": "square"}, "prefix": "= "}}},
    "outputs": ["square"]})";

}  // namespace

TEST(Eval, ASinkThatTakesNoMoreIsOneLine)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kSquare);
    std::vector<std::string> eval = {"eval", graph, "--frames", "0:60000", "--log", "/dev/null"};

    auto const expectRefused = [&](std::string const& sink, std::string const& reason,
                                   ProcessOptions const& options) {
        Finished const run = nodus(eval, options);
        EXPECT_EQ(run.exitStatus, 2);
        EXPECT_EQ(run.error, "nodus: cannot write " + sink + ": " + reason + "\n");
    };

    int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    expectRefused("standard output", "No space left on device", {.standardOutput = full});
    expectRefused("standard output", "Bad file descriptor",
                  {.beforeExec = [] { ::close(STDOUT_FILENO); }});
    ::close(full);

    auto const before = folder.names();
    eval.insert(eval.end(), {"--out", folder / "r.csv"});
    expectRefused(folder / "r.csv", "File too large", {.beforeExec = [] {
                      rlimit const limit{100000, 100000};
                      ::setrlimit(RLIMIT_FSIZE, &limit);
                  }});
    EXPECT_EQ(folder.names(), before);
}

TEST(Command, AReaderThatHasEnoughIsNoFault)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kSquare);
    auto const before = folder.names();
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    ::close(ends[0]);
    ProcessOptions const closedOut{.standardOutput = ends[1]};
    ProcessOptions const closedError{.beforeExec = [&] { ::dup2(ends[1], STDERR_FILENO); }};
    // Frames without end: nobody may wait for them.
    std::vector<std::string> eval = {"eval", graph, "--frames", "0:2000000000"};
    std::vector<std::vector<std::string>> const commands = {
        {"eval", graph, "--frames", "0:2000000000", "--log", folder / "r.log"},
        {"list"},
        {"describe", "Add"},
        {"call", "Add_Float"},
        {"digest"},
        {"manual", "man"},
        {"show", "--help"},
        {"--version"}};
    for (auto const& command : commands) {
        Finished const run = nodus(command, closedOut);
        EXPECT_EQ(run.signal, SIGPIPE) << command.front();
        EXPECT_EQ(run.error, "") << command.front();
    }
    EXPECT_EQ(nodus(eval, closedError).signal, SIGPIPE);
    EXPECT_EQ(folder.names(), before);

    // A file of results, and the one result of a call, do not depend on who reads messages.
    eval.back() = "0:99999";
    eval.insert(eval.end(), {"--out", folder / "r.csv"});
    EXPECT_EQ(nodus(eval, closedError).exitStatus, 0);
    EXPECT_TRUE(folder.read("r.csv").ends_with("\n99999,1409865409\n"));
    EXPECT_EQ(nodus({"call", "LogValueInt32", "value=7"}, closedError).out, "result = 7\n");
    ::close(ends[1]);
}

TEST(Eval, ALinkStaysALinkAndAModeStaysAMode)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kSquare);
    folder.write("real.csv", "old");
    fs::permissions(folder / "real.csv", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real.csv", folder / "link.csv");
    EXPECT_EQ(nodus({"eval", graph, "--out", folder / "link.csv"}).exitStatus, 0);
    EXPECT_TRUE(fs::is_symlink(folder / "link.csv"));
    EXPECT_EQ(folder.read("real.csv"), "frame,square.result\n0,0\n");
    EXPECT_EQ(fs::status(folder / "real.csv").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    // A device is written, not replaced.
    EXPECT_EQ(nodus({"eval", graph, "--log", "/dev/null"}).exitStatus, 0);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}
