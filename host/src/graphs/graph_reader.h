// Reading a graph: parameters, then nodes and their types, then the inputs, then the outputs.
#pragma once

#include "graph_files.h"

#include "nodus/host/graph.h"
#include "nodus/host/json.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace nodus::host {

struct Expression;

// What a graph lists, as others see it who take it as a node.
struct ListedPort {
    std::string name;  // as it is listed
    ValueType const* type;
};

// A graph file with comments.
std::optional<JsonValue> readGraphJson(std::string const& path, FileFaults& faults);

class GraphReader {
public:
    // All of these outlive the reader, and so does the text that it reads.
    GraphReader(Catalogue const& catalogue, GraphSurroundings const& surroundings,
                FileFaults& faults, GraphFiles& files);

    // The graph is of use only when no fault was added.
    Graph read(JsonValue const& root);

    // Of the graph that was read.
    std::vector<ListedPort> const& listed() const { return m_listedPorts; }
    std::size_t parametersExtent() const { return m_parametersEnd; }

private:
    // What a fault is about: "node 'spin', input 'axis'".
    struct Place {
        std::size_t line;
        std::string text;
    };
    // A value, a lane or a part in a node's input block.
    struct Target {
        GraphNode& node;
        Port const& port;  // that it is of
        ValueType const& type;
        std::size_t offset;
        Place place;

        Target piece(ValueType const& of, std::size_t at, Place where) const
        {
            return {node, port, of, at, std::move(where)};
        }
    };
    Place placeOf(GraphNode const& node) const;

    void fault(Place const& place, std::string const& text);
    // A member "comment" is allowed beside the known ones.
    void checkMembers(JsonValue const& object, std::vector<std::string_view> known,
                      Place const& place);
    // The nearest of the names, or all of them in a short list.
    template <typename Names>
    std::string nearest(std::string_view wrong, Names const& names,
                        std::vector<std::string_view> const& all);
    std::string nearestNode(std::string_view wrong);

    // graph_reader.cpp: nodes and their types.
    void readNodes(JsonValue const& nodes);
    void readNodeType(std::string const& name, JsonValue const& json);
    std::optional<GraphNode> readGraphType(std::string const& name, std::string const& path,
                                           Place const& place);

    // graph_outputs.cpp: what is listed.
    void readOutputs(JsonValue const& outputs);
    void addOutput(GraphOutput output, std::string const& listed, Place const& place);
    // What a path means: a port, a lane or a part. Nothing, and a fault, when it means nothing.
    std::optional<GraphOutput> findOutput(std::string const& text, Place const& place);

    // parameters.cpp: what is declared, and what takes it.
    void readParameters(JsonValue const& parameters);
    void readParameter(std::string const& name, JsonValue const& json);
    std::optional<Source> readParameterSource(std::string const& path, ValueType const& type,
                                              Place const& place);
    Parameter const* findParameter(std::string_view name) const;

    // graph_inputs.cpp: constants and sources.
    void readInputs(GraphNode& node, JsonValue const& inputs);
    void readInput(Target const& target, JsonValue const& json);
    void readParts(Target const& target, JsonValue const& json);
    void readSource(Target const& target, JsonValue const& json);
    std::optional<Source> sourceOf(std::string const& key, JsonValue const& item,
                                   ValueType const& type, Place const& place);
    std::optional<Source> readFrom(std::string const& path, ValueType const& type,
                                   Place const& place);
    std::optional<Source> readColumn(std::string const& name, ValueType const& type,
                                     Place const& place);
    // What the surroundings lack is one fault, however many inputs ask for it.
    void tellWhatIsMissing();

    // graph_windows.cpp: other frames and rows, and several of them as one value.
    bool readShift(Target const& target, JsonValue const& json, std::string const& kind,
                   Source& source);
    void readWindow(Target const& target, JsonValue const& json, std::string const& kind,
                    Source const& source);
    void foldWindow(Target const& target, std::string_view operation, std::int32_t first,
                    std::int32_t last, Source source);

    // graph_expressions.cpp: nodes for expressions.
    struct Operand;
    void readExpression(Target const& target, std::string const& text);
    std::optional<Operand> compile(Target const& target, Expression const& expression,
                                   ValueType const& type);
    std::optional<Operand> compileName(Target const& target, Expression const& expression,
                                       ValueType const& type);
    NodeType const* findFunction(Target const& target, Expression const& expression,
                                 ValueType const& type);
    ValueType const* knownType(Expression const& expression) const;

    // graph_nodes.cpp: the nodes that stand for expressions and windows.
    // A node that the file does not have, for an input of one that it has: its index once all nodes
    // have their places. The reference holds until the next one is made.
    std::size_t makeFor(Target const& target, NodeType const& type);
    // Each goes in front of the node that it is for.
    void placeMadeNodes();
    GraphNode& made(std::size_t index) { return m_made[index - m_graph.nodes.size()].node; }

    Catalogue const& m_catalogue;
    GraphSurroundings const& m_surroundings;
    FileFaults& m_faults;
    GraphFiles& m_files;
    Graph m_graph;
    struct Made {
        GraphNode node;
        std::size_t user;
    };
    std::vector<Made> m_made;
    std::vector<ListedPort> m_listedPorts;
    std::size_t m_parametersEnd = 0;
    std::unordered_map<std::string_view, std::size_t> m_nodes, m_columns;
    std::unordered_set<std::string> m_listed;
    std::size_t m_searches = 0;
    std::optional<Place> m_firstColumn, m_firstPixel;  // of those that there is nothing for
    std::vector<std::string_view> m_missingColumns;
    std::deque<std::string> m_columnNames;  // that no text of the file holds
};

// Looking for the nearest name takes time; with very many faults, the first ones get it.
inline constexpr std::size_t kMostSearches = 20;

template <typename Names>
std::string GraphReader::nearest(std::string_view wrong, Names const& names,
                                 std::vector<std::string_view> const& all)
{
    std::string const near = ++m_searches <= kMostSearches ? didYouMean(wrong, names) : "";
    return !near.empty() || all.empty() ? near : "; known: " + alternatives(all);
}

}  // namespace nodus::host
