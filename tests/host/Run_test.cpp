// Many frames over many threads: the same bytes, the frames in order, and files whole or not at
// all.
#include "fixtures.h"
#include "support/temporary_folder.h"

#include "nodus/host/run.h"

#include <tbb/global_control.h>

#include <algorithm>

using namespace fixtures;
using support::TemporaryFolder;

namespace {

struct Result {
    std::string text, log, faults;
};

Result runWith(std::string const& graph, std::size_t threads, std::string const& frames,
               std::string const& table = "")
{
    TemporaryFolder const folder;
    Result result;
    // Every run has new threads: the thread sanitizer cannot see how old ones are given work.
    tbb::task_scheduler_handle threadsOfThisRun{tbb::attach{}};
    result.faults = faultsOf([&] {
        RunOptions options;
        std::optional<TableReader> reader;
        GraphSurroundings surroundings;
        if (!table.empty()) {
            surroundings.tablePath = folder.write("t.csv", table);
            reader.emplace(surroundings.tablePath);
            surroundings.columns = &reader->columns();
            options.table = &*reader;
        }
        if (!frames.empty())
            options.frames = parseFrames(frames);
        Plan const plan = compile(graphOf(graph, surroundings));
        auto results = OutputFile::open(folder / "results");
        auto log = OutputFile::open(folder / "log");
        options.threads = threads;
        options.results = &results;
        options.log = &log;
        run(plan, options);
        results.commit();
        log.commit();
    });
    EXPECT_TRUE(tbb::finalize(threadsOfThisRun, std::nothrow));
    if (auto const at = result.faults.find(folder / ""); at != result.faults.npos)
        result.faults.erase(at, (folder / "").size());
    result.text = folder.read("results");
    result.log = folder.read("log");
    if (!result.faults.empty()) {
        EXPECT_LE(folder.names().size(), 1u) << "something was left behind";
    }
    return result;
}

constexpr char kFrameGraph[] = R"({"nodes": {
    "f": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": 3}},
    "l": {"type": "LogValueInt32", "inputs": {"value": {"from": "f"}, "prefix": "three times: "}},
    "k": {"type": "LogValueString", "inputs": {"value": "twice"}}},
    "outputs": ["l", "k"]})";

constexpr char kTableGraph[] = R"({"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1], "b": [0.1, 0.2, 0.3]}},
    "n": {"type": "Add_Int32", "inputs": {"a": {"column": "n"}, "b": {"frame": true}}}},
    "outputs": ["v.result.x", "v.result.z", "n"]})";

std::string bigTable(int rows)
{
    std::string text = "n,x,y\n";
    for (int i = 0; i < rows; ++i)
        text += std::to_string(i) + "," + std::to_string(i * 0.37) + ",-1.5e-3\n";
    return text;
}

}  // namespace

TEST(Run, BytesDoNotDependOnThreads)
{
    Result const one = runWith(kFrameGraph, 1, "-9000:9000:3");
    EXPECT_EQ(one.faults, "");
    // Against an account of its own.
    std::string text = "frame,l.result,k.result\n", log;
    for (int frame = -9000; frame <= 9000; frame += 3) {
        text += std::to_string(frame) + "," + std::to_string(3 * frame) + ",twice\n";
        log +=
            "frame " + std::to_string(frame) + ": three times: " + std::to_string(3 * frame) + "\n";
        log += "frame " + std::to_string(frame) + ": twice\n";
    }
    EXPECT_TRUE(one.text == text);
    EXPECT_TRUE(one.log == log);

    std::string const table = bigTable(20000);
    Result const fromTable = runWith(kTableGraph, 1, "", table);
    EXPECT_EQ(fromTable.faults, "");
    EXPECT_EQ(std::count(fromTable.text.begin(), fromTable.text.end(), '\n'), 20001);
    for (std::size_t const threads : {2u, 7u}) {
        Result const many = runWith(kFrameGraph, threads, "-9000:9000:3");
        EXPECT_TRUE(many.text == one.text && many.log == one.log) << threads;
        EXPECT_TRUE(runWith(kTableGraph, threads, "", table).text == fromTable.text) << threads;
    }
}

TEST(Run, FaultsOfTheTableComeInOrderForEveryThreadCount)
{
    std::string table = bigTable(9000);
    for (int i = 0; i < 30; ++i)
        table += i == 25 ? "1,2\n" : "1,abc,3\n";
    table += bigTable(3000).substr(6);
    for (std::size_t const threads : {1u, 2u, 7u}) {
        std::string const told = runWith(kTableGraph, threads, "", table).faults;
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 21) << told;
        EXPECT_TRUE(told.starts_with("t.csv:9002: column 'x': 'abc' is not a number\n")) << told;
        EXPECT_NE(told.find("t.csv:9021: "), told.npos) << told;
        EXPECT_TRUE(told.ends_with("these are the first 20 faults of the table; there may be "
                                   "more\n"))
            << told;
    }
}
