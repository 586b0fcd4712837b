// Reading what a graph lists, and the paths that lead to an output: a port, a lane or a part.
#include "graph_reader.h"

#include "nodus/host/literals.h"

#include <algorithm>

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

}  // namespace

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
              inQuotes(path.node) +
                  (names.empty() ? " has no outputs"
                                 : " has more than one output; say which: " + alternatives(names)));
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

}  // namespace nodus::host
