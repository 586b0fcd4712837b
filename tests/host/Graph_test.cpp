// Reading graphs: their order, and texts that go deep or on and on. Faults are sessions of the
// command.
#include "fixtures.h"

using namespace fixtures;

namespace {

std::string faults(std::string const& text)
{
    Diagnostics diagnostics;
    parseGraph(text, "g", catalogue(), {}, diagnostics);
    return joined(diagnostics.lines());
}

}  // namespace

TEST(Graph, TextsThatAreNoJson)
{
    EXPECT_EQ(faults(std::string(100000, '[')), "g:1: nested deeper than 64 levels\n");
    std::string const told = faults("{\"nodes\": {\"\xC3(\": 1}}");
    EXPECT_TRUE(told.starts_with("g:1: column 14: ")) << told;
}

TEST(Graph, OrderFollowsTheFileWhereItMay)
{
    Graph const graph = graphOf(R"({"nodes": {
        "last":  {"type": "Add_Float", "inputs": {"a": {"from": "y"}, "b": {"from": "x"}}},
        "x":     {"type": "Abs_Float"},
        "y":     {"type": "Abs_Float", "inputs": {"value": {"from": "z"}}},
        "z":     {"type": "Abs_Float"}}})");
    EXPECT_EQ(graph.order, (std::vector<std::size_t>{1, 3, 2, 0}));
}

// Nothing here may go deep into the stack or take its time squared.
TEST(Graph, OneLongChainIsReadAndOrdered)
{
    constexpr int kNodes = 100000;
    std::string text = R"({"nodes": {)";
    for (int i = kNodes - 1; i >= 0; --i)
        text += "\"n" + std::to_string(i) + R"(": {"type": "Abs_Float", "inputs": {"value": )" +
                (i == 0 ? "1" : R"({"from": "n)" + std::to_string(i - 1) + "\"}") + "}}" +
                (i == 0 ? "}}" : ",");
    Graph const graph = graphOf(text);
    ASSERT_EQ(graph.order.size(), std::size_t{kNodes});
    EXPECT_EQ(graph.nodes[graph.order.front()].name, "n0");
    EXPECT_EQ(graph.nodes[graph.order.back()].name, "n99999");

    // The same chain with its ends tied together: one cycle, told in one short line.
    text.replace(text.rfind(R"("value": 1)"), 10, R"("value": {"from": "n99999"})");
    std::string const told = faults(text);
    EXPECT_TRUE(told.ends_with("... (100000 nodes) -> 'n99999'\n")) << told.substr(0, 200);
}
