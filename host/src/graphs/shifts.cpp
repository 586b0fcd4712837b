// Nodes at other frames: copies that are evaluated there, one for each node and distance.
#include "nodus/host/graph.h"

#include <algorithm>
#include <limits>
#include <map>

namespace nodus::host {

namespace {

// Distances of a chain add up; what lies farther than any frame is told as too far.
std::int32_t sum(std::int32_t a, std::int32_t b)
{
    std::int64_t const both = std::int64_t{a} + b;
    if (both < std::numeric_limits<std::int32_t>::min() ||
        both > std::numeric_limits<std::int32_t>::max())
        throw Fault("the graph's frames before and after reach farther than there are frames");
    return static_cast<std::int32_t>(both);
}

bool isShifted(Feed const& feed)
{
    return feed.source.kind == Source::Kind::node && feed.source.shift != 0;
}

class Expansion {
public:
    explicit Expansion(Graph& graph) : m_graph(graph), m_written(graph.nodes) {}

    void run()
    {
        // The copies come behind the nodes of the file, and are copied from in their turn.
        for (std::size_t i = 0; i < m_graph.nodes.size(); ++i) {
            std::vector<Feed> feeds = m_graph.nodes[i].feeds;
            for (Feed& feed : feeds)
                redirect(feed.source, m_graph.nodes[i].shift);
            m_graph.nodes[i].feeds = std::move(feeds);
        }
        m_graph.order.clear();
    }

private:
    void redirect(Source& source, std::int32_t shift)
    {
        bool const moves = source.kind == Source::Kind::node ||
                           source.kind == Source::Kind::column ||
                           source.kind == Source::Kind::frame;
        std::int32_t const wanted = moves ? sum(source.shift, shift) : 0;
        source.shift = wanted;
        if (source.kind != Source::Kind::node)
            return;
        source.shift = 0;
        if (wanted != 0)
            source.index = copyOf(source.index, wanted);
    }

    std::size_t copyOf(std::size_t node, std::int32_t shift)
    {
        auto const [known, isNew] = m_copies.try_emplace({node, shift}, m_graph.nodes.size());
        if (!isNew)
            return known->second;
        if (m_graph.nodes.size() == kMostNodes)
            throw Fault("the graph's frames before and after come to more than " +
                        std::to_string(kMostNodes) + " nodes");
        GraphNode& copy = m_graph.nodes.emplace_back(m_written[node]);
        copy.name += shift > 0 ? "+" : "";
        copy.name += std::to_string(shift);
        copy.shift = shift;
        return known->second;
    }

    Graph& m_graph;
    std::vector<GraphNode> const m_written;
    std::map<std::pair<std::size_t, std::int32_t>, std::size_t> m_copies;
};

}  // namespace

void expandShifts(Graph& graph)
{
    if (std::ranges::any_of(graph.nodes, [](GraphNode const& node) {
            return std::ranges::any_of(node.feeds, isShifted);
        }))
        Expansion(graph).run();
}

}  // namespace nodus::host
