// Reading graphs: their nodes, what they list, and the paths that lead to an output.
#include "nodus/host/graph.h"

#include "files/members.h"
#include "graph_reader.h"

#include "nodus/host/input_file.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

// "a.b.c" as "a", "b", "c"; the third takes all the rest.
struct Path {
    std::string_view node, port, piece;
    explicit Path(std::string_view text)
    {
        for (std::string_view* const part : {&node, &port}) {
            auto const dot = text.find('.');
            *part = text.substr(0, dot);
            text = dot == text.npos ? std::string_view{} : text.substr(dot + 1);
        }
        piece = text;
    }
};

Graph check(std::optional<JsonValue> const& root, Catalogue const& catalogue,
            GraphSurroundings const& surroundings, FileFaults& faults)
{
    if (!root)
        return {};
    Graph graph = GraphReader(catalogue, surroundings, faults).read(*root);
    orderGraph(graph, faults);
    return graph;
}

}  // namespace

GraphReader::GraphReader(Catalogue const& catalogue, GraphSurroundings const& surroundings,
                         FileFaults& faults)
    : m_catalogue(catalogue), m_surroundings(surroundings), m_faults(faults)
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
    checkMembers(root, {"nodes", "outputs"}, {root.line, ""});
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

void GraphReader::checkMembers(JsonValue const& object, std::vector<std::string_view> const& known,
                               Place const& place)
{
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

std::optional<GraphOutput> GraphReader::findOutput(std::string const& text, Place const& place)
{
    Path const path(text);
    auto const found = m_nodes.find(path.node);
    if (found == m_nodes.end()) {
        fault(place, "there is no node " + inQuotes(path.node) + nearestNode(path.node));
        return std::nullopt;
    }
    NodeType const* const type = m_graph.nodes[found->second].type;
    if (type == nullptr)
        return std::nullopt;  // its fault has been told
    std::vector<std::string_view> names;
    for (Port const& known : type->outputs)
        names.push_back(known.name);
    bool const nodeAlone = text.find('.') == text.npos;
    if (nodeAlone && names.size() != 1) {
        fault(place,
              inQuotes(path.node) + " has more than one output; say which: " + alternatives(names));
        return std::nullopt;
    }
    Port const* const port = nodeAlone ? &type->outputs.front() : type->findOutput(path.port);
    if (port == nullptr) {
        fault(place, inQuotes(path.node) + " (" + type->name + ") has no output " +
                         inQuotes(path.port) + "; it has " + alternatives(names));
        return std::nullopt;
    }
    std::string const portName = std::string(path.node) + "." + port->name;
    auto const piece = findPiece(*port->type, path.piece);
    if (!piece || text.ends_with('.')) {
        fault(place, inQuotes(portName) + " is " + std::string(port->type->name) + " and has no " +
                         inQuotes(path.piece) +
                         (port->type->isScalar()
                              ? "; it has no lanes"
                              : "; it has " + alternatives({port->type->laneNames.begin(),
                                                            port->type->laneNames.end()})));
        return std::nullopt;
    }
    return GraphOutput{path.piece.empty() ? portName : portName + "." + std::string(path.piece),
                       found->second, port->offset + piece->offset, piece->type};
}

void GraphReader::readOutputs(JsonValue const& outputs)
{
    m_graph.outputsLine = outputs.line;
    if (!outputs.is(Kind::array)) {
        fault({outputs.line, ""}, "'outputs' wants an array of names, not " + outputs.describe());
        return;
    }
    for (std::size_t i = 0; i < outputs.items.size(); ++i) {
        JsonValue const& item = outputs.items[i];
        Place const place{item.line, "output " + std::to_string(i + 1)};
        if (!item.is(Kind::text)) {
            fault(place, "wants a text, the name of a node or of its port, not " + item.describe());
            continue;
        }
        auto const node = m_nodes.find(item.text);
        if (node != m_nodes.end() && m_graph.nodes[node->second].type != nullptr) {
            // A node alone stands for all that it has.
            for (Port const& port : m_graph.nodes[node->second].type->outputs)
                addOutput({item.text + "." + port.name, node->second, port.offset, port.type},
                          place);
        } else if (auto found = findOutput(item.text, place)) {
            addOutput(std::move(*found), place);
        }
    }
}

void GraphReader::addOutput(GraphOutput output, Place const& place)
{
    // By lanes, so that a lane beside its whole port is seen.
    for (std::string_view const lane : output.type->laneNames) {
        std::string const column = output.name + (lane.empty() ? "" : ".") + std::string(lane);
        if (!m_listed.insert(column).second) {
            fault(place, inQuotes(column) + " is listed twice");
            return;
        }
    }
    m_graph.outputs.push_back(std::move(output));
}

GraphNode makeNode(std::string name, NodeType const& type)
{
    GraphNode node{std::move(name), &type, std::vector<std::byte>(type.inputExtent), {}, {}};
    for (Port const& port : type.inputs) {
        std::memcpy(node.constants.data() + port.offset, port.standard.bytes.data(),
                    port.type->size);
        if (port.type->id == TypeId::String)
            setText(node, port.offset, port.standard.text);
    }
    return node;
}

void setText(GraphNode& node, std::size_t offset, std::string text)
{
    std::erase_if(node.texts, [&](auto const& known) { return known.first == offset; });
    if (!text.empty())
        node.texts.emplace_back(offset, std::move(text));
}

Graph readGraph(std::string const& path, Catalogue const& catalogue,
                GraphSurroundings const& surroundings, Diagnostics& diagnostics)
{
    FileFaults faults(inputName(path));
    Graph graph;
    try {
        graph = check(readJsonFile(path, faults), catalogue, surroundings, faults);
    } catch (Fault const& fault) {
        diagnostics.add(fault);
    }
    faults.moveTo(diagnostics);
    return graph;
}

Graph parseGraph(std::string_view text, std::string const& origin, Catalogue const& catalogue,
                 GraphSurroundings const& surroundings, Diagnostics& diagnostics)
{
    FileFaults faults(origin);
    Graph graph = check(parseJson(text, faults), catalogue, surroundings, faults);
    faults.moveTo(diagnostics);
    return graph;
}

}  // namespace nodus::host
