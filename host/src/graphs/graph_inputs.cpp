// Reading the inputs of nodes: constants, and sources for a value, a lane or a part.
#include "graph_reader.h"

#include "nodus/host/literals.h"

#include <algorithm>
#include <array>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

constexpr std::array<std::string_view, 5> kSourceKeys{"from", "frame", "column", "pixel",
                                                      "parameter"};
// What stands beside a source and says more.
constexpr std::array<std::string_view, 6> kFurtherKeys{"row",     "rows",   "frames",
                                                       "default", "window", "comment"};
constexpr std::string_view kSourceShape =
    R"(a source is {"from": "node.port"}, {"frame": true}, {"column": "name"}, {"parameter": "name"} or {"pixel": "x"})";

std::string named(ValueType const& type) { return std::string(type.name); }

template <typename Keys> bool isAmong(Keys const& keys, std::string_view key)
{
    return std::ranges::find(keys, key) != keys.end();
}

bool looksLikeSource(JsonValue const& json)
{
    return std::ranges::any_of(json.keys,
                               [](std::string_view key) { return isAmong(kSourceKeys, key); });
}

// Where another node's value is taken from, "frame" may say of which frame.
bool isFurther(JsonValue const& json, std::size_t i)
{
    return isAmong(kFurtherKeys, json.keys[i]) ||
           (json.keys[i] == "frame" && json.items[i].isNumber() && json.member("from") != nullptr);
}

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
            readInput({node,
                       *port,
                       *port->type,
                       port->offset,
                       {item.line, place.text + ", input " + inQuotes(port->name)}},
                      item);
            continue;
        }
        std::vector<std::string_view> names;
        for (Port const& known : node.type->inputs)
            names.push_back(known.name);
        fault({item.line, place.text},
              node.type->name + " has no input " + inQuotes(inputs.keys[i]) +
                  (names.empty() ? "" : "; it has " + alternatives(names)));
    }
}

void GraphReader::readInput(Target const& target, JsonValue const& json)
{
    auto const& [node, port, type, offset, place] = target;
    if (type.id == TypeId::TQS && json.is(Kind::object) && !looksLikeSource(json)) {
        readParts(target, json);
    } else if (json.is(Kind::object)) {
        readSource(target, json);
    } else if (json.is(Kind::text) && type.id != TypeId::String && json.text.starts_with('=')) {
        readExpression(target, json.text);
    } else if (!type.isScalar() && json.is(Kind::array) && type.id != TypeId::TQS &&
               json.items.size() == type.laneNames.size()) {
        for (std::size_t lane = 0; lane < json.items.size(); ++lane)
            readInput(target.piece(valueType(type.lane), offset + lane * type.laneSize,
                                   {json.items[lane].line,
                                    place.text + ", lane " + std::string(type.laneNames[lane])}),
                      json.items[lane]);
    } else if (!type.isScalar()) {
        fault(place,
              "wants " + named(type) + " (" + literalShape(type) + "), not " + json.describe());
    } else {
        JsonValue literal;
        bool const isText = json.is(Kind::text) && type.id != TypeId::String;
        std::string wrong, text;
        if (isText) {
            literal = json;
            wrong = understand(literal, port);
        }
        if (wrong.empty())
            wrong = readScalar(isText ? literal : json, type, node.constants.data() + offset, text);
        if (!wrong.empty())
            fault(place, wrong);
        else if (type.id == TypeId::String)
            setText(node, offset, std::move(text));
    }
}

void GraphReader::readParts(Target const& target, JsonValue const& json)
{
    for (std::size_t i = 0; i < json.items.size(); ++i) {
        JsonValue const& item = json.items[i];
        auto const known = partsOfTqs();
        auto const part = std::ranges::find(known, json.keys[i], &Part::name);
        if (part != known.end())
            readInput(target.piece(valueType(part->type), target.offset + part->offset,
                                   {item.line, target.place.text + ", part " + json.keys[i]}),
                      item);
        else if (json.keys[i] != "comment")
            fault({item.line, target.place.text}, "a TQS has no part " + inQuotes(json.keys[i]) +
                                                      "; it has t, q and s; or " +
                                                      std::string(kSourceShape));
    }
}

void GraphReader::readSource(Target const& target, JsonValue const& json)
{
    std::size_t const faultsBefore = m_faults.faults().size();
    std::vector<std::size_t> sources;
    for (std::size_t i = 0; i < json.items.size(); ++i)
        if (isFurther(json, i))
            continue;
        else if (isAmong(kSourceKeys, json.keys[i]))
            sources.push_back(i);
        else
            fault({json.items[i].line, target.place.text},
                  "unknown member " + inQuotes(json.keys[i]) + "; " + std::string(kSourceShape));
    if (m_faults.faults().size() != faultsBefore)
        return;
    if (sources.size() != 1) {
        fault(target.place,
              (json.items.empty() ? "wants " + named(target.type) + ", not an empty object; "
               : sources.empty()  ? inQuotes(json.keys[0]) + " stands beside a source; "
                                 : "there is no source of both " + inQuotes(json.keys[sources[0]]) +
                                       " and " + inQuotes(json.keys[sources[1]]) + "; ") +
                  std::string(kSourceShape));
        return;
    }
    std::string const& kind = json.keys[sources.front()];
    auto source = sourceOf(kind, json.items[sources.front()], target.type, target.place);
    if (!source || !readShift(target, json, kind, *source))
        return;
    if (target.type.id == TypeId::String)
        setText(target.node, target.offset, {});
    if (json.member("window") != nullptr)
        readWindow(target, json, kind, *source);
    else
        target.node.feeds.push_back({target.offset, &target.type, *source});
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
    if (key == "parameter")
        return readParameterSource(item.text, type, place);
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
