// Reading a graph: nodes and their types first, then the inputs, then the outputs.
#pragma once

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

class GraphReader {
public:
    // All of these outlive the reader, and so does the text that it reads.
    GraphReader(Catalogue const& catalogue, GraphSurroundings const& surroundings,
                FileFaults& faults);

    // The graph is of use only when no fault was added.
    Graph read(JsonValue const& root);

private:
    // What a fault is about: "node 'spin', input 'axis'".
    struct Place {
        std::size_t line;
        std::string text;
    };
    Place placeOf(GraphNode const& node) const;

    void fault(Place const& place, std::string const& text);
    void checkMembers(JsonValue const& object, std::vector<std::string_view> const& known,
                      Place const& place);
    // The nearest of the names, or all of them in a short list.
    template <typename Names>
    std::string nearest(std::string_view wrong, Names const& names,
                        std::vector<std::string_view> const& all);
    std::string nearestNode(std::string_view wrong);

    // graph.cpp: nodes and outputs.
    void readNodes(JsonValue const& nodes);
    void readNodeType(std::string const& name, JsonValue const& json);
    void readOutputs(JsonValue const& outputs);
    void addOutput(GraphOutput output, Place const& place);
    // What a path means: a port, a lane or a part. Nothing, and a fault, when it means nothing.
    std::optional<GraphOutput> findOutput(std::string const& text, Place const& place);

    // graph_inputs.cpp: constants and sources. The offset is that of a value, a lane or a part in
    // the node's input block, type is its type.
    void readInputs(GraphNode& node, JsonValue const& inputs);
    void readInput(GraphNode& node, JsonValue const& json, ValueType const& type,
                   std::size_t offset, Place const& place);
    void readParts(GraphNode& node, JsonValue const& json, std::size_t offset, Place const& place);
    void readSource(GraphNode& node, JsonValue const& json, ValueType const& type,
                    std::size_t offset, Place const& place);
    std::optional<Source> sourceOf(std::string const& key, JsonValue const& item,
                                   ValueType const& type, Place const& place);
    std::optional<Source> readFrom(std::string const& path, ValueType const& type,
                                   Place const& place);
    std::optional<Source> readColumn(std::string const& name, ValueType const& type,
                                     Place const& place);
    // What the surroundings lack is one fault, however many inputs ask for it.
    void tellWhatIsMissing();

    Catalogue const& m_catalogue;
    GraphSurroundings const& m_surroundings;
    FileFaults& m_faults;
    Graph m_graph;
    std::unordered_map<std::string_view, std::size_t> m_nodes, m_columns;
    std::unordered_set<std::string> m_listed;
    std::size_t m_searches = 0;
    std::optional<Place> m_firstColumn, m_firstPixel;  // of those that there is nothing for
    std::vector<std::string_view> m_missingColumns;
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
