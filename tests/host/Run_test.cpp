// Many frames over many threads: the same bytes, the frames in order, and files whole or not at
// all.
#include "results.h"

#include <algorithm>

using namespace fixtures;

namespace {

constexpr char kFrameGraph[] = R"({"nodes": {
    "f": {"type": "Mul_Int32", "inputs": {"a": {"frame": true}, "b": 3}},
    "l": {"type": "LogValueInt32", "inputs": {"value": {"from": "f"}, "prefix": "three times: "}},
    "k": {"type": "LogValueString", "inputs": {"value": "twice"}}},
    "outputs": ["l", "k"]})";

constexpr char kTableGraph[] = R"({"nodes": {
    "v": {"type": "Add_Float3", "inputs": {"a": [{"column": "x"}, {"column": "y"}, 1], "b": [0.1, 0.2, 0.3]}},
    "n": {"type": "Add_Int32", "inputs": {"a": {"column": "n"}, "b": {"frame": true}}}},
    "outputs": ["v.result.x", "v.result.z", "n"]})";

Plan planOfTable()
{
    std::vector<std::string> const columns = {"n", "x", "y"};
    return compile(graphOf(kTableGraph, {"t.csv", &columns}));
}

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
    // An account of its own.
    Results expected{"frame,l.result,k.result\n", "", ""};
    for (int frame = -9000; frame <= 9000; frame += 3) {
        std::string const number = std::to_string(frame), thrice = std::to_string(3 * frame);
        expected.text += number + "," + thrice + ",twice\n";
        expected.log += "frame " + number + ": three times: " + thrice + "\nframe " + number;
        expected.log += ": twice\n";
    }
    std::string const table = bigTable(20000);
    Results const fromTable = resultsOf(planOfTable(), 1, table);
    EXPECT_EQ(fromTable.faults, "");
    EXPECT_EQ(std::count(fromTable.text.begin(), fromTable.text.end(), '\n'), 20001);
    for (std::size_t const threads : {1u, 2u, 7u}) {
        EXPECT_TRUE(resultsOf(compile(graphOf(kFrameGraph)), threads, "", "-9000:9000:3") ==
                    expected)
            << threads;
        EXPECT_TRUE(resultsOf(planOfTable(), threads, table) == fromTable) << threads;
    }
}

TEST(Run, FaultsOfTheTableComeInOrderForEveryThreadCount)
{
    std::string table = bigTable(9000);
    for (int i = 0; i < 30; ++i)
        table += i == 25 ? "1,2\n" : "1,abc,3\n";
    table += bigTable(3000).substr(6);
    for (std::size_t const threads : {1u, 2u, 7u}) {
        std::string const told = resultsOf(planOfTable(), threads, table).faults;
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 21) << told;
        EXPECT_TRUE(told.starts_with("t.csv:9002: column 'x': 'abc' is not a number\n")) << told;
        EXPECT_NE(told.find("t.csv:9021: "), told.npos) << told;
        EXPECT_TRUE(told.ends_with("these are the first 20 faults of the table; there may be "
                                   "more\n"))
            << told;
    }
}
