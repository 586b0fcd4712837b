// Making nodes: of a type, with what its inputs have by themselves, and those that stand for an
// input which the file writes as an expression or a window.
#include "graph_reader.h"

#include <cstring>

namespace nodus::host {

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

}  // namespace nodus::host
