// Slices of the frames, and what becomes of them when they are joined.
#include "nodus_command.h"

using namespace command;

namespace {

// A result with quotes, commas and line ends in it, and log lines of several lines.
constexpr char kTold[] = R"({"nodes": {
    "frame":  {"type": "Add_Int32", "inputs": {"a": {"frame": true}}},
    "counts": {"type": "LogValueInt32", "inputs": {"value": {"from": "frame"}, "prefix": "at\nlast "}},
    "says":   {"type": "LogValueString", "inputs": {"value": "a \"b\",\nc"}}},
    "outputs": ["frame", "says"]})";

std::vector<std::string> joined(std::vector<std::string> head, std::vector<std::string> const& tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

}  // namespace

TEST(Shards, AnyNumberOfThemMergesToTheBytesOfOneRun)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kTold);
    std::string const table = folder.write("t.csv", "x\n1\n2\n3\n4\n5\n");
    std::vector<std::string> const frameOptions[] = {{"--frames", "-7:30:3"}, {"--data", table}};
    for (auto const& frames : frameOptions)
        for (std::string const format : {"csv", "jsonl"})
            for (int const count : {1, 4, 20}) {
                std::vector<std::string> results, logs;
                // From the last to the first: the order of the arguments says nothing.
                for (int i = count; i >= 1; --i) {
                    std::string const part = std::to_string(i);
                    results.push_back(folder / (part + "." + format));
                    logs.push_back(folder / (part + ".log"));
                    ASSERT_EQ(
                        nodus(joined({"eval", graph, "--shard", part + "/" + std::to_string(count),
                                      "--out", results.back(), "--log", logs.back()},
                                     frames))
                            .error,
                        "");
                }
                nodus(joined({"eval", graph, "--out", folder / ("one." + format), "--log",
                              folder / "one.log"},
                             frames));
                auto const merge = joined({"merge", "--out", folder / ("all." + format)}, frames);
                EXPECT_EQ(nodus(joined(merge, results)).error, "");
                EXPECT_EQ(nodus(joined({"merge", "--out", folder / "all.log"}, logs)).error, "");
                EXPECT_GT(folder.read("one.log").size(), 100u);
                EXPECT_EQ(folder.read("all." + format), folder.read("one." + format)) << count;
                EXPECT_EQ(folder.read("all.log"), folder.read("one.log")) << count;
            }
}

TEST(Shards, TheLastOfVeryManyEndsWithTheLastFrame)
{
    TemporaryFolder const folder;
    Finished const run = nodus({"eval", folder.write("g.json", R"({"nodes": {}})"), "--frames",
                                "-2147483648:2147483647", "--shard", "1000000/1000000"});
    EXPECT_EQ(run.out.substr(0, 17), "frame\n2147479353\n");
    EXPECT_TRUE(run.out.ends_with("\n2147483647\n"));
}

TEST(Shards, AFileThatIsNotWholeIsRefused)
{
    TemporaryFolder const folder;
    std::string const first = folder.write("a.csv", "frame,x\n0,1\n1,1\n");
    std::string const out = folder.write("out.csv", "as it was");
    for (auto const& [text, told] :
         {std::pair("frame,x\n2,1\n3,", ":3: the file breaks off within this line\n"),
          {"", ":1: the file is empty, it wants a header line\n"}}) {
        std::string const part = folder.write("b.csv", text);
        Finished const run = nodus({"merge", part, first, "--frames", "0:3", "--out", out});
        EXPECT_EQ(run.exitStatus, 2);
        EXPECT_EQ(run.error, "nodus: " + part + told);
        EXPECT_EQ(folder.read("out.csv"), "as it was");
    }
}
