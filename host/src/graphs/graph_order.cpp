// The order of evaluation, and the cycles that leave none.
#include "nodus/host/graph.h"

#include <algorithm>
#include <functional>
#include <queue>

namespace nodus::host {

namespace {

// Hands nodes out once all that they take from is out, the first of the file first.
class Ordering {
public:
    explicit Ordering(Graph const& graph)
        : m_graph(graph), m_waiting(graph.nodes.size()), m_takers(graph.nodes.size()),
          m_isOut(graph.nodes.size())
    {
        for (std::size_t node = 0; node < graph.nodes.size(); ++node) {
            for (Feed const& feed : graph.nodes[node].feeds)
                if (feed.source.kind == Source::Kind::node) {
                    m_takers[feed.source.index].push_back(node);
                    ++m_waiting[node];
                }
            if (m_waiting[node] == 0)
                m_ready.push(turnOf(node));
        }
    }

    void run(std::vector<std::size_t>& order)
    {
        while (!m_ready.empty()) {
            std::size_t const node = m_ready.top() % m_graph.nodes.size();
            m_ready.pop();
            order.push_back(node);
            release(node);
        }
    }

    // The nodes of a cycle, in the direction of the values; empty when all nodes are out. They
    // count as out afterwards, so that what hangs behind them is not taken for a further cycle.
    std::vector<std::size_t> takeCycle()
    {
        while (m_first < m_isOut.size() && m_isOut[m_first])
            ++m_first;
        if (m_first == m_isOut.size())
            return {};
        // A node that still waits has a source that still waits: walking back must meet itself.
        std::vector<std::size_t> walk{m_first};
        std::vector<bool> met(m_isOut.size());
        while (!met[walk.back()]) {
            met[walk.back()] = true;
            for (Feed const& feed : m_graph.nodes[walk.back()].feeds)
                if (feed.source.kind == Source::Kind::node && !m_isOut[feed.source.index]) {
                    walk.push_back(feed.source.index);
                    break;
                }
        }
        std::vector<std::size_t> cycle(std::ranges::find(walk, walk.back()) + 1, walk.end());
        std::ranges::reverse(cycle);
        std::rotate(cycle.begin(), std::ranges::min_element(cycle), cycle.end());
        for (std::size_t const node : cycle)
            m_isOut[node] = true;
        for (std::size_t const node : cycle)
            release(node);
        return cycle;
    }

private:
    void release(std::size_t node)
    {
        m_isOut[node] = true;
        for (std::size_t const taker : m_takers[node])
            if (--m_waiting[taker] == 0 && !m_isOut[taker])
                m_ready.push(turnOf(taker));
    }

    // Nodes at other frames come as soon as they can: nobody hears them, so that those that are
    // heard keep the order of the file.
    std::size_t turnOf(std::size_t node) const
    {
        return m_graph.nodes[node].shift != 0 ? node : node + m_graph.nodes.size();
    }

    Graph const& m_graph;
    std::vector<std::size_t> m_waiting;
    std::vector<std::vector<std::size_t>> m_takers;
    std::vector<bool> m_isOut;
    std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> m_ready;
    std::size_t m_first = 0;
};

std::string describe(Graph const& graph, std::vector<std::size_t> const& cycle)
{
    constexpr std::size_t kMost = 8;
    if (cycle.size() == 1)
        return "node '" + graph.nodes[cycle.front()].name + "' takes from itself";
    std::string text = "nodes in a circle: ";
    for (std::size_t i = 0; i < std::min(cycle.size(), kMost); ++i)
        text += "'" + graph.nodes[cycle[i]].name + "' -> ";
    if (cycle.size() > kMost)
        text += "... (" + std::to_string(cycle.size()) + " nodes) -> ";
    return text + "'" + graph.nodes[cycle.front()].name + "'";
}

}  // namespace

void orderGraph(Graph& graph, FileFaults& faults)
{
    graph.order.clear();
    Ordering ordering(graph);
    ordering.run(graph.order);
    for (auto cycle = ordering.takeCycle(); !cycle.empty(); cycle = ordering.takeCycle()) {
        faults.add(graph.nodes[cycle.front()].line, describe(graph, cycle));
        ordering.run(graph.order);
    }
}

}  // namespace nodus::host
