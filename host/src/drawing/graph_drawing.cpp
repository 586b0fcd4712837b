// Drawing graphs: tables for the nodes, small shapes for sources and results, edges between ports.
#include "nodus/host/graph_drawing.h"

#include "constant_text.h"
#include "labels.h"

#include "nodus/host/literals.h"

#include <algorithm>
#include <set>

namespace nodus::host {

namespace {

// Wide letters: a viewer without this font takes a narrower one, and nothing is cut off.
constexpr std::string_view kHead = R"(
  graph [rankdir=LR, bgcolor=white, pad=0.25, nodesep=0.22, ranksep=0.5]
  node [shape=plain, fontname="DejaVu Sans,Verdana,sans-serif", fontsize=11, fontcolor="#1f2933"]
  edge [arrowsize=0.55, penwidth=1.4]
)";

std::string portId(char side, Spot const& spot)
{
    return side + std::to_string(spot.offset) + "_" + std::to_string(static_cast<int>(spot.type));
}

// What a piece of a port is called within it: "x", "t", "t.x".
std::string pieceName(Port const& port, Spot const& spot)
{
    ValueType const& type = *port.type;
    std::size_t const offset = spot.offset - port.offset;
    if (type.id == TypeId::TQS)
        for (Part const& part : partsOfTqs())
            if (part.type == spot.type && part.offset == offset)
                return std::string(part.name);
    return std::string(type.laneNames[offset / type.laneSize]);
}

class Drawing {
public:
    explicit Drawing(Graph const& graph) : m_graph(graph), m_taken(graph.nodes.size())
    {
        for (GraphNode const& node : graph.nodes)
            for (Feed const& feed : node.feeds)
                if (feed.source.kind == Source::Kind::node)
                    m_taken[feed.source.index].insert({feed.source.offset, feed.type->id});
        for (GraphOutput const& output : graph.outputs)
            m_taken[output.node].insert({output.offset, output.type->id});
    }

    std::string draw(std::string_view title)
    {
        m_text = "digraph " + quoted(title) + " {" + std::string(kHead);
        for (std::size_t node = 0; node < m_graph.nodes.size(); ++node)
            addNode(node);
        for (std::size_t node = 0; node < m_graph.nodes.size(); ++node)
            for (Feed const& feed : m_graph.nodes[node].feeds)
                addEdge(sourceOf(feed), nameOf(node) + ":" + portId('i', spotOf(feed)) + ":w",
                        *feed.type, shiftText(feed.source));
        for (std::size_t i = 0; i < m_graph.outputs.size(); ++i) {
            GraphOutput const& output = m_graph.outputs[i];
            std::string const name = "result" + std::to_string(i);
            addShape(name, "result", output.name, *output.type, true);
            addEdge(nameOf(output.node) + ":" + portId('o', {output.offset, output.type->id}) +
                        ":e",
                    name + ":w", *output.type);
        }
        return std::move(m_text) + "}\n";
    }

private:
    using Rows = std::vector<std::string>;

    static std::string nameOf(std::size_t node) { return "node" + std::to_string(node); }
    static Spot spotOf(Feed const& feed) { return {feed.offset, feed.type->id}; }

    void addEdge(std::string const& from, std::string const& to, ValueType const& type,
                 std::string const& label = {})
    {
        m_text += "  " + from + " -> " + to + " [color=\"" + std::string(colourOf(type)) +
                  "\", tooltip=\"" + std::string(type.name) + "\"" +
                  (label.empty() ? "" : ", label=<" + coloured(label, kQuiet, 9) + ">") + "]\n";
    }

    // "frame -1": what is not of the row and frame that is evaluated.
    static std::string shiftText(Source const& source)
    {
        if (source.shift == 0)
            return {};
        return (source.kind == Source::Kind::column ? "row " : "frame ") +
               std::string(source.shift > 0 ? "+" : "") + std::to_string(source.shift);
    }

    // A source or a result.
    void addShape(std::string const& name, std::string_view kind, std::string_view text,
                  ValueType const& type, bool isResult)
    {
        std::string const colour(colourOf(type));
        m_text += "  " + name + " [shape=box, style=\"rounded,filled\", margin=\"0.1,0.04\", " +
                  "height=0.3, color=\"" + colour + "\", fillcolor=\"" +
                  (isResult ? colour : "white") +
                  "\", tooltip=" + quoted(std::string(kind) + ", " + std::string(type.name)) +
                  ", label=<" + (isResult ? "" : coloured(kind, kQuiet, 9) + " ") +
                  coloured(text, isResult ? "white" : kInk) + ">]\n";
    }

    // Where an edge begins; a source's shape comes with its first edge.
    std::string sourceOf(Feed const& feed)
    {
        Source const& source = feed.source;
        if (source.kind == Source::Kind::node)
            return nameOf(source.index) + ":" + portId('o', {source.offset, feed.type->id}) + ":e";
        if (source.kind == Source::Kind::parameter)
            return parameterOf(source, *feed.type);
        bool const isColumn = source.kind == Source::Kind::column;
        std::string const kind = isColumn                             ? "column"
                                 : source.kind == Source::Kind::frame ? "current"
                                                                      : "pixel";
        std::string const text = isColumn ? m_graph.columns[source.index]
                                 : source.kind == Source::Kind::frame  ? "frame"
                                 : source.kind == Source::Kind::pixelX ? "x"
                                                                       : "y";
        std::string const name = isColumn ? kind + std::to_string(source.index) : kind + "_" + text;
        if (m_sources.insert(name).second)
            addShape(name, kind, text, *feed.type, false);
        return name + ":e";
    }

    // A parameter, with its value, and a lane or a part of it where no more is taken.
    std::string parameterOf(Source const& source, ValueType const& type)
    {
        auto const found = std::ranges::find_if(m_graph.parameters, [&](Parameter const& known) {
            return source.offset >= known.port.offset &&
                   source.offset < known.port.offset + known.port.type->size;
        });
        Port const& port = found->port;
        bool const isWhole = port.type == &type;
        std::string const name = "parameter" + std::to_string(source.offset) + "_" +
                                 std::to_string(static_cast<int>(type.id));
        std::string const piece = isWhole ? "" : "." + pieceName(port, {source.offset, type.id});
        std::string const value =
            isWhole
                ? " = " +
                      shortened(valueText(type, port.standard.bytes.data(), port.standard.text), 40)
                : "";
        if (m_sources.insert(name).second)
            addShape(name, "parameter", port.name + piece + value, type, false);
        return name + ":e";
    }

    void addNode(std::size_t index)
    {
        GraphNode const& node = m_graph.nodes[index];
        NodeType const& type = *node.type;
        std::string const tint =
            type.outputs.empty() ? "#eef1f4" : std::string(colourOf(*type.outputs[0].type)) + "24";
        Rows inputs, outputs;
        for (Port const& port : type.inputs)
            addInputs(node, port, inputs);
        for (Port const& port : type.outputs)
            addOutputs(index, port, outputs);
        inputs.resize(std::max(inputs.size(), outputs.size()), "<TD COLSPAN=\"4\"></TD>");
        outputs.resize(inputs.size(), "<TD COLSPAN=\"3\"></TD>");
        std::string rows;
        for (std::size_t row = 0; row < inputs.size(); ++row)
            rows += "    <TR>" + inputs[row] + outputs[row] + "</TR>\n";
        std::string const title = "<B>" + coloured(node.name, kInk, 12) +
                                  "</B><BR ALIGN=\"LEFT\"/>" + coloured(type.name, "#52606d", 9) +
                                  "<BR ALIGN=\"LEFT\"/>";
        m_text += "  " + nameOf(index) + " [tooltip=" + quoted(type.family->doc) +
                  ", label=<\n    <TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" "
                  "CELLPADDING=\"3\" COLOR=\"" +
                  std::string(kFrame) + "\" BGCOLOR=\"white\">\n    <TR>" +
                  cell(title, "COLSPAN=\"7\" CELLPADDING=\"5\" ALIGN=\"LEFT\" BALIGN=\"LEFT\" "
                              "BGCOLOR=\"" +
                                  tint + "\"") +
                  "</TR>\n" + rows + "    </TABLE>>]\n";
    }

    // The mark where an edge arrives or leaves: full when there is one.
    static std::string mark(char side, Spot const& spot, bool isFull)
    {
        return cell(coloured(isFull ? "\u25CF" : "\u25CB", colourOf(valueType(spot.type)), 8),
                    "PORT=\"" + portId(side, spot) + "\"");
    }

    // The port, and a row for each piece of it that is fed.
    static void addInputs(GraphNode const& node, Port const& port, Rows& rows)
    {
        std::set<Spot> fed;
        for (Feed const& feed : node.feeds)
            if (feed.offset >= port.offset && feed.offset < port.offset + port.type->size)
                fed.insert(spotOf(feed));
        Spot const whole{port.offset, port.type->id};
        bool const isFed = fed.contains(whole);
        rows.push_back(mark('i', whole, isFed) + cell(escaped(port.name)) +
                       cell(typeText(*port.type)) +
                       cell(isFed ? "" : constantText(node, port, fed)));
        fed.erase(whole);
        for (Spot const& spot : fed)
            rows.push_back(
                mark('i', spot, true) +
                cell("&nbsp;&nbsp;" + coloured(pieceName(port, spot), kInk, 10)) +
                (spot.type == port.type->lane ? cell("") : cell(typeText(valueType(spot.type)))) +
                cell(""));
    }

    // The port, and a row for each piece of it that goes somewhere.
    void addOutputs(std::size_t index, Port const& port, Rows& rows) const
    {
        std::set<Spot> const& taken = m_taken[index];
        Spot const whole{port.offset, port.type->id};
        rows.push_back(cell("&nbsp;&nbsp;" + typeText(*port.type), kRight) +
                       cell(escaped(port.name), kRight) + mark('o', whole, taken.contains(whole)));
        for (Spot const& spot : taken)
            if (spot != whole && spot.offset >= port.offset &&
                spot.offset < port.offset + port.type->size)
                rows.push_back((spot.type == port.type->lane
                                    ? cell("")
                                    : cell(typeText(valueType(spot.type)), kRight)) +
                               cell(coloured(pieceName(port, spot), kInk, 10), kRight) +
                               mark('o', spot, true));
    }

    Graph const& m_graph;
    std::vector<std::set<Spot>> m_taken;  // of each node's outputs, by edges
    std::set<std::string> m_sources;      // that have their shapes
    std::string m_text;
};

}  // namespace

std::string drawGraph(Graph const& graph, std::string_view title)
{
    return Drawing(graph).draw(title);
}

}  // namespace nodus::host
