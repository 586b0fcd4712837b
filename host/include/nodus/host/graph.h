// A graph file, read and checked: what is left of it can be compiled without a further question.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/diagnostics.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace nodus::host {

// Where the value of an input, of a lane or of a part comes from.
struct Source {
    enum class Kind { node, column, frame, pixelX, pixelY };
    Kind kind = Kind::node;
    std::size_t index = 0;   // of the node, or of the column
    std::size_t offset = 0;  // in the node's output block
};

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
    std::size_t line = 0;  // of its file, where it begins; 0 when it is of no file
};

// A port, a lane or a part that the graph lists.
struct GraphOutput {
    std::string name;  // "placed.result", "placed.result.x"
    std::size_t node;
    std::size_t offset;  // in the node's output block
    ValueType const* type;
};

struct Graph {
    std::vector<GraphNode> nodes;  // as the file has them
    std::vector<std::size_t>
        order;  // each node after those it takes from; else as the file has them
    std::vector<GraphOutput> outputs;
    std::size_t outputsLine = 0;       // of its file, where they are listed; 0 when they are not
    std::vector<std::string> columns;  // what the index of a column means
};

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
};

// Reads a graph file, "-" being standard input. Every fault of the file is added to the
// diagnostics, one line each, with the line of the file and in the order of these; the graph is of
// use only when none was added. The catalogue outlives it.
Graph readGraph(std::string const& path, Catalogue const& catalogue,
                GraphSurroundings const& surroundings, Diagnostics& diagnostics);

// The same for a text; origin stands for the file in messages.
Graph parseGraph(std::string_view text, std::string const& origin, Catalogue const& catalogue,
                 GraphSurroundings const& surroundings, Diagnostics& diagnostics);

// Fills graph.order. A fault for each cycle, with the nodes in it.
void orderGraph(Graph& graph, FileFaults& faults);

}  // namespace nodus::host
