// Reading graphs: every fault has its line, and a file's faults come together.
#include "fixtures.h"

#include <algorithm>

using namespace fixtures;

namespace {

std::string faults(std::string const& text, GraphSurroundings const& surroundings = {})
{
    Diagnostics diagnostics;
    parseGraph(text, "g", catalogue(), surroundings, diagnostics);
    return joined(diagnostics.lines());
}

// A graph of one node 'n' of the type with these inputs.
std::string node(std::string const& type, std::string const& inputs)
{
    return R"({"nodes": {"n": {"type": ")" + type + R"(", "inputs": {)" + inputs + "}}}}";
}

std::string const kColumns[] = {"time", "speed"};

}  // namespace

TEST(Graph, EachFaultIsOneLine)
{
    std::string const source =
        R"(a source is {"from": "node.port"}, {"frame": true} or {"column": "name"})";
    struct Row {
        std::string graph, expected;
    } const rows[] = {
        // The file.
        {"[1]", "g: a graph is an object with 'nodes' and 'outputs', not an array of 1"},
        {"{}", "g: has no 'nodes'"},
        {R"({"nodes": {}, "output": []})", "g: unknown key 'output'; did you mean 'outputs'?"},
        {R"({"nodes": 3})", "g: 'nodes' wants an object with a node for each name, not 3"},
        {R"({"nodes": {}, "outputs": "a"})",
         "g: 'outputs' wants an array of names, not the text 'a'"},
        {R"({"nodes": {"a": {"type": "Abs_Float"}, "a": {"type": "Abs_Float"}}})",
         "g: 'nodes' has two members named 'a'"},
        // Nodes.
        {R"({"nodes": {"a.b": {"type": "Abs_Float"}}})",
         "g: node 'a.b': a node's name is not empty and has no dots"},
        {R"({"nodes": {"": {"type": "Abs_Float"}}})",
         "g: node '': a node's name is not empty and has no dots"},
        {R"({"nodes": {"a": 1}})", "g: node 'a': wants an object with 'type' and 'inputs', not 1"},
        {R"({"nodes": {"a": {}}})", "g: node 'a': wants a 'type', the name of a node type"},
        {node("Add_Flaot3", ""),
         "g: node 'n': unknown node type 'Add_Flaot3'; did you mean 'Add_Float3'?"},
        {node("NodusDiv_Solve", ""), "g: node 'n': unknown node type 'NodusDiv_Solve'; it comes "
                                     "as Div_Float, Div_Int32, Div_UInt32 or Div_UInt8"},
        {R"({"nodes": {"a": {"type": "Abs_Float", "input": {}}}})",
         "g: node 'a': unknown key 'input'; did you mean 'inputs'?"},
        {node("Add_Float", R"("c": 1)"), "g: node 'n': Add_Float has no input 'c'; it has a or b"},
        // Literals.
        {node("Add_Float", R"("a": "x")"),
         "g: node 'n', input 'a': wants Float (a number), not the text 'x'"},
        {node("Add_Float", R"("a": [1])"),
         "g: node 'n', input 'a': wants Float (a number), not an array of 1"},
        {node("Add_Float", R"("a": 1e39)"), "g: node 'n', input 'a': '1e39' is beyond every Float"},
        {node("Add_Int32", R"("a": 2147483648)"),
         "g: node 'n', input 'a': '2147483648' is outside Int32 (-2147483648 to 2147483647)"},
        {node("Add_UInt32", R"("a": -1)"),
         "g: node 'n', input 'a': '-1' is outside UInt32 (0 to 4294967295)"},
        {node("Add_UInt8", R"("a": 18446744073709551615)"),
         "g: node 'n', input 'a': '18446744073709551615' is outside UInt8 (0 to 255)"},
        {node("Add_Int32", R"("a": 1.5)"), "g: node 'n', input 'a': '1.5' is not a whole number"},
        {node("LogValueBool", R"("value": 1)"),
         "g: node 'n', input 'value': wants Bool (true or false), not 1"},
        {node("LogValueString", R"("value": null)"),
         "g: node 'n', input 'value': wants String (a text), not null"},
        {node("Add_Float3", R"("a": [1, 2])"),
         "g: node 'n', input 'a': wants Float3 (an array of 3 numbers), not an array of 2"},
        {node("Add_Float3", R"("a": [1, true, 2])"),
         "g: node 'n', input 'a', lane y: wants Float (a number), not true"},
        {node("LogValueTQS", R"("value": {"t": [0, 0, 0, 0], "r": [0, 0, 0, 1]})"),
         "g: node 'n', input 'value': a TQS has no part 'r'; it has t, q and s; or " + source},
        {node("LogValueTQS", R"("value": {"q": [0, 0, 1]})"),
         "g: node 'n', input 'value', part q: wants Quaternion (an array of 4 numbers), not an "
         "array of 3"},
        // Sources.
        {node("Add_Float", R"("a": {"form": "n"})"),
         "g: node 'n', input 'a': wants Float; " + source},
        {node("Add_Float", R"("a": {"from": "n", "frame": true})"),
         "g: node 'n', input 'a': wants Float; " + source},
        {node("Add_Float", R"("a": {"from": "m"})"),
         "g: node 'n', input 'a': there is no node 'm'"},
        {node("Add_Float", R"("a": {"from": "n.out"})"),
         "g: node 'n', input 'a': 'n' (Add_Float) has no output 'out'; it has result"},
        {node("Add_Float", R"("a": {"from": "n.result.x"})"),
         "g: node 'n', input 'a': 'n.result' is Float and has no 'x'; it has no lanes"},
        {node("Add_Float", R"("a": {"from": 3})"),
         "g: node 'n', input 'a': 'from' wants a text, not 3"},
        {node("Add_Float", R"("a": {"frame": true})"),
         "g: node 'n', input 'a': wants Float, the frame is Int32"},
        {node("Add_Int32", R"("a": {"frame": false})"),
         "g: node 'n', input 'a': 'frame' wants true, not false"},
        {node("Add_Float", R"("a": {"pixel": "z"})"),
         "g: node 'n', input 'a': 'pixel' wants \"x\" or \"y\", not the text 'z'"},
        {node("Add_Float", R"("a": {"pixel": "x"})"),
         "g: node 'n', input 'a': there are pixels only when an image is evaluated"},
        {node("Add_Float", R"("a": {"column": "speed"})"),
         "g: node 'n', input 'a': column 'speed' needs a table: give one with --data"},
        {R"({"nodes": {"v": {"type": "Abs_Float2"},
                       "n": {"type": "Abs_Float", "inputs": {"value": {"from": "v.result"}}}}})",
         "g: node 'n', input 'value': wants Float, 'v.result' is Float2"},
        {R"({"nodes": {"v": {"type": "Abs_Float2"},
                       "n": {"type": "Abs_Float", "inputs": {"value": {"from": "v.result.z"}}}}})",
         "g: node 'n', input 'value': 'v.result' is Float2 and has no 'z'; it has x or y"},
        {R"({"nodes": {"v": {"type": "Abs_Float"},
                       "n": {"type": "Abs_Int32", "inputs": {"value": {"from": "v"}}}}})",
         "g: node 'n', input 'value': wants Int32, 'v.result' is Float"},
        // Cycles.
        {node("Add_Float", R"("a": {"from": "n"})"), "g: node 'n' takes from itself"},
        {R"({"nodes": {"c": {"type": "Abs_Float", "inputs": {"value": {"from": "b"}}},
                       "d": {"type": "Abs_Float", "inputs": {"value": {"from": "c"}}},
                       "a": {"type": "Abs_Float", "inputs": {"value": {"from": "c"}}},
                       "b": {"type": "Abs_Float", "inputs": {"value": {"from": "a"}}}}})",
         "g: nodes in a circle: 'c' -> 'a' -> 'b' -> 'c'"},
        // Outputs.
        {R"({"nodes": {"a": {"type": "Abs_Float"}}, "outputs": [3]})",
         "g: output 1: wants a text, the name of a node or of its port, not 3"},
        {R"({"nodes": {"a": {"type": "Abs_Float"}}, "outputs": ["a", "a.result"]})",
         "g: output 2: 'a.result' is listed twice"},
        {R"({"nodes": {"a": {"type": "Abs_Float2"}}, "outputs": ["a.result.y", "a"]})",
         "g: output 2: 'a.result.y' is listed twice"},
        {R"({"nodes": {"a": {"type": "Abs_Float2"}}, "outputs": ["b"]})",
         "g: output 1: there is no node 'b'"},
    };
    for (Row const& row : rows)
        EXPECT_EQ(faults(row.graph), row.expected + "\n") << row.graph;
}

TEST(Graph, ColumnsAreCheckedAgainstTheTable)
{
    std::vector<std::string> const columns(std::begin(kColumns), std::end(kColumns));
    GraphSurroundings const table{"t.csv", &columns, false};
    EXPECT_EQ(faults(node("Add_Float", R"("a": {"column": "sped"})"), table),
              "g: node 'n', input 'a': t.csv has no column 'sped'; did you mean 'speed'?\n");
    EXPECT_EQ(faults(node("Add_Float", R"("a": {"column": "zzzzzz"})"), table),
              "g: node 'n', input 'a': t.csv has no column 'zzzzzz'; known: time or speed\n");
    EXPECT_EQ(faults(node("Add_Float2", R"("a": {"column": "speed"})"), table),
              "g: node 'n', input 'a': wants Float2, a column has one number a row: give a column "
              "for each lane\n");
    EXPECT_EQ(faults(node("LogValueString", R"("value": {"column": "speed"})"), table),
              "g: node 'n', input 'value': wants String, a column has one number a row\n");
    // A table that could not be read has been complained of already.
    EXPECT_EQ(faults(node("Add_Float", R"("a": {"column": "x"})"), {"t.csv", nullptr, false}), "");
}

TEST(Graph, AllFaultsOfAFileComeInItsOrder)
{
    EXPECT_EQ(faults(R"({"nodes": {
        "a": {"type": "Abs_Floot"},
        "b": {"type": "Add_Float3", "inputs": {"a": [1], "q": 2, "b": {"from": "a"}}},
        "c": {"type": "Abs_Float", "inputs": {"value": {"from": "d"}}},
        "d": {"type": "Abs_Float", "inputs": {"value": {"from": "c"}}},
        "d": {"type": "Abs_Float"}},
        "outputs": ["x.y"]})"),
              "g: 'nodes' has two members named 'd'\n"
              "g: node 'a': unknown node type 'Abs_Floot'; did you mean 'Abs_Float'?\n"
              "g: node 'b', input 'a': wants Float3 (an array of 3 numbers), not an array of 1\n"
              "g: node 'b': Add_Float3 has no input 'q'; it has a or b\n"
              "g: output 1: there is no node 'x'\n"
              "g: nodes in a circle: 'c' -> 'd' -> 'c'\n");
}

TEST(Graph, BrokenJsonNamesLineAndColumn)
{
    struct Row {
        char const* why;
        std::string text, expected;
    } const rows[] = {
        {"a comma too many", "{\"nodes\": {\n  \"a\": 1,\n}}", "g: line 3, column 1: "},
        {"nothing at all", "", "g: line 1, column 1: "},
        {"text behind the end", "{} x", "g: line 1, column 4: "},
        {"a byte that is not UTF-8", "{\"nodes\": {\"\xC3(\": 1}}", "g: line 1, column 14: "},
        {"deep nesting", std::string(100000, '['), "g: nested deeper than 64 levels\n"},
        {"a number beyond double", "{\"nodes\": 1e999}", "g: number overflow"},
    };
    for (Row const& row : rows) {
        std::string const told = faults(row.text);
        EXPECT_TRUE(told.starts_with(row.expected)) << row.why << ": " << told;
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << row.why << ": " << told;
    }
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
