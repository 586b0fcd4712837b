// What may happen to the command from outside, and what it may be given: nothing crashes, nothing
// half-written is taken for a result, memory is bounded, and each message is one clear line.
#include "nodus_command.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <chrono>
#include <random>
#include <thread>

using namespace command;

namespace {

constexpr char kColumns[] = R"({"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1]}}},
    "outputs": ["v"]})";
constexpr char kFrames[] = R"({"nodes": {
    "v": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": {"frame": true}}}},
    "outputs": ["v"]})";

#ifdef NODUS_TEST_SANITIZED
constexpr int kScale = 20;  // the sanitizers take time, and memory that is not the command's
#else
constexpr int kScale = 1;
#endif
constexpr int kHuge = 10000000;

std::string repeated(std::string const& text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

// Nodes that each take from the one before; the last is the output.
std::string chainOf(int nodes, std::string const& first = "1")
{
    std::string text = R"({"nodes": {"n0": {"type": "Add_Float", "inputs": {"a": )" + first + "}}";
    for (int i = 1; i < nodes; ++i)
        text += ", \"n" + std::to_string(i) +
                R"(": {"type": "Add_Float", "inputs": {"b": 1, "a": )" + R"({"from": "n)" +
                std::to_string(i - 1) + "\"}}}";
    return text + "}, \"outputs\": [\"n" + std::to_string(nodes - 1) + "\"]}";
}

void expectBounded(Finished const& run, long megabytes)
{
    if (kScale == 1) {
        EXPECT_LT(run.peakKilobytes, megabytes * 1024);
    }
}

void expectClearLines(std::string const& error)
{
    EXPECT_TRUE(error.starts_with("nodus: ") && error.ends_with('\n')) << error.substr(0, 300);
    EXPECT_LT(error.size(), 1000u);
    for (char const c : error)
        EXPECT_TRUE(c == '\n' || (c >= ' ' && c < 0x7F)) << static_cast<int>(c);
}

}  // namespace

TEST(Faults, InputsOfEveryKindAreResultsOrOneClearLine)
{
    TemporaryFolder const folder;
    std::string const good = folder.write("good.json", kColumns);
    constexpr int kMany = 100000 / kScale;
    std::string const last = "n" + std::to_string(kMany - 1);
    std::string const input = R"({"nodes": {"v": {"type": "Add_Float", "inputs": {"a": )";
    std::string const inputEnd = R"(}}}, "outputs": ["v"]})";
    // A text is made when it is needed: a child's peak of memory begins with that of its parent.
    struct Row {
        char const* why;
        std::string begin, repeated;  // a table when it begins with x, else a graph
        int count;
        std::string end;
        char const* told;  // in the message; empty for a result
        long megabytes = 64;
    } const rows[] = {
        {"an array of a million", input + "[", "1,", 1000000, "1]" + inputEnd,
         "not an array of 1000001", 512},
        {"deep nesting", "", "[", 100000, "", "nested deeper than 64"},
        {"65 levels", "", "[", 65, "", "nested deeper than 64"},
        {"64 levels", "", "[", 64, "", "g.json:1: column 64"},
        {"a huge number", input, "9", 1000000, inputEnd, "is beyond every type of number"},
        {"digits without end", input + "0.", "3", 1000000, inputEnd, ""},
        {"a huge word", input, "x", kHuge, inputEnd, "g.json:1: column", 128},
        {"a huge text", input + "\"", "x", kHuge, "\"" + inputEnd, "not the text", 128},
        {"a huge name", R"({"nodes": {")", "n", kHuge, R"(": {"type": "Add"}}})",
         "unknown node type", 128},
        {"invalid UTF-8", input + "\"", "\xC3\x28\xFF", 1, "\"" + inputEnd, "ill-formed UTF-8"},

        {"many rows", "x,y\n", "1.5,-2\n", 10 * kMany, "", ""},
        {"a huge field", "x,y\n1,", "9", kHuge, "x\n", "is not a number", 96},
        {"a row without end", "x,y\n1,", "1", 7 * kHuge, "", "the line is too long", 256},
        {"a quote without end", "x,y\n1,\"", "2\n", 1000, "", "does not end"},
        {"many columns", "x,y", ",z", 100000, "\n", "have the same name 'z'", 128},
        {"a header in no UTF-8", "x\xFF,y\n1,2\n", "", 0, "", "no column 'x'"},
        {"a NUL", "x,y\n1,2", std::string(1, '\0'), 1, " \n", "is not a number"},
        {"cut off within a row", "x,y\n1,2\n3", "", 0, "", "t.csv:3: 1 field, the header has 2"},
        {"no end of the last line", "x,y\n1,2\n3,4", "", 0, "", ""},

        {"many nodes", chainOf(kMany), "", 0, "", "", 256},
        {"a circle of many nodes", chainOf(kMany, "{\"from\": \"" + last + "\"}"), "", 0, "",
         "-> 'n7' -> ... (", 256},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.why);
        std::vector<std::string> arguments = {"eval", good, "--out", folder / "out.csv"};
        {
            std::string const text = row.begin + repeated(row.repeated, row.count) + row.end;
            bool const isTable = text.starts_with('x');
            std::string const file = folder.write(isTable ? "t.csv" : "g.json", text);
            if (isTable)
                arguments.insert(arguments.end(), {"--data", file});
            else
                arguments[1] = file;
        }
        Finished const run = nodus(arguments);
        EXPECT_EQ(run.signal, 0);
        bool const isResult = *row.told == '\0';
        EXPECT_EQ(run.exitStatus, isResult ? 0 : 2);
        EXPECT_NE(run.error.find(row.told), std::string::npos) << run.error.substr(0, 1000);
        if (!isResult)
            expectClearLines(run.error.substr(0, run.error.find('\n') + 1));
        // A result is there when the status says so, and then alone.
        EXPECT_EQ(folder.names().contains("out.csv"), isResult);
        std::remove((folder / "out.csv").c_str());
        expectBounded(run, row.megabytes);
    }
}

TEST(Faults, KilledAtAnyMomentItLeavesAWholeFileOrNone)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kFrames);
    std::vector<std::string> const eval = {"eval",     graph,   "--frames",
                                           "0:200000", "--out", folder / "r.csv"};
    auto const start = std::chrono::steady_clock::now();
    ASSERT_EQ(nodus(eval).exitStatus, 0);
    auto const whole = std::chrono::steady_clock::now() - start;
    std::string const result = folder.read("r.csv");
    std::mt19937 random(20261123);
    for (int i = 0; i < 42; ++i) {
        int const signal = i % 3 == 0 ? SIGTERM : i % 3 == 1 ? SIGINT : SIGKILL;
        bool const wasThere = i % 2 == 0;
        std::remove((folder / "r.csv").c_str());
        if (wasThere)
            folder.write("r.csv", "as it was");
        auto const moment = whole * (random() % 1100) / 1000;
        Finished const run = nodus(eval, {.onStart = [&](pid_t child) {
                                       std::this_thread::sleep_for(moment);
                                       ::kill(child, signal);
                                   }});
        SCOPED_TRACE("signal " + std::to_string(signal) + ", try " + std::to_string(i));
        std::string const left = folder.read("r.csv");
        if (run.exitStatus == 0) {
            EXPECT_EQ(left, result);
        } else {
            EXPECT_EQ(run.signal, signal);
            // A kill right behind the moment at which the file appears finds it whole.
            EXPECT_TRUE(left == result || left == (wasThere ? "as it was" : "")) << left.size();
        }
        for (std::string const& name : folder.names())
            if (name.starts_with('.')) {
                // Only a kill in the very moment in which a file takes another's place leaves the
                // new one, whole, under its hidden name.
                EXPECT_TRUE(signal == SIGKILL && wasThere) << name;
                EXPECT_EQ(folder.read(name), result);
                std::remove((folder / name).c_str());
            }
    }
}

TEST(Faults, ATableThatBecomesShorterWhileItIsRead)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kColumns);
    std::string const table = folder.write("t.csv", "x,y\n" + repeated("1.5,-2\n", 1000000));
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    std::thread reader;
    auto const onStart = [&](pid_t) {
        ::close(ends[1]);
        // The first results: it reads, and cannot come to an end before it is read from.
        std::vector<char> buffer(1 << 16);
        EXPECT_EQ(::read(ends[0], buffer.data(), 1), 1);
        EXPECT_EQ(::truncate(table.c_str(), 11), 0);
        reader = std::thread([&ends, buffer]() mutable {
            while (::read(ends[0], buffer.data(), buffer.size()) > 0) {
            }
        });
    };
    Finished const run =
        nodus({"eval", graph, "--data", table}, {.standardOutput = ends[1], .onStart = onStart});
    reader.join();
    ::close(ends[0]);
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.error, "nodus: " + table + ": became shorter while it was read\n");
}

TEST(Faults, AFullDiskLeavesNothing)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kFrames);
    // A disk that only the process below has, and mounted nowhere.
    constexpr int kDescriptor = 9;
    std::string const disk = "/proc/self/fd/9";
    constexpr int kNotAllowed = 77;
    Finished const run = support::runProcess(
        {"/bin/sh", "-c",
         R"(echo old > "$1/r.csv"; "$0" eval "$2" --frames 0:200000 --out "$1/r.csv"; s=$?
            ls -A "$1"; cat "$1/r.csv"; exit $s)",
         NODUS_TEST_COMMAND, disk, graph},
        {.beforeExec = [&] {
            if (::geteuid() != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
                ::_exit(kNotAllowed);
            int const settings = ::fsopen("tmpfs", 0);
            if (::fsconfig(settings, FSCONFIG_SET_STRING, "size", "256k", 0) != 0 ||
                ::fsconfig(settings, FSCONFIG_CMD_CREATE, nullptr, nullptr, 0) != 0 ||
                ::dup2(::fsmount(settings, 0, 0), kDescriptor) != kDescriptor)
                ::_exit(kNotAllowed);
        }});
    if (run.exitStatus == kNotAllowed)
        GTEST_SKIP() << "this machine allows no file system of one's own";
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.error, "nodus: cannot write " + disk + "/r.csv: No space left on device\n");
    EXPECT_EQ(run.out, "r.csv\nold\n");
}
