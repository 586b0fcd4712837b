// Reading graphs: their nodes, what they list, and the paths that lead to an output.
#include "nodus/host/graph.h"

#include "files/members.h"
#include "graph_reader.h"

#include "nodus/host/input_file.h"
#include "nodus/host/literals.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

// "a.b.c" as "a" and "b.c".
struct Path {
    std::string_view node, port;
    explicit Path(std::string_view text)
        : node(text.substr(0, text.find('.'))),
          port(text.substr(std::min(node.size() + 1, text.size())))
    {
    }
};

// The port whose name the path begins with. A graph's ports may have dots in theirs.
Port const* findPort(std::vector<Port> const& ports, std::string_view path)
{
    Port const* found = nullptr;
    for (Port const& port : ports)
        if (path.starts_with(port.name) &&
            (path.size() == port.name.size() || path[port.name.size()] == '.') &&
            (found == nullptr || port.name.size() > found->name.size()))
            found = &port;
    return found;
}

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
    Port const* const port =
        nodeAlone ? &type->outputs.front() : findPort(type->outputs, path.port);
    if (port == nullptr) {
        fault(place, inQuotes(path.node) + " (" + type->name + ") has no output " +
                         inQuotes(path.port.substr(0, path.port.find('.'))) +
                         (names.empty() ? "" : "; it has " + alternatives(names)));
        return std::nullopt;
    }
    std::string const portName = std::string(path.node) + "." + port->name;
    std::string const piece(
        nodeAlone ? "" : path.port.substr(std::min(port->name.size() + 1, path.port.size())));
    auto const lanes = findPiece(*port->type, piece);
    if (!lanes || text.ends_with('.')) {
        fault(place, inQuotes(portName) + " is " + std::string(port->type->name) + " and has no " +
                         inQuotes(piece) +
                         (port->type->isScalar()
                              ? "; it has no lanes"
                              : "; it has " + alternatives({port->type->laneNames.begin(),
                                                            port->type->laneNames.end()})));
        return std::nullopt;
    }
    return GraphOutput{piece.empty() ? portName : portName + "." + piece, found->second,
                       port->offset + lanes->offset, lanes->type};
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
            auto const& ports = m_graph.nodes[node->second].type->outputs;
            for (Port const& port : ports)
                addOutput({item.text + "." + port.name, node->second, port.offset, port.type},
                          ports.size() == 1 ? item.text : item.text + "." + port.name, place);
        } else if (auto found = findOutput(item.text, place)) {
            addOutput(std::move(*found), item.text, place);
        }
    }
}

void GraphReader::addOutput(GraphOutput output, std::string const& listed, Place const& place)
{
    // By lanes, so that a lane beside its whole port is seen.
    for (std::string_view const lane : output.type->laneNames) {
        std::string const column = output.name + (lane.empty() ? "" : ".") + std::string(lane);
        if (!m_listed.insert(column).second) {
            fault(place, inQuotes(column) + " is listed twice");
            return;
        }
    }
    m_listedPorts.push_back({listed, output.type});
    m_graph.outputs.push_back(std::move(output));
}

std::size_t GraphReader::makeFor(Target const& target, NodeType const& type)
{
    auto const user = static_cast<std::size_t>(&target.node - m_graph.nodes.data());
    std::string name = target.node.name + "." + target.port.name + ".";
    m_made.push_back({makeNode(name + std::to_string(m_made.size() + 1), type), user});
    m_made.back().node.line = target.node.line;
    return m_graph.nodes.size() + m_made.size() - 1;
}

void GraphReader::placeMadeNodes()
{
    if (m_made.empty())
        return;
    std::size_t const written = m_graph.nodes.size();
    std::vector<std::size_t> position(written + m_made.size());
    std::vector<GraphNode> nodes;
    std::size_t next = 0;
    // They were made in the order of their users.
    for (std::size_t i = 0; i < written; ++i) {
        for (; next < m_made.size() && m_made[next].user == i; ++next) {
            position[written + next] = nodes.size();
            nodes.push_back(std::move(m_made[next].node));
        }
        position[i] = nodes.size();
        nodes.push_back(std::move(m_graph.nodes[i]));
    }
    for (GraphNode& node : nodes)
        for (Feed& feed : node.feeds)
            if (feed.source.kind == Source::Kind::node)
                feed.source.index = position[feed.source.index];
    for (GraphOutput& output : m_graph.outputs)
        output.node = position[output.node];
    m_graph.nodes = std::move(nodes);
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

}  // namespace nodus::host
