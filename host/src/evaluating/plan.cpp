// Laying out the arena and turning nodes and feeds into steps and moves.
#include "nodus/host/plan.h"

#include "plan_layout.h"

#include <algorithm>

namespace nodus::host {

namespace {

constexpr std::size_t kMostFrames = 64;
// A graph too large for the caches wants its steps fetched for more than one frame.
constexpr std::size_t kLeastFrames = 4;

// Half of a typical second-level cache: the other half is for the tables and the texts around.
constexpr std::size_t kArenaAim = std::size_t{512} * 1024;

// A port, a lane or a part of what lies at a place.
Place within(Place place, std::size_t offset)
{
    return {narrow(place.offset + offset), place.stride};
}

class Compiler {
public:
    Compiler(Graph const& graph, std::size_t framesPerBlock)
        : m_graph(graph), m_in(graph.nodes.size()), m_out(graph.nodes.size()),
          m_ownsInput(graph.nodes.size(), true), m_placed(graph.nodes.size())
    {
        m_plan.framesPerBlock = framesPerBlock;
    }

    Plan compile()
    {
        shareBlocks();
        std::size_t const perFrame = bytesPerFrame();
        if (m_plan.framesPerBlock == 0)
            m_plan.framesPerBlock = std::clamp(kArenaAim / std::max<std::size_t>(perFrame, 1),
                                               kLeastFrames, kMostFrames);
        placeBlocks();
        m_plan.steps.reserve(m_graph.nodes.size());
        for (std::size_t const node : m_graph.order)
            addStep(node);
        for (GraphOutput const& output : m_graph.outputs)
            m_plan.outputs.push_back(
                {output.name, output.type, within(m_out[output.node], output.offset)});
        m_plan.arenaSize = roundUp(m_end, kCacheLine);
        return std::move(m_plan);
    }

private:
    // A port of an input block that some other node's only output is written to directly.
    struct Slot {
        std::size_t node = SIZE_MAX;
        std::size_t offset = 0;
        bool isTaken() const { return node != SIZE_MAX; }
    };

    NodeType const& type(std::size_t node) const { return *m_graph.nodes[node].type; }

    // The one feed of a node that has one input, all of it fed by one port.
    Feed const* onlyFeed(GraphNode const& node) const
    {
        bool const isWhole = node.type->inputs.size() == 1 && node.feeds.size() == 1 &&
                             node.feeds.front().type == node.type->inputs.front().type;
        return isWhole && node.feeds.front().source.kind == Source::Kind::node &&
                       node.feeds.front().source.offset % kBlockAlignment == 0
                   ? &node.feeds.front()
                   : nullptr;
    }

    void shareBlocks()
    {
        for (std::size_t const index : m_graph.order) {
            GraphNode const& node = m_graph.nodes[index];
            if (onlyFeed(node) != nullptr) {
                m_ownsInput[index] = false;
                continue;
            }
            for (Feed const& feed : node.feeds) {
                if (feed.source.kind != Source::Kind::node || feed.offset % kBlockAlignment != 0 ||
                    feed.source.offset != 0)
                    continue;
                std::size_t const source = feed.source.index;
                if (type(source).outputs.size() == 1 &&
                    type(source).outputs.front().type == feed.type && !m_placed[source].isTaken())
                    m_placed[source] = {index, feed.offset};
            }
        }
    }

    static std::size_t inputStride(NodeType const& type)
    {
        return roundUp(type.inputExtent, kBlockAlignment);
    }
    static std::size_t outputStride(NodeType const& type)
    {
        return roundUp(type.outputExtent, kBlockAlignment);
    }

    std::size_t bytesPerFrame() const
    {
        std::size_t bytes = 0;
        for (std::size_t node = 0; node < m_graph.nodes.size(); ++node) {
            bytes += m_ownsInput[node] ? inputStride(type(node)) : 0;
            bytes += m_placed[node].isTaken() ? 0 : outputStride(type(node));
        }
        return bytes;
    }

    std::uint32_t take(std::size_t bytes)
    {
        std::size_t const begin = m_end;
        m_end += bytes;
        narrow(m_end);
        return narrow(begin);
    }

    Place reserve(std::size_t stride)
    {
        return {take(stride * m_plan.framesPerBlock), narrow(stride)};
    }

    // In the order of evaluation, so that what is read next lies near.
    void placeBlocks()
    {
        for (std::size_t const node : m_graph.order) {
            if (m_ownsInput[node])
                m_in[node] = reserve(inputStride(type(node)));
            if (!m_placed[node].isTaken())
                m_out[node] = reserve(outputStride(type(node)));
        }
        // A slot's node comes later in the order: all input blocks have their places by now.
        for (std::size_t const node : m_graph.order) {
            if (m_placed[node].isTaken())
                m_out[node] = within(m_in[m_placed[node].node], m_placed[node].offset);
            if (Feed const* const feed =
                    m_ownsInput[node] ? nullptr : onlyFeed(m_graph.nodes[node]))
                m_in[node] = within(m_out[feed->source.index], feed->source.offset);
        }
    }

    Place sourceOf(Feed const& feed)
    {
        Source const& source = feed.source;
        if (source.kind == Source::Kind::node)
            return within(m_out[source.index], source.offset);
        std::size_t const column = source.kind == Source::Kind::column ? source.index : 0;
        for (PlanSource const& known : m_plan.sources)
            if (known.isOf(feed))
                return known.place;
        m_end = roundUp(m_end, kBlockAlignment);
        Place const place = reserve(feed.type->size);
        m_plan.sources.push_back(
            {source.kind, column, feed.type, place, source.shift, source.beyond});
        return place;
    }

    void addStep(std::size_t index)
    {
        GraphNode const& node = m_graph.nodes[index];
        NodeType const& nodeType = *node.type;
        Step step{};
        step.solve = nodeType.solve;
        step.solveWithWorkspace = nodeType.solveWithWorkspace;
        step.init = nodeType.init;
        step.shift = node.shift;
        step.in = m_in[index];
        step.out = m_out[index];
        step.firstMove = narrow(m_plan.moves.size());
        if (m_ownsInput[index]) {
            addConstants(node, step.in);
            for (Feed const& feed : node.feeds)
                if (!isWrittenInPlace(index, feed))
                    m_plan.moves.push_back(
                        {sourceOf(feed), within(step.in, feed.offset), feed.type->id});
        }
        step.moveCount = narrow(m_plan.moves.size()) - step.firstMove;
        step.outExtent = narrow(nodeType.outputExtent);
        for (Port const& port : nodeType.outputs)
            if (port.type->id == TypeId::String) {
                step.outExtent = 0;
                if (!m_placed[index].isTaken())
                    m_plan.texts.push_back({within(step.out, port.offset), {}});
            }
        if (nodeType.workspaceExtent != 0) {
            m_end = roundUp(m_end, kBlockAlignment);
            // One for all frames.
            step.workspace = take(nodeType.workspaceExtent);
        }
        m_plan.steps.push_back(step);
    }

    bool isWrittenInPlace(std::size_t index, Feed const& feed) const
    {
        if (feed.source.kind != Source::Kind::node)
            return false;
        Slot const& slot = m_placed[feed.source.index];
        return slot.node == index && slot.offset == feed.offset;
    }

    void addConstants(GraphNode const& node, Place in)
    {
        std::size_t const begin = m_plan.constantBytes.size();
        m_plan.constantBytes.insert(m_plan.constantBytes.end(), node.constants.begin(),
                                    node.constants.end());
        m_plan.constants.push_back({in, begin, node.constants.size()});
        for (Port const& port : node.type->inputs)
            if (port.type->id == TypeId::String)
                addText(m_plan, node, port, within(in, port.offset));
    }

    Graph const& m_graph;
    Plan m_plan;
    std::vector<Place> m_in, m_out;
    std::vector<bool> m_ownsInput;
    std::vector<Slot> m_placed;
    std::size_t m_end = 0;
};

}  // namespace

Plan compile(Graph const& graph, std::size_t framesPerBlock)
{
    return Compiler(graph, framesPerBlock).compile();
}

}  // namespace nodus::host
