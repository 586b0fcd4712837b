// From a graph's text to what can be evaluated: it is read, given its parameters' values, opened,
// and put into order.
#include "nodus/host/graph.h"

#include "graph_reader.h"

#include "nodus/host/input_file.h"
#include "nodus/host/literals.h"

#include <algorithm>

namespace nodus::host {

namespace {

// The parameters' values from the command line.
void set(Graph& graph, std::string const& setting, FileFaults& faults)
{
    auto const equals = setting.find('=');
    std::string const name = setting.substr(0, equals);
    auto const found = std::ranges::find(graph.parameters, name,
                                         [](Parameter const& known) { return known.port.name; });
    if (found == graph.parameters.end()) {
        std::vector<std::string_view> names;
        for (Parameter const& known : graph.parameters)
            names.push_back(known.port.name);
        std::string const near = didYouMean(name, names);
        faults.add(0, "has no parameter " + inQuotes(name) +
                          (names.empty()  ? ", and no others"
                           : near.empty() ? "; it has " + alternatives(names)
                                          : near));
        return;
    }
    if (equals == setting.npos) {
        faults.add(0, inQuotes(setting) + " is no setting; write " + name + "=VALUE");
        return;
    }
    std::string wrong = readArgument(setting.substr(equals + 1), found->port, found->port.standard);
    if (!wrong.empty())
        faults.add(0, "parameter " + inQuotes(name) + ": " + wrong);
}

void bindStandards(Graph& graph)
{
    NodeType type{};
    for (Parameter const& parameter : graph.parameters) {
        type.inputs.push_back(parameter.port);
        type.inputExtent = parameter.port.offset + parameter.port.type->size;
    }
    bindParameters(graph, makeNode("", type));
}

// From what a file says to what can be evaluated.
Graph finish(Graph graph, GraphSurroundings const& surroundings, bool isGood, FileFaults& faults)
{
    for (std::string const& setting : surroundings.settings)
        set(graph, setting, faults);
    if (!isGood || !faults.empty()) {
        // With graphs in it, what looks like a circle may be none.
        if (graph.files.empty())
            orderGraph(graph, faults);
        return graph;
    }
    std::optional<Graph> asWritten;
    if (surroundings.asWritten)
        asWritten = graph;
    openGraphs(graph);
    bindStandards(graph);
    orderGraph(graph, faults);
    if (!faults.empty())
        return graph;
    expandShifts(graph);
    if (graph.order.size() != graph.nodes.size())
        orderGraph(graph, faults);
    return asWritten ? *std::move(asWritten) : std::move(graph);
}

Graph check(std::optional<JsonValue> const& root, Catalogue const& catalogue,
            GraphSurroundings const& surroundings, FileFaults& faults, GraphFiles& files,
            Diagnostics const& diagnostics)
{
    if (!root)
        return {};
    std::size_t const before = diagnostics.lines().size();
    Graph graph = GraphReader(catalogue, surroundings, faults, files).read(*root);
    return finish(std::move(graph), surroundings, diagnostics.lines().size() == before, faults);
}

}  // namespace

std::optional<JsonValue> readGraphJson(std::string const& path, FileFaults& faults)
{
    return readJsonFile(path, faults, {}, true);
}

Graph readGraph(std::string const& path, Catalogue const& catalogue,
                GraphSurroundings const& surroundings, Diagnostics& diagnostics)
{
    FileFaults faults(inputName(path));
    Graph graph;
    diagnostics.gather([&] {
        GraphFiles files(catalogue, surroundings, diagnostics);
        files.begin(path);
        graph =
            check(readGraphJson(path, faults), catalogue, surroundings, faults, files, diagnostics);
    });
    faults.moveTo(diagnostics);
    return graph;
}

Graph parseGraph(std::string_view text, std::string const& origin, Catalogue const& catalogue,
                 GraphSurroundings const& surroundings, Diagnostics& diagnostics)
{
    FileFaults faults(origin);
    Graph graph;
    diagnostics.gather([&] {
        GraphFiles files(catalogue, surroundings, diagnostics);
        graph = check(parseJson(text, faults, 1, {}, true), catalogue, surroundings, faults, files,
                      diagnostics);
    });
    faults.moveTo(diagnostics);
    return graph;
}

std::set<std::pair<std::size_t, TypeId>> columnsRead(Graph const& graph)
{
    std::set<std::pair<std::size_t, TypeId>> read;
    for (GraphNode const& node : graph.nodes)
        for (Feed const& feed : node.feeds)
            if (feed.source.kind == Source::Kind::column)
                read.emplace(feed.source.index, feed.type->id);
    return read;
}

}  // namespace nodus::host
