// Plans for rows: which nodes are needed, which of them once, and where each port's column lies.
//
// A column has one value a row, side by side. Columns that are read no more give their place to
// later ones, so that few are hot; sources, texts and what the graph lists keep theirs.
#include "columns.h"
#include "nodus/host/plan.h"
#include "plan_layout.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace nodus::host {

namespace {

constexpr std::size_t kForever = Column::kForever;

class RowCompiler {
public:
    RowCompiler(Graph const& graph, std::size_t rows)
        : m_graph(graph), m_rowsPerBlock(rows), m_nodes(graph.nodes.size())
    {
    }

    Plan compile()
    {
        findKernels();
        if (std::ranges::none_of(m_nodes, [](Node const& node) { return node.rows.solve; }))
            return host::compile(m_graph, m_rowsPerBlock);
        findNeeded();
        for (std::size_t const node : m_order)
            addColumns(node);
        // What only unneeded nodes take from the table is held against its type all the same.
        for (GraphNode const& node : m_graph.nodes)
            for (Feed const& feed : node.feeds)
                if (feed.source.kind == Source::Kind::column)
                    refOf(feed);
        for (GraphOutput const& output : m_graph.outputs)
            m_columns[refOf(output.node, output.offset).column].lastUse = kForever;
        shareBytes();
        placeColumns();
        // What is evaluated once comes first: it takes only from what is.
        for (bool const isOnce : {true, false})
            for (std::size_t const node : m_order)
                if (m_nodes[node].isOnce == isOnce) {
                    addStep(node);
                    m_plan.onceCount += isOnce ? 1 : 0;
                }
        for (GraphOutput const& output : m_graph.outputs)
            m_plan.outputs.push_back(
                {output.name, output.type, placeOf(refOf(output.node, output.offset))});
        return std::move(m_plan);
    }

private:
    struct Ref {
        std::size_t column = 0, inner = 0;
    };
    struct Node {
        runtime::RowsOfKernel rows{};
        bool isNeeded = false, isOnce = false;
        std::vector<Ref> inputs;      // by port
        std::size_t firstOutput = 0;  // its column; the others follow
        std::size_t inputColumn = 0;  // of a kernel without rows: its blocks
        std::size_t number = 0;       // in m_order
        std::size_t workspace = 0;
    };

    NodeType const& type(std::size_t node) const { return *m_graph.nodes[node].type; }

    void findKernels()
    {
        std::unordered_map<NodeType const*, runtime::RowsOfKernel> known;
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            auto const [found, isNew] = known.try_emplace(&type(i));
            if (isNew && type(i).module != nullptr)
                found->second = type(i).module->rowsOf(kernelName(type(i)));
            m_nodes[i].rows = found->second;
        }
    }

    // Of a kernel without rows nobody knows what it asks for.
    bool mayLog(Node const& node) const
    {
        return node.rows.solve == nullptr || node.rows.needsServices;
    }

    void findNeeded()
    {
        for (GraphOutput const& output : m_graph.outputs)
            m_nodes[output.node].isNeeded = true;
        for (auto index = m_graph.order.rbegin(); index != m_graph.order.rend(); ++index) {
            Node& node = m_nodes[*index];
            node.isNeeded = node.isNeeded || mayLog(node);
            if (node.isNeeded)
                for (Feed const& feed : m_graph.nodes[*index].feeds)
                    if (feed.source.kind == Source::Kind::node)
                        m_nodes[feed.source.index].isNeeded = true;
        }
        for (std::size_t const index : m_graph.order) {
            Node& node = m_nodes[index];
            if (!node.isNeeded)
                continue;
            node.number = m_order.size();
            m_order.push_back(index);
            node.isOnce = !mayLog(node) && !node.rows.needsFrames &&
                          std::ranges::all_of(m_graph.nodes[index].feeds, [&](Feed const& feed) {
                              return feed.source.kind == Source::Kind::node &&
                                     m_nodes[feed.source.index].isOnce;
                          });
        }
    }

    std::size_t newColumn(std::size_t size, bool isOnce, std::size_t lastUse)
    {
        m_columns.push_back({size, isOnce, lastUse});
        return m_columns.size() - 1;
    }

    // What lies at an offset of a node's output block.
    Ref refOf(std::size_t index, std::size_t offset) const
    {
        Node const& node = m_nodes[index];
        if (node.rows.solve == nullptr)
            return {node.firstOutput, offset};
        std::size_t port = type(index).outputs.size() - 1;
        while (type(index).outputs[port].offset > offset)
            --port;
        return {node.firstOutput + port, offset - type(index).outputs[port].offset};
    }

    Ref refOf(Feed const& feed)
    {
        if (feed.source.kind == Source::Kind::node)
            return refOf(feed.source.index, feed.source.offset);
        std::size_t const column = feed.source.kind == Source::Kind::column ? feed.source.index : 0;
        for (std::size_t i = 0; i < m_plan.sources.size(); ++i)
            if (m_plan.sources[i].isOf(feed))
                return {m_sources[i]};
        m_sources.push_back(newColumn(feed.type->size, false, kForever));
        m_plan.sources.push_back(
            {feed.source.kind, column, feed.type, {}, feed.source.shift, feed.source.beyond});
        return {m_sources.back()};
    }

    static bool isWithin(Feed const& feed, Port const& port)
    {
        return feed.offset >= port.offset && feed.offset < port.offset + port.type->size;
    }

    void addColumns(std::size_t index)
    {
        Node& node = m_nodes[index];
        auto const& feeds = m_graph.nodes[index].feeds;
        auto const use = [&](Ref const& ref) {
            Column& column = m_columns[ref.column];
            column.lastUse = std::max(column.lastUse, node.number);
            return ref;
        };
        if (node.rows.solve == nullptr) {
            for (Feed const& feed : feeds)
                use(refOf(feed));
            node.inputColumn =
                newColumn(roundUp(type(index).inputExtent, kBlockAlignment), false, kForever);
            node.firstOutput =
                newColumn(roundUp(type(index).outputExtent, kBlockAlignment), false, kForever);
            return;
        }
        for (Port const& port : type(index).inputs) {
            std::size_t fed = 0;
            Feed const* whole = nullptr;
            for (Feed const& feed : feeds)
                if (isWithin(feed, port)) {
                    fed += feed.type->size;
                    whole = feed.type == port.type ? &feed : whole;
                    use(refOf(feed));
                }
            if (whole != nullptr)
                node.inputs.push_back(refOf(*whole));
            else if (fed == 0)
                node.inputs.push_back({newColumn(port.type->size, true, kForever)});
            else  // with constants in some of its lanes it keeps its place, and they stay in it
                node.inputs.push_back({newColumn(port.type->size, node.isOnce,
                                                 fed == port.type->size ? node.number : kForever)});
        }
        node.firstOutput = m_columns.size();
        for (Port const& port : type(index).outputs)
            newColumn(port.type->size, node.isOnce,
                      port.type->id == TypeId::String ? kForever : node.number);
    }

    void shareBytes()
    {
        SharedBytes bytes(m_columns);
        for (std::size_t const index : m_order) {
            Node const& node = m_nodes[index];
            for (Ref const& input : node.inputs)
                bytes.place(input.column);
            std::size_t const outputs = type(index).outputs.size();
            for (std::size_t i = 0; i < outputs && node.rows.solve != nullptr; ++i)
                bytes.place(node.firstOutput + i);
            for (Ref const& input : node.inputs)
                bytes.release(input.column, node.number);
            for (Feed const& feed : m_graph.nodes[index].feeds)
                bytes.release(refOf(feed).column, node.number);
            for (std::size_t i = 0; i < outputs && node.rows.solve != nullptr; ++i)
                bytes.release(node.firstOutput + i, node.number);
        }
        // Blocks, and sources that only they read.
        for (std::size_t index = 0; index < m_columns.size(); ++index)
            bytes.place(index);
        m_bytesPerRow = bytes.bytesPerRow();
    }

    void placeColumns()
    {
        std::size_t const rows = m_rowsPerBlock != 0 ? m_rowsPerBlock : rowsFor(m_bytesPerRow);
        m_plan.framesPerBlock = rows;
        m_end = m_bytesPerRow * rows;
        for (Column& column : m_columns) {
            if (column.isOnce) {
                m_end = roundUp(m_end, kBlockAlignment);
                column.offset = m_end;
                m_end += column.size;
            } else {
                column.offset *= rows;
            }
        }
        for (std::size_t const index : m_order) {
            Node& node = m_nodes[index];
            if (node.rows.solve != nullptr || type(index).workspaceExtent == 0)
                continue;
            m_end = roundUp(m_end, kBlockAlignment);
            node.workspace = m_end;
            m_end += type(index).workspaceExtent;
        }
        m_plan.arenaSize = narrow(roundUp(std::max(m_end, std::size_t{1}), kCacheLine));
        for (std::size_t i = 0; i < m_sources.size(); ++i)
            m_plan.sources[i].place = placeOf({m_sources[i]});
    }

    Place placeOf(Ref const& ref) const
    {
        Column const& column = m_columns[ref.column];
        return {narrow(column.offset + ref.inner), column.isOnce ? 0 : narrow(column.size)};
    }

    void addConstant(Place place, std::byte const* bytes, std::size_t size)
    {
        m_plan.constants.push_back({place, m_plan.constantBytes.size(), size});
        m_plan.constantBytes.insert(m_plan.constantBytes.end(), bytes, bytes + size);
    }

    void addMove(Feed const& feed, Place to)
    {
        m_plan.moves.push_back({placeOf(refOf(feed)), to, feed.type->id});
    }

    void addStep(std::size_t index)
    {
        GraphNode const& graphNode = m_graph.nodes[index];
        Node const& node = m_nodes[index];
        RowStep step{};
        step.shift = graphNode.shift;
        step.solve = node.rows.solve;
        step.needsFrames = node.rows.needsFrames;
        step.clearsOutputs = type(index).family->mayKeepOutputs;
        step.firstMove = narrow(m_plan.moves.size());
        step.firstPort = narrow(m_plan.ports.size());
        step.step = narrow(m_plan.steps.size());
        if (step.solve == nullptr) {
            addBlockStep(index);
            m_plan.rowSteps.push_back(step);
            return;
        }
        step.inputCount = narrow(node.inputs.size());
        step.outputCount = narrow(type(index).outputs.size());
        for (std::size_t i = 0; i < node.inputs.size(); ++i) {
            Place const place = placeOf(node.inputs[i]);
            m_plan.ports.push_back(place);
            addInput(graphNode, type(index).inputs[i], place);
        }
        step.moveCount = narrow(m_plan.moves.size()) - step.firstMove;
        for (std::size_t i = 0; i < step.outputCount; ++i) {
            Place const place = placeOf({node.firstOutput + i});
            m_plan.ports.push_back(place);
            if (type(index).outputs[i].type->id == TypeId::String) {
                m_plan.texts.push_back({place, {}});
                step.clearsOutputs = false;
            }
        }
        m_plan.rowSteps.push_back(step);
    }

    // What is not read where it lies.
    void addInput(GraphNode const& node, Port const& port, Place place)
    {
        std::size_t fed = 0;
        for (Feed const& feed : node.feeds) {
            if (!isWithin(feed, port))
                continue;
            if (feed.type == port.type)
                return;
            fed += feed.type->size;
            auto const inner = static_cast<std::uint32_t>(feed.offset - port.offset);
            addMove(feed, {place.offset + inner, place.stride});
        }
        if (port.type->id == TypeId::String)
            addText(m_plan, node, port, place);
        else if (fed != port.type->size)
            addConstant(place, node.constants.data() + port.offset, port.type->size);
    }

    void addBlockStep(std::size_t index)
    {
        GraphNode const& graphNode = m_graph.nodes[index];
        NodeType const& nodeType = type(index);
        Step step{};
        step.solve = nodeType.solve;
        step.solveWithWorkspace = nodeType.solveWithWorkspace;
        step.init = nodeType.init;
        step.shift = graphNode.shift;
        step.in = placeOf({m_nodes[index].inputColumn});
        step.out = placeOf({m_nodes[index].firstOutput});
        step.workspace = narrow(m_nodes[index].workspace);
        step.firstMove = narrow(m_plan.moves.size());
        for (Feed const& feed : graphNode.feeds)
            addMove(feed, {narrow(step.in.offset + feed.offset), step.in.stride});
        step.moveCount = narrow(m_plan.moves.size()) - step.firstMove;
        addConstant(step.in, graphNode.constants.data(), graphNode.constants.size());
        for (Port const& port : nodeType.inputs)
            if (port.type->id == TypeId::String)
                addText(m_plan, graphNode, port,
                        {narrow(step.in.offset + port.offset), step.in.stride});
        step.outExtent = narrow(nodeType.outputExtent);
        for (Port const& port : nodeType.outputs)
            if (port.type->id == TypeId::String) {
                step.outExtent = 0;
                m_plan.texts.push_back(
                    {{narrow(step.out.offset + port.offset), step.out.stride}, {}});
            }
        m_plan.steps.push_back(step);
    }

    Graph const& m_graph;
    std::size_t m_rowsPerBlock;
    Plan m_plan;
    std::vector<Node> m_nodes;
    std::vector<std::size_t> m_order;  // of the nodes that are needed
    std::vector<Column> m_columns;
    std::vector<std::size_t> m_sources;  // the columns of plan.sources
    std::size_t m_bytesPerRow = 0, m_end = 0;
};

}  // namespace

Plan compileRows(Graph const& graph, std::size_t framesPerBlock)
{
    return RowCompiler(graph, framesPerBlock).compile();
}

}  // namespace nodus::host
