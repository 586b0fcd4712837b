// Reading what a graph file has: its members in turn, and its nodes with their types.
#include "graph_reader.h"

#include "files/members.h"

#include "nodus/host/literals.h"

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

}  // namespace

GraphReader::GraphReader(Catalogue const& catalogue, GraphSurroundings const& surroundings,
                         FileFaults& faults, GraphFiles& files)
    : m_catalogue(catalogue), m_surroundings(surroundings), m_faults(faults), m_files(files)
{
    if (surroundings.columns == nullptr)
        return;
    m_graph.columns = *surroundings.columns;
    for (std::string const& column : *surroundings.columns)
        m_columns.emplace(column, m_columns.size());
}

Graph GraphReader::read(JsonValue const& root)
{
    if (!root.is(Kind::object)) {
        fault({root.line, ""},
              "a graph is an object with 'nodes' and 'outputs', not " + root.describe());
        return {};
    }
    std::vector<std::string_view> known{"nodes", "outputs", "parameters", "description"};
    // Where editors look for the schema.
    if (root.member("$schema") != nullptr)
        known.emplace_back("$schema");
    checkMembers(root, std::move(known), {root.line, ""});
    if (JsonValue const* const text = root.member("description")) {
        if (!text->is(Kind::text))
            fault({text->line, ""}, "'description' wants a text, not " + text->describe());
        m_graph.description = text->text;
    }
    if (JsonValue const* const parameters = root.member("parameters"))
        readParameters(*parameters);
    JsonValue const* const nodes = root.member("nodes");
    if (nodes == nullptr)
        fault({root.line, ""}, "has no 'nodes'");
    else if (!nodes->is(Kind::object))
        fault({nodes->line, ""},
              "'nodes' wants an object with a node for each name, not " + nodes->describe());
    else
        readNodes(*nodes);
    if (JsonValue const* const outputs = root.member("outputs"))
        readOutputs(*outputs);
    tellWhatIsMissing();
    placeMadeNodes();
    return std::move(m_graph);
}

GraphReader::Place GraphReader::placeOf(GraphNode const& node) const
{
    return {node.line, "node " + inQuotes(node.name)};
}

void GraphReader::fault(Place const& place, std::string const& text)
{
    m_faults.add(place.line, place.text + (place.text.empty() ? "" : ": ") + text);
}

void GraphReader::checkMembers(JsonValue const& object, std::vector<std::string_view> known,
                               Place const& place)
{
    if (object.member("comment") != nullptr)
        known.emplace_back("comment");
    refuseUnknownMembers(object, known, place.text, m_faults);
}

std::string GraphReader::nearestNode(std::string_view wrong)
{
    std::vector<std::string_view> names;
    for (std::size_t i = 0; m_searches < kMostSearches && i < m_graph.nodes.size(); ++i)
        names.push_back(m_graph.nodes[i].name);
    return nearest(wrong, names, {});
}

void GraphReader::readNodes(JsonValue const& nodes)
{
    m_graph.nodes.reserve(nodes.items.size());
    for (std::size_t i = 0; i < nodes.items.size(); ++i)
        readNodeType(nodes.keys[i], nodes.items[i]);
    for (std::size_t i = 0; i < nodes.items.size(); ++i)
        if (m_graph.nodes[i].type != nullptr)
            if (JsonValue const* const inputs = nodes.items[i].member("inputs"))
                readInputs(m_graph.nodes[i], *inputs);
}

void GraphReader::readNodeType(std::string const& name, JsonValue const& json)
{
    GraphNode& node = m_graph.nodes.emplace_back();
    node.name = name;
    node.type = nullptr;
    node.line = json.line;
    // Of two nodes of one name the first is meant; the reader of the file has told it already.
    m_nodes.emplace(name, m_graph.nodes.size() - 1);
    Place const place = placeOf(node);
    if (name.empty() || name.find('.') != name.npos)
        fault(place, "a node's name is not empty and has no dots");
    if (!json.is(Kind::object)) {
        fault(place, "wants an object with 'type' and 'inputs', not " + json.describe());
        return;
    }
    checkMembers(json, {"type", "inputs"}, place);
    JsonValue const* const type = json.member("type");
    if (type == nullptr || !type->is(Kind::text)) {
        fault({type != nullptr ? type->line : node.line, place.text},
              "wants a 'type', the name of a node type" +
                  (type != nullptr ? ", not " + type->describe() : ""));
        return;
    }
    if (type->text.ends_with(".json")) {
        if (auto graph = readGraphType(name, type->text, {type->line, place.text})) {
            node = *std::move(graph);
            node.line = json.line;
        }
        return;
    }
    NodeType const* const found = m_catalogue.find(type->text);
    if (found == nullptr) {
        fault({type->line, place.text},
              "unknown node type " + inQuotes(type->text) +
                  (++m_searches <= kMostSearches ? m_catalogue.suggestion(type->text) : ""));
        return;
    }
    node = makeNode(name, *found);
    node.line = json.line;
}

std::optional<GraphNode> GraphReader::readGraphType(std::string const& name,
                                                    std::string const& path, Place const& place)
{
    if (!m_files.mayRead()) {
        fault(place, "a graph that is no file cannot take others as nodes");
        return std::nullopt;
    }
    try {
        auto const file = m_files.read(path);
        if (file == nullptr)
            return std::nullopt;
        m_graph.files.push_back(file);
        GraphNode node = makeNode(name, file->type);
        node.file = file.get();
        return node;
    } catch (Fault const& wrong) {
        fault(place, wrong.what());
        return std::nullopt;
    }
}

}  // namespace nodus::host
