// The command as a user meets it: results, messages, exit status, and what it leaves behind.
#include "support/process.h"
#include "support/temporary_folder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

using support::Finished;
using support::ProcessOptions;
using support::TemporaryFolder;
namespace fs = std::filesystem;

namespace {

Finished nodus(std::vector<std::string> arguments, ProcessOptions const& options = {})
{
    arguments.insert(arguments.begin(), NODUS_TEST_COMMAND);
    return support::runProcess(arguments, options);
}

constexpr char kSquare[] = R"({"nodes": {
    "square": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": {"frame": true}}},
    "told":   {"type": "LogValueInt32", "inputs": {"value": {"from": "square"}, "prefix": "= "}}},
    "outputs": ["square"]})";

constexpr char kWide[] = R"({"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1]}}},
    "outputs": ["v"]})";

std::string tableOf(int rows)
{
    std::string text = "x,y\n";
    for (int i = 0; i < rows; ++i)
        text += std::to_string(i) + ".25,-7.125\n";
    return text;
}

bool isOneComplaint(std::string const& text)
{
    return text.starts_with("nodus: ") && text.ends_with("\n") &&
           std::count(text.begin(), text.end(), '\n') == 1;
}

}  // namespace

TEST(Eval, ResultsAndLogOnTheStandardStreams)
{
    TemporaryFolder const folder;
    Finished const run = nodus({"eval", folder.write("g.json", kSquare), "--frames", "-2:2:2"});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.out, "frame,square.result\n-2,4\n0,0\n2,4\n");
    EXPECT_EQ(run.error, "frame -2: = 4\nframe 0: = 0\nframe 2: = 4\n");
}

TEST(Eval, ResultsAndLogInFiles)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kSquare);
    folder.write("r.jsonl", "what was there before");
    Finished const run = nodus({"eval", graph, "--frames", "3", "--out", folder / "r.jsonl",
                                "--log", folder / "r.log", "--threads", "1"});
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(run.out + run.error, "");
    EXPECT_EQ(folder.read("r.jsonl"), "{\"frame\":3,\"square.result\":9}\n");
    EXPECT_EQ(folder.read("r.log"), "frame 3: = 9\n");
    EXPECT_EQ(folder.names(), (std::set<std::string>{"g.json", "r.jsonl", "r.log"}));
}

TEST(Eval, EveryFaultIsOneLineAndLeavesFilesAlone)
{
    TemporaryFolder const folder;
    std::string const good = folder.write("g.json", kSquare);
    std::string const wide = folder.write("w.json", kWide);
    std::string const ragged = folder.write("ragged.csv", "x,y\n1,2\n3\n");
    std::string const table = folder.write("table.csv", tableOf(2));
    std::string const text = folder.write("text.json", "{");
    folder.write("out.csv", "as it was");
    std::string const out = folder / "out.csv";
    auto const before = folder.names();
    struct Row {
        char const* why;
        std::vector<std::string> arguments;
        char const* told;
    } const rows[] = {
        {"no graph", {"eval", folder / "none.json", "--out", out}, "No such file"},
        {"not JSON", {"eval", text, "--out", out}, "line 1, column 2"},
        {"reversed frames", {"eval", good, "--frames", "3:1", "--out", out}, "before the first"},
        {"no table", {"eval", wide, "--data", folder / "none.csv", "--out", out}, "No such file"},
        {"ragged", {"eval", wide, "--data", ragged, "--out", out}, "ragged.csv:3: 1 field,"},
        {"beyond the table",
         {"eval", wide, "--data", table, "--frames", "0:7", "--out", out},
         "frame 2 is outside"},
        {"extension", {"eval", good, "--out", folder / "out.txt"}, ".csv or .jsonl"},
        {"folder", {"eval", good, "--out", folder / "none/out.csv"}, "No such file or directory"},
        {"one file for two", {"eval", good, "--out", out, "--log", out}, "want two files"},
        {"log", {"eval", good, "--out", out, "--log", folder / "none/log"}, "cannot write"},
        {"full", {"eval", good, "--log", "/dev/full", "--out", out}, "No space left on device"},
        {"threads", {"eval", good, "--threads", "0", "--out", out}, "--threads"},
        {"module", {"eval", good, "--module", text, "--out", out}, "cannot load module"},
        {"no module", {"--module", folder / "libx.so", "list"}, "No such file or directory"},
        {"command", {"evel", good}, "nodus --help"},
        {"nothing", {}, "nodus --help"},
        {"type", {"describe", "Add_Flaot"}, "did you mean 'Add_Float'?"},
        {"port", {"call", "Add_Float", "c=1"}, "has no input 'c'; it has a or b"},
        {"value", {"call", "Add_Float", "a=x"}, "input 'a': wants Float (a number)"},
        {"list", {"list", "no such thing"}, "no node type matches 'no such thing'"},
    };
    for (Row const& row : rows) {
        Finished const run = nodus(row.arguments);
        EXPECT_EQ(run.exitStatus, 2) << row.why;
        EXPECT_EQ(run.out, "") << row.why;
        EXPECT_TRUE(isOneComplaint(run.error)) << row.why << ": " << run.error;
        EXPECT_NE(run.error.find(row.told), std::string::npos) << row.why << ": " << run.error;
        EXPECT_EQ(folder.names(), before) << row.why;
        EXPECT_EQ(folder.read("out.csv"), "as it was") << row.why;
    }
}

TEST(Eval, FaultsOfGraphTableAndOptionsComeTogether)
{
    TemporaryFolder const folder;
    Finished const run =
        nodus({"eval", folder.write("g.json", R"({"nodes": {"a": {"type": "Nope"}}, "x": 1})"),
               "--data", folder.write("t.csv", "x,x\n"), "--frames", "a", "--out", "x.png"});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(std::count(run.error.begin(), run.error.end(), '\n'), 5) << run.error;
}

TEST(Eval, ASinkThatTakesNoMoreIsOneLine)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kWide);
    std::string const table = folder.write("t.csv", tableOf(60000));
    std::vector<std::string> const eval = {"eval", graph, "--data", table};

    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    ::close(ends[0]);
    Finished const broken = nodus(eval, {.standardOutput = ends[1]});
    ::close(ends[1]);
    EXPECT_EQ(broken.exitStatus, 2);
    EXPECT_EQ(broken.error, "nodus: cannot write standard output: Broken pipe\n");

    int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    Finished const noSpace = nodus(eval, {.standardOutput = full});
    ::close(full);
    EXPECT_EQ(noSpace.exitStatus, 2);
    EXPECT_EQ(noSpace.error, "nodus: cannot write standard output: No space left on device\n");

    Finished const closed = nodus(eval, {.beforeExec = [] { ::close(STDOUT_FILENO); }});
    EXPECT_EQ(closed.exitStatus, 2);
    EXPECT_EQ(closed.error, "nodus: cannot write standard output: Bad file descriptor\n");

    auto const before = folder.names();
    auto toFile = eval;
    toFile.insert(toFile.end(), {"--out", folder / "r.csv"});
    Finished const limited = nodus(toFile, {.beforeExec = [] {
                                       rlimit const limit{100000, 100000};
                                       ::setrlimit(RLIMIT_FSIZE, &limit);
                                   }});
    EXPECT_EQ(limited.exitStatus, 2);
    EXPECT_EQ(limited.error, "nodus: cannot write " + (folder / "r.csv") + ": File too large\n");
    EXPECT_EQ(folder.names(), before);
}

TEST(Eval, AnInterruptLeavesNothing)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kSquare);
    folder.write("r.csv", "as it was");
    auto const before = folder.names();
    for (int const signal : {SIGINT, SIGTERM, SIGKILL}) {
        // The first log line tells that it is in the midst of its work.
        Finished const run =
            nodus({"eval", graph, "--frames", "0:2000000000", "--out", folder / "r.csv"},
                  {.onError = [&](pid_t child) { ::kill(child, signal); }});
        EXPECT_EQ(run.signal, signal);
        EXPECT_EQ(folder.names(), before) << signal;
        EXPECT_EQ(folder.read("r.csv"), "as it was") << signal;
    }
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

TEST(Eval, MemoryDoesNotGrowWithTheTable)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer keeps memory of its own";
#endif
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kWide);
    long peaks[2];
    for (int const large : {0, 1}) {
        std::string const table = folder.write("t.csv", tableOf(large == 1 ? 1000000 : 50000));
        Finished const run = nodus({"eval", graph, "--data", table, "--out", folder / "r.csv"});
        ASSERT_EQ(run.exitStatus, 0) << run.error;
        peaks[large] = run.peakKilobytes;
    }
    EXPECT_GT(fs::file_size(folder / "r.csv"), 20000000u);
    EXPECT_LT(peaks[1], peaks[0] + 8 * 1024);
    EXPECT_LT(peaks[1], 100 * 1024);
}

TEST(Eval, TheExamplesRun)
{
    fs::path const examples = NODUS_TEST_EXAMPLES;
    Finished const flipbook =
        nodus({"eval", (examples / "flipbook.json").string(), "--frames", "0:60:15"});
    EXPECT_EQ(flipbook.error, "");
    EXPECT_EQ(flipbook.out, "frame,cell.result,column.result,row.result\n"
                            "0,0,0,0\n15,7,3,1\n30,15,3,3\n45,8,0,2\n60,0,0,0\n");
    Finished const drive = nodus({"eval", (examples / "drive.json").string(), "--data",
                                  (examples / "drive.csv").string(), "--frames", "0"});
    EXPECT_EQ(drive.error, "frame 0: wheel turned to 0.000000\n");
    EXPECT_EQ(drive.out.substr(drive.out.find('\n')), "\n0,0,1.5500001,-4,0,0,0,0,0.8,0,1.3\n");
}

TEST(List, NamesFamiliesByGroup)
{
    Finished const all = nodus({"list"});
    EXPECT_EQ(all.exitStatus, 0);
    EXPECT_NE(all.out.find("arithmetic\n  Abs "), std::string::npos) << all.out;
    Finished const some = nodus({"list", "LOGVALUET"});
    EXPECT_EQ(some.out.find("  Add "), std::string::npos) << some.out;
    EXPECT_NE(some.out.find("  LogValue "), std::string::npos) << some.out;
}

TEST(Describe, TellsPortsOfATypeAKernelAndAFamily)
{
    Finished const type = nodus({"describe", "MultiplyByScalar_Float3"});
    EXPECT_NE(type.out.find("inputs\n"
                            "  value          Float3, default 0\n"
                            "  scalar         Float, default 0\n"
                            "outputs\n"
                            "  result         Float3\n"),
              std::string::npos)
        << type.out;
    EXPECT_EQ(nodus({"describe", "NodusMultiplyByScalar_Float3_Solve"}).out, type.out);
    Finished const family = nodus({"describe", "MultiplyByScalar"});
    EXPECT_NE(family.out.find("  value          T, default 0\n"
                              "  scalar         Float, default 0\n"),
              std::string::npos)
        << family.out;
    EXPECT_NE(nodus({"describe", "Abs"}).out.find("T, default 0, identity for Matrix4x4\n"),
              std::string::npos);
}

TEST(Call, ShowsOutputsAndMessages)
{
    struct Row {
        std::vector<std::string> arguments;
        char const *out, *error;
    } const rows[] = {
        {{"Add_Float3", "a=1,2,3", "b=[10, 20, 30.5]"}, "result = (11, 22, 33.5)\n", ""},
        {{"NodusDiv_Int32_Solve", "a=-7", "b=2"}, "result = -3\n", ""},
        {{"Mod_UInt8", "a=7"}, "result = 0\n", ""},
        {{"Negate_Quaternion"}, "result = (-0, -0, -0, -1)\n", ""},
        {{"LogValueBool", "value=true", "prefix=is it? ", "--frame", "-3"},
         "result = true\n",
         "frame -3: is it? true\n"},
        {{"LogValueString", "value=a=b"}, "result = a=b\n", "frame 0: a=b\n"},
    };
    for (Row row : rows) {
        row.arguments.insert(row.arguments.begin(), "call");
        Finished const run = nodus(row.arguments);
        EXPECT_EQ(run.exitStatus, 0) << run.error;
        EXPECT_EQ(run.out, row.out);
        EXPECT_EQ(run.error, row.error);
    }
}

TEST(Modules, TwoWithTheSameKernelsAreRefused)
{
    TemporaryFolder const folder;
    fs::copy(NODUS_TEST_MODULE, folder / "libnodusmath.so");
    Finished const run =
        nodus({"list", "--module", NODUS_TEST_MODULE, "--module", folder / "libnodusmath.so"});
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_NE(run.error.find("nodus: modules " NODUS_TEST_MODULE " and " +
                             (folder / "libnodusmath.so") + " both have "),
              std::string::npos)
        << run.error.substr(0, 300);
    // A module without its catalogue, and a catalogue that says something else.
    EXPECT_TRUE(isOneComplaint(nodus({"list", "--module", folder / "libnodusmath.so"}).error));
}

TEST(Help, EveryCommandHasHelpWithAnExample)
{
    EXPECT_EQ(nodus({"--version"}).out.substr(0, 6), "nodus ");
    for (std::vector<std::string> arguments :
         {std::vector<std::string>{}, {"eval"}, {"list"}, {"describe"}, {"call"}}) {
        arguments.push_back("--help");
        Finished const help = nodus(arguments);
        EXPECT_EQ(help.exitStatus, 0);
        EXPECT_NE(help.out.find("Example"), std::string::npos) << help.out;
    }
}
