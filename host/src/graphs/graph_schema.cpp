// A JSON schema of graph files, made from the catalogue.
#include "nodus/host/graph_schema.h"

#include "windows.h"

#include "nodus/host/literals.h"

#include <nlohmann/json.hpp>

#include <limits>

namespace nodus::host {

namespace {

using Json = nlohmann::ordered_json;

// Names of nodes and parameters.
constexpr auto kName = R"(^[^.]+$)";
constexpr auto kAngle = R"(^[+-]?[0-9]*\.?[0-9]+([eE][+-]?[0-9]+)? *(rad|deg|°)$)";

Json reference(std::string const& definition) { return {{"$ref", "#/definitions/" + definition}}; }

Json object(Json properties, Json required = Json::array())
{
    properties["comment"] = true;
    Json made{{"type", "object"}, {"properties", std::move(properties)}};
    if (!required.empty())
        made["required"] = std::move(required);
    made["additionalProperties"] = false;
    return made;
}

Json text() { return {{"type", "string"}}; }

Json shift() { return {{"type", "integer"}, {"minimum", -kFarthest}, {"maximum", kFarthest}}; }

Json whole(std::int64_t least, std::int64_t most)
{
    return {{"type", "integer"}, {"minimum", least}, {"maximum", most}};
}

// What stands for one lane of a constant.
Json lane(TypeId type)
{
    switch (type) {
    case TypeId::Bool:
        return {{"type", "boolean"}};
    case TypeId::UInt8:
        return whole(0, std::numeric_limits<std::uint8_t>::max());
    case TypeId::Int32:
        return whole(std::numeric_limits<std::int32_t>::min(),
                     std::numeric_limits<std::int32_t>::max());
    case TypeId::UInt32:
        return whole(0, std::numeric_limits<std::uint32_t>::max());
    case TypeId::String:
        return text();
    default:
        return {{"anyOf", {{{"type", "number"}}, {{"enum", {"nan", "inf", "-inf"}}}}}};
    }
}

// What an input or a parameter of a type may be: a constant, and where it has sources those.
struct Shape {
    ValueType const& type;
    bool hasSources;
    bool isAngle = false;
    std::vector<Choice> const* choices = nullptr;

    bool isPlain() const { return !isAngle && (choices == nullptr || choices->empty()); }
    std::string name() const
    {
        return std::string(type.name) + (hasSources ? "" : " constant") +
               (isAngle ? ", angle" : "");
    }
};

Json piece(Shape const& whole, TypeId type)
{
    Shape const part{valueType(type), whole.hasSources, whole.isAngle};
    return reference(part.name());
}

Json arrayOf(Json items, std::size_t count)
{
    return {
        {"type", "array"}, {"items", std::move(items)}, {"minItems", count}, {"maxItems", count}};
}

void addSources(Json& ways, ValueType const& type)
{
    if (type.id == TypeId::String) {
        ways.insert(ways.end(), {reference("from"), reference("parameter")});
        return;
    }
    ways.push_back(reference("expression"));
    ways.push_back(reference("from"));
    ways.push_back(reference("parameter"));
    if (type.isScalar())
        ways.push_back(reference("column"));
    if (type.id == TypeId::Int32)
        ways.push_back(reference("frame"));
    if (type.id == TypeId::Float)
        ways.push_back(reference("pixel"));
}

Json valueOf(Shape const& shape)
{
    ValueType const& type = shape.type;
    Json ways = Json::array();
    if (shape.choices != nullptr && !shape.choices->empty()) {
        Json names = Json::array();
        for (Choice const& choice : *shape.choices)
            names.push_back(choice.name);
        ways.push_back({{"enum", std::move(names)}});
    }
    if (type.id == TypeId::TQS) {
        Json parts = Json::object();
        for (Part const& part : partsOfTqs())
            parts[std::string(part.name)] = piece(shape, part.type);
        ways.push_back(object(std::move(parts)));
    } else if (!type.isScalar()) {
        ways.push_back(arrayOf(piece(shape, type.lane), type.laneNames.size()));
    } else {
        ways.push_back(lane(type.id));
        if (shape.isAngle)
            ways.push_back({{"type", "string"}, {"pattern", kAngle}});
    }
    if (shape.hasSources)
        addSources(ways, type);
    return {{"anyOf", std::move(ways)}};
}

Json portOf(Port const& port)
{
    Shape const shape{*port.type, true, !port.unit.empty(), &port.choices};
    bool const hasName = port.choices.empty();
    Json made = hasName ? Json{{"allOf", {reference(shape.name())}}} : valueOf(shape);
    made["description"] = std::string(port.type->name) +
                          (port.unit.empty() ? "" : ", " + port.unit) + "; without it " +
                          valueText(*port.type, port.standard.bytes.data(), port.standard.text);
    return made;
}

// {"from": "node"} and {"column": "x"}, of this frame, another one, or a window of them.
Json shiftable(std::string const& source, std::string const& unit, Json const& more)
{
    std::string const window = unit + "s";
    Json folds = Json::array();
    for (Fold const& fold : kFolds)
        folds.push_back(fold.name);
    Json properties{{source, text()},
                    {unit, shift()},
                    {window, arrayOf(shift(), 2)},
                    {"window", {{"enum", std::move(folds)}}}};
    properties.update(more);
    Json made = object(std::move(properties), {source});
    made["dependencies"] = {{"window", {window}},
                            {window, {{"required", {"window"}}, {"not", {{"required", {unit}}}}}}};
    return made;
}

Json definitions()
{
    Json all{
        {"expression",
         {{"type", "string"}, {"pattern", "^="}, {"description", "=hips.tx * 0.01 + wave.result"}}},
        {"from", shiftable("from", "frame", Json::object())},
        {"column",
         shiftable("column", "row", {{"default", {{"type", {"number", "boolean", "string"}}}}})},
        {"frame", object({{"frame", {{"const", true}}}}, {"frame"})},
        {"parameter", object({{"parameter", text()}}, {"parameter"})},
        {"pixel", object({{"pixel", {{"enum", {"x", "y"}}}}}, {"pixel"})}};
    for (ValueType const& type : valueTypes())
        for (bool const hasSources : {true, false})
            for (bool const isAngle : {false, true}) {
                Shape const shape{type, hasSources, isAngle};
                if (isReal(type.lane) || !isAngle)
                    all[shape.name()] = valueOf(shape);
            }
    return all;
}

Json when(Json properties, Json required, Json then)
{
    return {{"if", {{"properties", std::move(properties)}, {"required", std::move(required)}}},
            {"then", {{"properties", std::move(then)}}}};
}

Json parameter()
{
    Json types = Json::array(), values = Json::array();
    for (ValueType const& type : valueTypes()) {
        types.push_back(type.name);
        Json const named{{"const", type.name}};
        Json const value{{"value", reference(Shape{type, false}.name())}};
        if (isReal(type.lane)) {
            values.push_back(when({{"type", named}, {"unit", true}}, {"type", "unit"},
                                  {{"value", reference(Shape{type, false, true}.name())}}));
            values.push_back(when({{"type", named}, {"unit", false}}, {"type"}, value));
        } else {
            values.push_back(when({{"type", named}}, {"type"}, value));
        }
    }
    Json made = object({{"type", {{"enum", std::move(types)}}},
                        {"value", {{"description", "what it is when nobody sets it"}}},
                        {"doc", text()},
                        {"unit", {{"enum", {"rad", "deg"}}}}},
                       {"type"});
    made["allOf"] = std::move(values);
    return made;
}

Json node(Catalogue const& catalogue)
{
    Json names = Json::array(), docs = Json::array(), inputs = Json::array();
    for (NodeType const& type : catalogue.nodeTypes()) {
        names.push_back(type.name);
        docs.push_back(type.family->doc);
        Json ports = Json::object();
        for (Port const& port : type.inputs)
            ports[port.name] = portOf(port);
        inputs.push_back(when(
            {{"type", {{"enum", {type.name, kernelName(type)}}}}}, {"type"},
            {{"inputs", {{"properties", std::move(ports)}, {"additionalProperties", false}}}}));
    }
    std::string kernels;
    for (NodeType const& type : catalogue.nodeTypes())
        kernels += (kernels.empty() ? "^Nodus(" : "|") + type.name;
    Json made = object(
        {{"type",
          {{"anyOf",
            {{{"enum", std::move(names)}, {"enumDescriptions", std::move(docs)}},
             {{"type", "string"}, {"pattern", R"(\.json$)"}, {"description", "a graph file"}},
             {{"type", "string"}, {"pattern", kernels + ")_Solve$"}}}}}},
         {"inputs", {{"type", "object"}}}},
        {"type"});
    made["allOf"] = std::move(inputs);
    return made;
}

Json namedOnes(Json const& each)
{
    return {{"type", "object"},
            {"propertyNames", {{"pattern", kName}}},
            {"additionalProperties", each}};
}

}  // namespace

std::string graphSchema(Catalogue const& catalogue)
{
    Json root{{"$schema", "http://json-schema.org/draft-07/schema#"},
              {"title", "A graph file of nodus"}};
    root.update(
        object({{"$schema", text()},
                {"description", {{"type", "string"}, {"description", "what the graph is for"}}},
                {"parameters", namedOnes(reference("a parameter"))},
                {"nodes", namedOnes(reference("a node"))},
                {"outputs",
                 {{"type", "array"},
                  {"items", text()},
                  {"uniqueItems", true},
                  {"description", R"(what is written down: "node", "node.port", "node.port.x")"}}}},
               {"nodes"}));
    root["definitions"] = definitions();
    root["definitions"]["a parameter"] = parameter();
    root["definitions"]["a node"] = node(catalogue);
    return root.dump(1) + "\n";
}

}  // namespace nodus::host
