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
               std::string const& table = "", ResultFormat format = ResultFormat::csv)
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
        options.format = format;
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

TEST(Run, FramesReadTheirRows)
{
    std::string const table = "x,n,y\n1,10,0\n2,20,0\n3,30,0\n4,40,0\n";
    EXPECT_EQ(runWith(kTableGraph, 2, "1:3:2", table).text,
              "frame,v.result.x,v.result.z,n.result\n1,2.1,1.3,21\n3,4.1,1.3,43\n");
    EXPECT_EQ(runWith(kTableGraph, 2, "", "x,n,y\n").text,
              "frame,v.result.x,v.result.z,n.result\n");
    struct Row {
        char const *frames, *expected;
    } const rows[] = {
        {"2:9", "frame 4 is outside t.csv: its rows are 0 to 3\n"},
        {"1:1", ""},
        {"9", "frame 9 is outside t.csv: its rows are 0 to 3\n"},
        {"-1:2", "frame -1 is outside t.csv: its rows count from 0\n"},
    };
    for (Row const& row : rows)
        EXPECT_EQ(runWith(kTableGraph, 2, row.frames, table).faults, row.expected);
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

TEST(Run, FormatsSayWhatAValueIs)
{
    constexpr char kGraph[] = R"({"nodes": {
        "b":  {"type": "LogValueBool", "inputs": {"value": true}},
        "s":  {"type": "LogValueString", "inputs": {"value": "a, \"b\"\n\u0001"}},
        "d":  {"type": "Negate_Double", "inputs": {"value": 0.1}},
        "u":  {"type": "Abs_UInt8", "inputs": {"value": 200}},
        "f":  {"type": "Negate_Float2", "inputs": {"value": ["nan", "inf"]}},
        "g":  {"type": "Abs_Float", "inputs": {"value": 16777216}},
        "q,": {"type": "Abs_Float", "inputs": {"value": 1e-20}},
        "t":  {"type": "LogValueTQS", "inputs": {"value": {"t": [1, 2, 3, 4]}}}},
        "outputs": ["b", "s", "d", "u", "f", "g", "q,", "t"]})";
    EXPECT_EQ(runWith(kGraph, 1, "7").text,
              "frame,b.result,s.result,d.result,u.result,f.result.x,f.result.y,g.result,\"q,."
              "result\",t.result.t.x,t.result.t.y,t.result.t.z,t.result.t.w,t.result.q.x,t.result."
              "q.y,t.result.q.z,t.result.q.w,t.result.s.x,t.result.s.y,t.result.s.z,t.result.s.w\n"
              "7,true,\"a, \"\"b\"\"\n\x01\",-0.1,200,nan,-inf,16777216,1e-20,1,2,3,4,0,0,0,1,1,1,"
              "1,1\n");
    EXPECT_EQ(runWith(kGraph, 1, "7", "", ResultFormat::jsonLines).text,
              R"({"frame":7,"b.result":true,"s.result":"a, \"b\"\n\u0001","d.result":-0.1,)"
              R"("u.result":200,"f.result":["nan","-inf"],"g.result":16777216,"q,.result":1e-20,)"
              R"("t.result":{"t":[1,2,3,4],"q":[0,0,0,1],"s":[1,1,1,1]}})"
              "\n");
}
