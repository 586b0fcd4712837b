// The graphs in a graph: their kernels in place of the nodes that stand for them.
#include "nodus/host/graph.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace nodus::host {

namespace {

class Opening {
public:
    explicit Opening(Graph& graph) : m_graph(graph) {}

    void run()
    {
        for (std::size_t i = 0; i < m_graph.columns.size(); ++i)
            m_columns.emplace(m_graph.columns[i], i);
        std::size_t count = 0;
        for (GraphNode const& node : m_graph.nodes) {
            m_first.push_back(count);
            count += node.file != nullptr ? node.file->graph.nodes.size() : 1;
            if (count > kMostNodes)
                throw Fault("the graphs in the graph come to more than " +
                            std::to_string(kMostNodes) + " nodes");
        }
        std::vector<GraphNode> nodes;
        nodes.reserve(count);
        for (std::size_t i = 0; i < m_graph.nodes.size(); ++i) {
            GraphNode& node = m_graph.nodes[i];
            for (Feed& feed : node.feeds)
                redirect(feed.source);
            if (node.file == nullptr)
                nodes.push_back(std::move(node));
            else
                addKernels(node, m_first[i], nodes);
        }
        for (GraphOutput& output : m_graph.outputs) {
            Source source{Source::Kind::node, output.node, output.offset};
            redirect(source);
            output.node = source.index;
            output.offset = source.offset;
        }
        m_graph.nodes = std::move(nodes);
        m_graph.files.clear();
    }

private:
    // To the kernel behind a graph's port.
    void redirect(Source& source) const
    {
        if (source.kind != Source::Kind::node)
            return;
        GraphNode const& node = m_graph.nodes[source.index];
        std::size_t kernel = 0;
        if (node.file != nullptr) {
            auto const& ports = node.file->type.outputs;
            auto const port = std::ranges::find_if(ports, [&](Port const& known) {
                return source.offset >= known.offset &&
                       source.offset < known.offset + known.type->size;
            });
            GraphOutput const& output =
                node.file->graph.outputs[static_cast<std::size_t>(port - ports.begin())];
            kernel = output.node;
            source.offset = output.offset + (source.offset - port->offset);
        }
        source.index = m_first[source.index] + kernel;
    }

    void addKernels(GraphNode const& holder, std::size_t first, std::vector<GraphNode>& nodes)
    {
        Graph inner;
        inner.nodes = holder.file->graph.nodes;
        for (GraphNode& node : inner.nodes) {
            node.name = holder.name + "." + node.name;
            node.line = holder.line;
            for (Feed& feed : node.feeds)
                if (feed.source.kind == Source::Kind::node)
                    feed.source.index += first;
                else if (feed.source.kind == Source::Kind::column)
                    feed.source.index = columnOf(holder.file->graph.columns[feed.source.index]);
        }
        bindParameters(inner, holder);
        std::ranges::move(inner.nodes, std::back_inserter(nodes));
    }

    std::size_t columnOf(std::string const& name)
    {
        auto const [known, isNew] = m_columns.emplace(name, m_graph.columns.size());
        if (isNew)
            m_graph.columns.push_back(name);
        return known->second;
    }

    Graph& m_graph;
    std::vector<std::size_t> m_first;  // of the kernels that come for each node
    std::unordered_map<std::string, std::size_t> m_columns;
};

}  // namespace

void openGraphs(Graph& graph)
{
    if (!graph.files.empty())
        Opening(graph).run();
}

}  // namespace nodus::host
