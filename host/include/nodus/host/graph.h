// A graph file, read and checked: what is left of it can be compiled without a further question.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/diagnostics.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace nodus::host {

// Where the value of an input, of a lane or of a part comes from.
struct Source {
    enum class Kind { node, column, frame, pixelX, pixelY, parameter };
    Kind kind = Kind::node;
    std::size_t index = 0;   // of the node, or of the column
    std::size_t offset = 0;  // in the node's output block, or among the parameters
    // How many frames, or rows, later. Of nodes there is none in a graph that can be compiled.
    std::int32_t shift = 0;
    // Of a column: the value where the table has no such row; without it the nearest row's.
    std::optional<std::array<std::byte, 8>> beyond{};
};

struct GraphFile;

struct Feed {
    std::size_t offset;  // in the input block
    ValueType const* type;
    Source source;
};

struct GraphNode {
    std::string name;
    NodeType const* type;
    std::vector<std::byte> constants;                        // the input block, texts left out
    std::vector<std::pair<std::size_t, std::string>> texts;  // the constant texts, by offset
    std::vector<Feed> feeds;
    std::size_t line = 0;             // of its file, where it begins; 0 when it is of no file
    std::int32_t shift = 0;           // evaluated so many frames later, and never heard in the log
    GraphFile const* file = nullptr;  // a graph in place of a kernel
};

// A port, a lane or a part that the graph lists.
struct GraphOutput {
    std::string name;  // "placed.result", "placed.result.x"
    std::size_t node;
    std::size_t offset;  // in the node's output block
    ValueType const* type;
};

// What a graph may be given from outside: by the command line, or by the graph around it.
struct Parameter {
    Port port;  // its standard is the value that it has else
    std::string doc;
};

struct Graph {
    std::vector<GraphNode> nodes;  // as the file has them
    std::vector<std::size_t>
        order;  // each node after those it takes from; else as the file has them
    std::vector<GraphOutput> outputs;
    std::size_t outputsLine = 0;       // of its file, where they are listed; 0 when they are not
    std::vector<std::string> columns;  // what the index of a column means
    std::string description;
    std::vector<Parameter> parameters;
    std::vector<std::shared_ptr<GraphFile const>> files;  // that its nodes refer to
};

// A graph file as a node type: the parameters are its inputs, what it lists are its outputs.
struct GraphFile {
    Graph graph;  // all of it kernels; its parameters are sources
    Family family;
    NodeType type{};
};

// Which columns its sources read, and as what: a column may be read as several types.
std::set<std::pair<std::size_t, TypeId>> columnsRead(Graph const& graph);

// A node whose inputs have their standard values.
GraphNode makeNode(std::string name, NodeType const& type);

// A constant for the String port at that offset, in place of the one it had.
void setText(GraphNode& node, std::size_t offset, std::string text);

// What a graph's sources may refer to besides its own nodes.
struct GraphSurroundings {
    std::string tablePath;                              // empty: there is no table
    std::vector<std::string> const* columns = nullptr;  // of the table; null: could not be read
    bool pixels = false;                                // evaluated for an image
    bool anyColumn = false;                             // without a table: looked at, not evaluated
    std::vector<std::string> settings{};                // of parameters, "seed=12"
    // Graphs in the graph stay nodes, parameters and other frames sources: for looking at.
    bool asWritten = false;
    // Gets the paths of the graph files that are read as nodes, also of those with faults.
    std::vector<std::string>* filesRead = nullptr;
};

// Reads a graph file, "-" being standard input. Every fault of the file is added to the
// diagnostics, one line each, with the line of the file and in the order of these; the graph is of
// use only when none was added. The catalogue outlives it. Graph files that it takes as nodes are
// looked for from the folder of the file.
Graph readGraph(std::string const& path, Catalogue const& catalogue,
                GraphSurroundings const& surroundings, Diagnostics& diagnostics);

// The same for a text, which can have no graph files as nodes; origin stands for the file in
// messages.
Graph parseGraph(std::string_view text, std::string const& origin, Catalogue const& catalogue,
                 GraphSurroundings const& surroundings, Diagnostics& diagnostics);

// Fills graph.order. A fault for each cycle, with the nodes in it.
void orderGraph(Graph& graph, FileFaults& faults);

// Graphs in graphs multiply, and so do frames before and after.
inline constexpr std::size_t kMostNodes = std::size_t{1} << 20;

// The kernels of the graphs in it in place of their nodes. Throws Fault when there are too many.
void openGraphs(Graph& graph);

// Values in place of its parameters. The holder has an input for each: constants, or what feeds it.
void bindParameters(Graph& graph, GraphNode const& holder);

// For nodes that are wanted at other frames copies that are evaluated there. The graph has its
// order, and needs a new one. Throws Fault when there are too many.
void expandShifts(Graph& graph);

}  // namespace nodus::host
