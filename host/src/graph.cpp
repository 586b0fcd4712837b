// Reading a graph: nodes and their types first, then the inputs, then the outputs.
#include "nodus/host/graph.h"

#include "nodus/host/json.h"
#include "nodus/host/literals.h"

#include <algorithm>
#include <cstring>

#include <unordered_map>
#include <unordered_set>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

constexpr std::string_view kSourceShape =
    R"(a source is {"from": "node.port"}, {"frame": true} or {"column": "name"})";

// Looking for the nearest name takes time; with very many faults, the first ones get it.
constexpr std::size_t kMostSearches = 20;

std::string named(ValueType const& type) { return std::string(type.name); }

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

class GraphReader {
public:
    GraphReader(std::string const& origin, Catalogue const& catalogue,
                GraphSurroundings const& surroundings, Diagnostics& diagnostics)
        : m_origin(origin), m_catalogue(catalogue), m_surroundings(surroundings),
          m_diagnostics(diagnostics)
    {
        if (surroundings.columns == nullptr)
            return;
        m_graph.columns = *surroundings.columns;
        for (std::string const& column : *surroundings.columns)
            m_columns.emplace(column, m_columns.size());
    }

    Graph read(JsonValue const& root)
    {
        if (!root.is(Kind::object)) {
            fault("", "a graph is an object with 'nodes' and 'outputs', not " + root.describe());
            return {};
        }
        checkKeys(root, {"nodes", "outputs"}, "");
        JsonValue const* const nodes = root.member("nodes");
        if (nodes == nullptr)
            fault("", "has no 'nodes'");
        else if (!nodes->is(Kind::object))
            fault("",
                  "'nodes' wants an object with a node for each name, not " + nodes->describe());
        else
            readNodes(*nodes);
        if (JsonValue const* const outputs = root.member("outputs"))
            readOutputs(*outputs);
        return std::move(m_graph);
    }

private:
    void fault(std::string_view place, std::string const& text)
    {
        m_diagnostics.add(m_origin + ": " + std::string(place) + (place.empty() ? "" : ": ") +
                          text);
    }

    void checkKeys(JsonValue const& object, std::initializer_list<std::string_view> known,
                   std::string_view place)
    {
        for (std::string const& key : object.keys)
            if (std::ranges::find(known, key) == known.end())
                fault(place, "unknown key " + inQuotes(key) + nearest(key, known, known));
    }

    // The nearest of the names, or all of them in a short list.
    template <typename Names>
    std::string nearest(std::string_view wrong, Names const& names,
                        std::vector<std::string_view> const& all)
    {
        std::string const near = ++m_searches <= kMostSearches ? didYouMean(wrong, names) : "";
        return !near.empty() || all.empty() ? near : "; known: " + alternatives(all);
    }

    std::string nearestNode(std::string_view wrong)
    {
        std::vector<std::string_view> names;
        for (std::size_t i = 0; m_searches < kMostSearches && i < m_graph.nodes.size(); ++i)
            names.push_back(m_graph.nodes[i].name);
        return nearest(wrong, names, {});
    }

    void readNodes(JsonValue const& nodes)
    {
        m_graph.nodes.reserve(nodes.items.size());
        for (std::size_t i = 0; i < nodes.items.size(); ++i)
            readNodeType(nodes.keys[i], nodes.items[i]);
        for (std::size_t i = 0; i < nodes.items.size(); ++i)
            if (m_graph.nodes[i].type != nullptr)
                if (JsonValue const* const inputs = nodes.items[i].member("inputs"))
                    readInputs(m_graph.nodes[i], *inputs);
    }

    void readNodeType(std::string const& name, JsonValue const& json)
    {
        GraphNode& node = m_graph.nodes.emplace_back();
        node.name = name;
        node.type = nullptr;
        // Of two nodes of one name the first is meant; the reader of the file has told it already.
        m_nodes.emplace(name, m_graph.nodes.size() - 1);
        std::string const place = "node " + inQuotes(name);
        if (name.empty() || name.find('.') != name.npos)
            fault(place, "a node's name is not empty and has no dots");
        if (!json.is(Kind::object)) {
            fault(place, "wants an object with 'type' and 'inputs', not " + json.describe());
            return;
        }
        checkKeys(json, {"type", "inputs"}, place);
        JsonValue const* const type = json.member("type");
        if (type == nullptr || !type->is(Kind::text)) {
            fault(place, "wants a 'type', the name of a node type");
            return;
        }
        node.type = m_catalogue.find(type->text);
        if (node.type == nullptr) {
            fault(place,
                  "unknown node type " + inQuotes(type->text) +
                      (++m_searches <= kMostSearches ? m_catalogue.suggestion(type->text) : ""));
            return;
        }
        node = makeNode(name, *node.type);
    }

    void readInputs(GraphNode& node, JsonValue const& inputs)
    {
        std::string const place = "node " + inQuotes(node.name);
        if (!inputs.is(Kind::object)) {
            fault(place,
                  "'inputs' wants an object with a value for each input, not " + inputs.describe());
            return;
        }
        for (std::size_t i = 0; i < inputs.items.size(); ++i) {
            Port const* const port = node.type->findInput(inputs.keys[i]);
            if (port != nullptr) {
                readInput(node, inputs.items[i], *port->type, port->offset,
                          place + ", input " + inQuotes(port->name));
                continue;
            }
            std::vector<std::string_view> names;
            for (Port const& known : node.type->inputs)
                names.push_back(known.name);
            fault(place, node.type->name + " has no input " + inQuotes(inputs.keys[i]) +
                             "; it has " + alternatives(names));
        }
    }

    void readInput(GraphNode& node, JsonValue const& json, ValueType const& type,
                   std::size_t offset, std::string const& place)
    {
        if (type.id == TypeId::TQS && json.is(Kind::object) && !looksLikeSource(json)) {
            readParts(node, json, offset, place);
        } else if (json.is(Kind::object)) {
            readSource(node, json, type, offset, place);
        } else if (!type.isScalar() && json.is(Kind::array) && type.id != TypeId::TQS &&
                   json.items.size() == type.laneNames.size()) {
            for (std::size_t lane = 0; lane < json.items.size(); ++lane)
                readInput(node, json.items[lane], valueType(type.lane),
                          offset + lane * type.laneSize,
                          place + ", lane " + std::string(type.laneNames[lane]));
        } else if (!type.isScalar()) {
            fault(place,
                  "wants " + named(type) + " (" + literalShape(type) + "), not " + json.describe());
        } else {
            std::string text;
            std::string const wrong = readScalar(json, type, node.constants.data() + offset, text);
            if (!wrong.empty())
                fault(place, wrong);
            else if (type.id == TypeId::String)
                setText(node, offset, std::move(text));
        }
    }

    void readParts(GraphNode& node, JsonValue const& json, std::size_t offset,
                   std::string const& place)
    {
        for (std::size_t i = 0; i < json.items.size(); ++i) {
            auto const known = partsOfTqs();
            auto const part = std::ranges::find(known, json.keys[i], &Part::name);
            if (part == known.end())
                fault(place, "a TQS has no part " + inQuotes(json.keys[i]) +
                                 "; it has t, q and s; or " + std::string(kSourceShape));
            else
                readInput(node, json.items[i], valueType(part->type), offset + part->offset,
                          place + ", part " + std::string(part->name));
        }
    }

    static bool looksLikeSource(JsonValue const& json)
    {
        return std::ranges::any_of(json.keys, [](std::string const& key) {
            return key == "from" || key == "frame" || key == "column" || key == "pixel";
        });
    }

    void readSource(GraphNode& node, JsonValue const& json, ValueType const& wanted,
                    std::size_t offset, std::string const& place)
    {
        if (json.items.size() != 1 || !looksLikeSource(json)) {
            fault(place, "wants " + named(wanted) + "; " + std::string(kSourceShape));
            return;
        }
        std::string const& key = json.keys.front();
        JsonValue const& item = json.items.front();
        auto const feed = [&](Source const& source) {
            if (wanted.id == TypeId::String)
                setText(node, offset, {});
            node.feeds.push_back({offset, &wanted, source});
        };
        auto const isA = [&](TypeId type, std::string const& what) {
            if (wanted.id != type)
                fault(place,
                      "wants " + named(wanted) + ", " + what + " is " + named(valueType(type)));
            return wanted.id == type;
        };
        if (key == "frame") {
            if (!item.is(Kind::boolean) || !item.boolean)
                fault(place, "'frame' wants true, not " + item.describe());
            else if (isA(TypeId::Int32, "the frame"))
                feed({Source::Kind::frame});
            return;
        }
        if (!item.is(Kind::text)) {
            fault(place, inQuotes(key) + " wants a text, not " + item.describe());
            return;
        }
        if (key == "from") {
            if (auto const found = findOutput(item.text, place)) {
                if (found->type->id != wanted.id)
                    fault(place, "wants " + named(wanted) + ", " + inQuotes(found->name) + " is " +
                                     named(*found->type));
                else
                    feed({Source::Kind::node, found->node, found->offset});
            }
        } else if (key == "column") {
            readColumn(item.text, wanted, place, feed);
        } else if (item.text != "x" && item.text != "y") {
            fault(place, "'pixel' wants \"x\" or \"y\", not " + item.describe());
        } else if (isA(TypeId::Float, "a pixel's " + item.text)) {
            if (!m_surroundings.pixels)
                fault(place, "there are pixels only when an image is evaluated");
            feed({item.text == "x" ? Source::Kind::pixelX : Source::Kind::pixelY});
        }
    }

    template <typename Add>
    void readColumn(std::string const& name, ValueType const& wanted, std::string const& place,
                    Add feed)
    {
        if (!wanted.isScalar() || wanted.id == TypeId::String) {
            fault(place, "wants " + named(wanted) + ", a column has one number a row" +
                             (wanted.isScalar() ? "" : ": give a column for each lane"));
        } else if (m_surroundings.anyColumn) {
            auto const [column, isNew] = m_columns.emplace(name, m_columns.size());
            if (isNew)
                m_graph.columns.push_back(name);
            feed({Source::Kind::column, column->second});
        } else if (m_surroundings.tablePath.empty()) {
            fault(place, "column " + inQuotes(name) + " needs a table: give one with --data");
        } else if (m_surroundings.columns != nullptr) {
            auto const found = m_columns.find(name);
            if (found == m_columns.end())
                fault(place, m_surroundings.tablePath + " has no column " + inQuotes(name) +
                                 nearest(name, *m_surroundings.columns,
                                         {m_surroundings.columns->begin(),
                                          m_surroundings.columns->end()}));
            else
                feed({Source::Kind::column, found->second});
        }
    }

    // What a path means: a port, a lane or a part. Nothing, and a fault, when it means nothing.
    std::optional<GraphOutput> findOutput(std::string const& text, std::string const& place)
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
            fault(place, inQuotes(path.node) +
                             " has more than one output; say which: " + alternatives(names));
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
            fault(place, inQuotes(portName) + " is " + named(*port->type) + " and has no " +
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

    void readOutputs(JsonValue const& outputs)
    {
        if (!outputs.is(Kind::array)) {
            fault("", "'outputs' wants an array of names, not " + outputs.describe());
            return;
        }
        for (std::size_t i = 0; i < outputs.items.size(); ++i) {
            JsonValue const& item = outputs.items[i];
            std::string const place = "output " + std::to_string(i + 1);
            if (!item.is(Kind::text)) {
                fault(place,
                      "wants a text, the name of a node or of its port, not " + item.describe());
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

    void addOutput(GraphOutput output, std::string const& place)
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

    std::string const& m_origin;
    Catalogue const& m_catalogue;
    GraphSurroundings const& m_surroundings;
    Diagnostics& m_diagnostics;
    Graph m_graph;
    std::unordered_map<std::string_view, std::size_t> m_nodes, m_columns;
    std::unordered_set<std::string> m_listed;
    std::size_t m_searches = 0;
};

Graph check(std::optional<JsonValue> const& root, std::string const& origin,
            Catalogue const& catalogue, GraphSurroundings const& surroundings,
            Diagnostics& diagnostics)
{
    if (!root)
        return {};
    Graph graph = GraphReader(origin, catalogue, surroundings, diagnostics).read(*root);
    orderGraph(graph, origin, diagnostics);
    return graph;
}

}  // namespace

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
    return check(readJsonFile(path, diagnostics), path, catalogue, surroundings, diagnostics);
}

Graph parseGraph(std::string_view text, std::string const& origin, Catalogue const& catalogue,
                 GraphSurroundings const& surroundings, Diagnostics& diagnostics)
{
    return check(parseJson(text, origin, diagnostics), origin, catalogue, surroundings,
                 diagnostics);
}

}  // namespace nodus::host
