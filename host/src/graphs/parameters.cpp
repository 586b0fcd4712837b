// Parameters of a graph: what is declared, what takes them, and values in their place.
#include "graph_reader.h"

#include "nodus/host/literals.h"

#include <algorithm>
#include <cstring>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

std::string textOf(JsonValue const& json, std::string_view member)
{
    JsonValue const* const found = json.member(member);
    return found != nullptr ? found->text : "";
}

bool isWithin(Feed const& feed, std::size_t begin, std::size_t end)
{
    return feed.offset >= begin && feed.offset + feed.type->size <= end;
}

// What the holder has at that offset, constant or fed, goes where the feed goes.
void bind(GraphNode& node, Feed const& feed, GraphNode const& holder, std::vector<Feed>& feeds)
{
    std::size_t const begin = feed.source.offset, end = begin + feed.type->size;
    std::memcpy(node.constants.data() + feed.offset, holder.constants.data() + begin,
                feed.type->size);
    if (feed.type->id == TypeId::String)
        for (auto const& [offset, text] : holder.texts)
            if (offset == begin)
                setText(node, feed.offset, text);
    for (Feed const& given : holder.feeds)
        if (isWithin(given, begin, end)) {
            feeds.push_back({feed.offset + (given.offset - begin), given.type, given.source});
        } else if (isWithin({begin, feed.type, {}}, given.offset,
                            given.offset + given.type->size)) {
            feeds.push_back({feed.offset, feed.type, given.source});
            feeds.back().source.offset += begin - given.offset;
        }
}

}  // namespace

void GraphReader::readParameters(JsonValue const& parameters)
{
    if (!parameters.is(Kind::object)) {
        fault({parameters.line, ""},
              "'parameters' wants an object with a parameter for each name, not " +
                  parameters.describe());
        return;
    }
    for (std::size_t i = 0; i < parameters.items.size(); ++i)
        readParameter(parameters.keys[i], parameters.items[i]);
}

void GraphReader::readParameter(std::string const& name, JsonValue const& json)
{
    Place const place{json.line, "parameter " + inQuotes(name)};
    if (name.empty() || name.find('.') != name.npos)
        fault(place, "a parameter's name is not empty and has no dots");
    if (!json.is(Kind::object)) {
        fault(place, "wants an object with 'type' and 'value', not " + json.describe());
        return;
    }
    checkMembers(json, {"type", "value", "doc", "unit"}, place);
    for (std::string_view const text : {"type", "doc", "unit"})
        if (JsonValue const* const member = json.member(text);
            member != nullptr ? !member->is(Kind::text) : text == "type") {
            fault({member != nullptr ? member->line : place.line, place.text},
                  text == "type" ? "wants a 'type', the type of a port: Float, Int32, ..."
                                 : "'" + std::string(text) + "' wants a text");
            return;
        }
    ValueType const* const type = findValueType(textOf(json, "type"));
    if (type == nullptr) {
        std::vector<std::string_view> names;
        for (ValueType const& known : valueTypes())
            names.push_back(known.name);
        fault({json.member("type")->line, place.text},
              "unknown type " + inQuotes(textOf(json, "type")) +
                  nearest(textOf(json, "type"), names, names));
        return;
    }
    std::string const unit = textOf(json, "unit");
    if (!unit.empty() && unit != "rad" && unit != "deg")
        fault({json.member("unit")->line, place.text},
              inQuotes(unit) + " is no unit that is known; rad and deg are");
    if (findParameter(name) != nullptr)
        return;  // the reader of the file has told it
    Port port{name, type, placePort(*type, m_parametersEnd), neutralValue(*type), unit, {}};
    if (JsonValue const* const value = json.member("value")) {
        JsonValue literal = *value;
        std::string wrong = understand(literal, port);
        if (wrong.empty())
            wrong = readValue(literal, port.standard);
        if (!wrong.empty())
            fault({value->line, place.text}, wrong);
    }
    m_graph.parameters.push_back({std::move(port), textOf(json, "doc")});
}

Parameter const* GraphReader::findParameter(std::string_view name) const
{
    auto const found = std::ranges::find_if(
        m_graph.parameters, [&](Parameter const& known) { return known.port.name == name; });
    return found != m_graph.parameters.end() ? &*found : nullptr;
}

std::optional<Source> GraphReader::readParameterSource(std::string const& path,
                                                       ValueType const& type, Place const& place)
{
    auto const dot = path.find('.');
    Parameter const* const found = findParameter(path.substr(0, dot));
    if (found == nullptr) {
        std::vector<std::string_view> names;
        for (Parameter const& known : m_graph.parameters)
            names.push_back(known.port.name);
        fault(place, "the graph has no parameter " + inQuotes(path.substr(0, dot)) +
                         nearest(path.substr(0, dot), names, names));
        return std::nullopt;
    }
    Port const& port = found->port;
    auto const piece = findPiece(*port.type, dot == path.npos ? "" : path.substr(dot + 1));
    std::string const what = "parameter " + inQuotes(path) + " is ";
    if (!piece || path.ends_with('.'))
        fault(place, "parameter " + inQuotes(port.name) + " is " + std::string(port.type->name) +
                         " and has no " + inQuotes(path.substr(dot + 1)));
    else if (piece->type->id != type.id)
        fault(place,
              "wants " + std::string(type.name) + ", " + what + std::string(piece->type->name));
    else
        return Source{Source::Kind::parameter, 0, port.offset + piece->offset};
    return std::nullopt;
}

void bindParameters(Graph& graph, GraphNode const& holder)
{
    for (GraphNode& node : graph.nodes) {
        auto const takes = [](Feed const& feed) {
            return feed.source.kind == Source::Kind::parameter;
        };
        if (std::ranges::none_of(node.feeds, takes))
            continue;
        std::vector<Feed> feeds;
        for (Feed const& feed : node.feeds)
            if (takes(feed))
                bind(node, feed, holder, feeds);
            else
                feeds.push_back(feed);
        node.feeds = std::move(feeds);
    }
}

}  // namespace nodus::host
