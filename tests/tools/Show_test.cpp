// Pictures of graphs: what is drawn is what the graph says, and Graphviz takes it without a word.
#include "nodus_command.h"

#include <algorithm>
#include <filesystem>

using namespace command;

namespace {

constexpr char kWild[] = R"({"nodes": {
    "turn": {"type": "EulerToQuaternion", "inputs": {"angles": [0.5, {"pixel": "y"}, 0, 0], "order": {"frame": true}}},
    "pose": {"type": "TransformTQS", "inputs": {
        "a": {"t": [{"column": "a<b"}, 7, 0, 0], "q": {"from": "turn"}},
        "b": {"t": {"from": "back.result.t"}}}},
    "back": {"type": "TransformTQS"},
    "<&\"\\": {"type": "LogValueString", "inputs": {"value": "x<y> \"q\"\n\\N"}}},
    "outputs": ["pose.result.q.w", "pose.result.t", "<&\"\\"]})";

Finished dot(std::string const& file)
{
    return support::runProcess({NODUS_TEST_DOT, "-Tsvg", file});
}

}  // namespace

TEST(Show, DrawsEveryEdgeConstantAndName)
{
    TemporaryFolder const folder;
    std::string const graph = folder.write("g.json", kWild);
    std::string const wrong = folder.write("wrong.json", R"({"outputs": ["a"]})");
    ASSERT_EQ(nodus({"show", graph, "-o", folder / "g.dot"}).error, "");
    EXPECT_EQ(nodus({"show", wrong}).error, nodus({"eval", wrong}).error);
    std::string const text = folder.read("g.dot");
    // Ports are named by offset and type: 2 Int32, 4 Float, 10 Quaternion, 11 Translation, 14 TQS.
    for (char const* const part : {
             "pixel_y:e -> node0:i4_4:w",
             "current_frame:e -> node0:i16_2:w",
             "column0:e -> node1:i0_4:w",
             "node0:o0_10:e -> node1:i16_10:w",
             "node2:o0_11:e -> node1:i48_11:w",
             "node1:o28_4:e -> result0:w",
             ">(0.5, y, 0, 0)<",
             ">t (x, 7, 0, 0)<",
             ">a&lt;b<",
             R"(>&lt;&amp;&quot;\\<)",
             R"(>&quot;x&lt;y&gt; \\&quot;q\\&quot;\\n\\\\N&quot;<)",
             ">identity<",
         })
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    Finished const drawn = dot(folder / "g.dot");
    EXPECT_EQ(drawn.error, "");
    // What a viewer reads: the texts come through, none taken for an escape.
    EXPECT_NE(drawn.out.find(R"(>&quot;x&lt;y&gt; \&quot;q\&quot;\n\\N&quot;<)"), std::string::npos)
        << drawn.out;
}

TEST(Show, TheExamplesInEveryFormat)
{
    TemporaryFolder const folder;
    std::size_t count = 0;
    for (auto const& entry : std::filesystem::directory_iterator(NODUS_TEST_EXAMPLES)) {
        if (entry.path().extension() != ".json")
            continue;
        ++count;
        ASSERT_EQ(nodus({"show", entry.path().string(), "--out", folder / "e.dot"}).error, "");
        EXPECT_EQ(dot(folder / "e.dot").error, "") << entry.path();
    }
    EXPECT_GE(count, 7u);
    std::string const graph = std::string(NODUS_TEST_EXAMPLES) + "/noise.json";
    std::string const svg = nodus({"show", graph}).out;
    EXPECT_TRUE(svg.starts_with("<?xml") && svg.ends_with("</svg>\n")) << svg;
    for (auto const& [name, start] : {std::pair("n.png", "\x89PNG"), {"n.pdf", "%PDF"}}) {
        EXPECT_EQ(nodus({"show", graph, "-o", folder / name}).error, "");
        EXPECT_TRUE(folder.read(name).starts_with(start)) << name;
    }
}

TEST(Show, WhatIsWrongIsOneLineAndLeavesTheFileAlone)
{
    TemporaryFolder const folder;
    std::string const graph = std::string(NODUS_TEST_EXAMPLES) + "/noise.json";
    std::string const clouds = std::string(NODUS_TEST_EXAMPLES) + "/clouds.json";
    std::string const out = folder.write("out.svg", "as it was");
    // A program dot that fails.
    std::filesystem::permissions(folder.write("dot", "#!/bin/sh\necho so sad >&2\nexit 3\n"),
                                 std::filesystem::perms::owner_all);
    int const terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::grantpt(terminal) + ::unlockpt(terminal), 0);
    int const screen = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    auto const withPath = [](std::string const& path) {
        return ProcessOptions{.beforeExec = [path] { ::setenv("PATH", path.c_str(), 1); }};
    };
    struct Row {
        std::vector<std::string> arguments;
        ProcessOptions options;
        char const* told;
    } const rows[] = {
        {{"show", graph, "-o", out}, withPath("/nowhere"), "install the package graphviz"},
        {{"show", graph, "-o", out}, withPath(folder / ""), "could not draw the graph: so sad"},
        {{"show", graph, "-o", folder / "x.jpg"}, {}, ".svg, .png, .pdf or .dot"},
        {{"show", graph}, {.standardOutput = screen}, "a terminal shows no pictures"},
        {{"eval", clouds, "--image", "-"}, {.standardOutput = screen}, "a terminal shows no pict"},
    };
    for (Row const& row : rows) {
        Finished const run = nodus(row.arguments, row.options);
        EXPECT_EQ(run.exitStatus, 2) << row.told;
        EXPECT_EQ(std::ranges::count(run.error, '\n'), 1) << run.error;
        EXPECT_NE(run.error.find(row.told), std::string::npos) << run.error;
        EXPECT_EQ(folder.read("out.svg"), "as it was");
    }
    EXPECT_TRUE(nodus({"eval", clouds, "--image", "-"}).out.starts_with("\x89PNG"));
    // Graphviz's language needs no Graphviz.
    EXPECT_EQ(nodus({"show", graph, "-o", folder / "x.dot"}, withPath("/nowhere")).error, "");
    ::close(screen);
    ::close(terminal);
}
