// Reading the inputs of nodes: constants, and sources for a value, a lane or a part.
#include "graph_reader.h"

#include "nodus/host/literals.h"

#include <algorithm>
#include <array>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

constexpr std::array<std::string_view, 4> kSourceKeys{"from", "frame", "column", "pixel"};
constexpr std::string_view kSourceShape =
    R"(a source is {"from": "node.port"}, {"frame": true}, {"column": "name"} or {"pixel": "x"})";

std::string named(ValueType const& type) { return std::string(type.name); }

bool isSourceKey(std::string_view key)
{
    return std::ranges::find(kSourceKeys, key) != kSourceKeys.end();
}

bool looksLikeSource(JsonValue const& json) { return std::ranges::any_of(json.keys, isSourceKey); }

}  // namespace

void GraphReader::readInputs(GraphNode& node, JsonValue const& inputs)
{
    Place const place = placeOf(node);
    if (!inputs.is(Kind::object)) {
        fault({inputs.line, place.text},
              "'inputs' wants an object with a value for each input, not " + inputs.describe());
        return;
    }
    for (std::size_t i = 0; i < inputs.items.size(); ++i) {
        JsonValue const& item = inputs.items[i];
        Port const* const port = node.type->findInput(inputs.keys[i]);
        if (port != nullptr) {
            readInput(node, item, *port->type, port->offset,
                      {item.line, place.text + ", input " + inQuotes(port->name)});
            continue;
        }
        std::vector<std::string_view> names;
        for (Port const& known : node.type->inputs)
            names.push_back(known.name);
        fault({item.line, place.text}, node.type->name + " has no input " +
                                           inQuotes(inputs.keys[i]) + "; it has " +
                                           alternatives(names));
    }
}

void GraphReader::readInput(GraphNode& node, JsonValue const& json, ValueType const& type,
                            std::size_t offset, Place const& place)
{
    if (type.id == TypeId::TQS && json.is(Kind::object) && !looksLikeSource(json)) {
        readParts(node, json, offset, place);
    } else if (json.is(Kind::object)) {
        readSource(node, json, type, offset, place);
    } else if (!type.isScalar() && json.is(Kind::array) && type.id != TypeId::TQS &&
               json.items.size() == type.laneNames.size()) {
        for (std::size_t lane = 0; lane < json.items.size(); ++lane)
            readInput(node, json.items[lane], valueType(type.lane), offset + lane * type.laneSize,
                      {json.items[lane].line,
                       place.text + ", lane " + std::string(type.laneNames[lane])});
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

void GraphReader::readParts(GraphNode& node, JsonValue const& json, std::size_t offset,
                            Place const& place)
{
    for (std::size_t i = 0; i < json.items.size(); ++i) {
        JsonValue const& item = json.items[i];
        auto const known = partsOfTqs();
        auto const part = std::ranges::find(known, json.keys[i], &Part::name);
        if (part == known.end())
            fault({item.line, place.text}, "a TQS has no part " + inQuotes(json.keys[i]) +
                                               "; it has t, q and s; or " +
                                               std::string(kSourceShape));
        else
            readInput(node, item, valueType(part->type), offset + part->offset,
                      {item.line, place.text + ", part " + std::string(part->name)});
    }
}

void GraphReader::readSource(GraphNode& node, JsonValue const& json, ValueType const& type,
                             std::size_t offset, Place const& place)
{
    std::size_t const faultsBefore = m_faults.faults().size();
    for (std::size_t i = 0; i < json.items.size(); ++i)
        if (!isSourceKey(json.keys[i]))
            fault({json.items[i].line, place.text},
                  "unknown member " + inQuotes(json.keys[i]) + "; " + std::string(kSourceShape));
    if (m_faults.faults().size() != faultsBefore)
        return;
    if (json.items.size() != 1) {
        fault(place, (json.items.empty() ? "wants " + named(type) + ", not an empty object; "
                                         : "there is no source of both " + inQuotes(json.keys[0]) +
                                               " and " + inQuotes(json.keys[1]) + "; ") +
                         std::string(kSourceShape));
        return;
    }
    if (auto const source = sourceOf(json.keys.front(), json.items.front(), type, place)) {
        if (type.id == TypeId::String)
            setText(node, offset, {});
        node.feeds.push_back({offset, &type, *source});
    }
}

std::optional<Source> GraphReader::sourceOf(std::string const& key, JsonValue const& item,
                                            ValueType const& type, Place const& place)
{
    auto const isA = [&](TypeId wanted, std::string const& what) {
        if (type.id != wanted)
            fault(place, "wants " + named(type) + ", " + what + " is " + named(valueType(wanted)));
        return type.id == wanted;
    };
    if (key == "frame") {
        if (!item.is(Kind::boolean) || !item.boolean)
            fault(place, "'frame' wants true, not " + item.describe());
        else if (isA(TypeId::Int32, "the frame"))
            return Source{Source::Kind::frame};
        return std::nullopt;
    }
    if (!item.is(Kind::text)) {
        fault(place, inQuotes(key) + " wants a text, not " + item.describe());
        return std::nullopt;
    }
    if (key == "from")
        return readFrom(item.text, type, place);
    if (key == "column")
        return readColumn(item.text, type, place);
    if (item.text != "x" && item.text != "y") {
        fault(place, "'pixel' wants \"x\" or \"y\", not " + item.describe());
        return std::nullopt;
    }
    if (!isA(TypeId::Float, "a pixel's " + item.text))
        return std::nullopt;
    if (!m_surroundings.pixels && !m_firstPixel)
        m_firstPixel = place;
    return Source{item.text == "x" ? Source::Kind::pixelX : Source::Kind::pixelY};
}

std::optional<Source> GraphReader::readFrom(std::string const& path, ValueType const& type,
                                            Place const& place)
{
    auto const found = findOutput(path, place);
    if (!found)
        return std::nullopt;
    if (found->type->id == type.id)
        return Source{Source::Kind::node, found->node, found->offset};
    fault(place,
          "wants " + named(type) + ", " + inQuotes(found->name) + " is " + named(*found->type));
    return std::nullopt;
}

std::optional<Source> GraphReader::readColumn(std::string const& name, ValueType const& type,
                                              Place const& place)
{
    if (!type.isScalar() || type.id == TypeId::String) {
        fault(place, "wants " + named(type) + ", a column has one number a row" +
                         (type.isScalar() ? "" : ": give a column for each lane"));
        return std::nullopt;
    }
    if (m_surroundings.anyColumn) {
        auto const [column, isNew] = m_columns.emplace(name, m_columns.size());
        if (isNew)
            m_graph.columns.push_back(name);
        return Source{Source::Kind::column, column->second};
    }
    if (m_surroundings.tablePath.empty()) {
        if (!m_firstColumn)
            m_firstColumn = place;
        if (m_columns.emplace(name, m_columns.size()).second)
            m_missingColumns.push_back(name);
        return std::nullopt;
    }
    if (m_surroundings.columns == nullptr)
        return std::nullopt;  // that the table cannot be read has been told
    if (auto const found = m_columns.find(name); found != m_columns.end())
        return Source{Source::Kind::column, found->second};
    fault(place, m_surroundings.tablePath + " has no column " + inQuotes(name) +
                     nearest(name, *m_surroundings.columns,
                             {m_surroundings.columns->begin(), m_surroundings.columns->end()}));
    return std::nullopt;
}

void GraphReader::tellWhatIsMissing()
{
    if (m_firstColumn) {
        bool const isOne = m_missingColumns.size() == 1;
        fault(isOne ? *m_firstColumn : Place{m_firstColumn->line, ""},
              (isOne ? "column " + inQuotes(m_missingColumns.front()) + " needs a table"
                     : "the columns " + alternatives(m_missingColumns, "and") + " need a table") +
                  (m_surroundings.pixels
                       ? ", and an image is evaluated without one: its sources are pixels and the "
                         "frame"
                       : ": give one with --data TABLE.csv"));
    }
    if (m_firstPixel)
        fault(*m_firstPixel, "there are pixels only when an image is evaluated, with --image");
}

}  // namespace nodus::host
