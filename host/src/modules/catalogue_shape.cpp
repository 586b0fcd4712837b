// What may stand in a catalogue: the members of each of its objects, and of what kind they are.
#include "catalogue_shape.h"

#include "files/members.h"

#include <span>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

enum class Shape { text, boolean, integer, object, texts, objects, any };

struct Member {
    std::string_view name;
    Shape shape;
};

// "groups" and "reference" are of the node reference, which says what may stand in them.
constexpr Member kOutermost[] = {
    {"module", Shape::text}, {"groups", Shape::objects}, {"families", Shape::objects}};
constexpr Member kFamily[] = {
    {"name", Shape::text},
    {"group", Shape::text},
    {"doc", Shape::text},
    {"edges", Shape::text},
    {"searchWords", Shape::texts},
    {"dependsOn", Shape::texts},
    {"types", Shape::texts},
    {"separator", Shape::text},
    {"mayKeepOutputs", Shape::boolean},
    {"mayDivideByZero", Shape::boolean},
    {"inputs", Shape::objects},
    {"outputs", Shape::objects},
    {"workspace", Shape::objects},
    {"reference", Shape::object},
};
constexpr Member kPort[] = {
    {"name", Shape::text},       {"type", Shape::text},    {"typeFor", Shape::object},
    {"unit", Shape::text},       {"notFor", Shape::texts}, {"default", Shape::any},
    {"choices", Shape::objects},
};
constexpr Member kChoice[] = {{"value", Shape::integer}, {"name", Shape::text}};

bool hasShape(JsonValue const& value, Shape shape)
{
    auto const isListOf = [&](Kind kind) {
        return value.is(Kind::array) &&
               std::ranges::all_of(value.items,
                                   [=](JsonValue const& item) { return item.is(kind); });
    };
    switch (shape) {
    case Shape::text:
        return value.is(Kind::text);
    case Shape::boolean:
        return value.is(Kind::boolean);
    case Shape::integer:
        return value.is(Kind::integer);
    case Shape::object:
        return value.is(Kind::object);
    case Shape::texts:
        return isListOf(Kind::text);
    case Shape::objects:
        return isListOf(Kind::object);
    case Shape::any:
        break;
    }
    return true;
}

std::string_view nameOf(Shape shape)
{
    switch (shape) {
    case Shape::text:
        return "a text";
    case Shape::boolean:
        return "true or false";
    case Shape::integer:
        return "a whole number";
    case Shape::object:
        return "an object";
    case Shape::texts:
        return "an array of texts";
    default:
        return "an array of objects";
    }
}

std::string quotedText(JsonValue const& object, std::string_view key)
{
    JsonValue const* const member = object.member(key);
    return inQuotes(member != nullptr && member->is(Kind::text) ? member->text : "");
}

void checkMembers(JsonValue const& object, std::span<Member const> members,
                  std::string const& place, FileFaults& faults)
{
    std::vector<std::string_view> known;
    for (Member const& member : members)
        known.push_back(member.name);
    refuseUnknownMembers(object, known, place, faults);
    for (auto const& [name, shape] : members)
        if (JsonValue const* const value = object.member(name))
            if (!hasShape(*value, shape))
                faults.add(value->line, place + (place.empty() ? "" : ": ") + inQuotes(name) +
                                            " wants " + std::string(nameOf(shape)) + ", not " +
                                            value->describe());
}

// The types of the family that a port names have to be there.
void checkSuffix(std::string const& suffix, std::size_t line, JsonValue const& family,
                 std::string const& place, FileFaults& faults)
{
    std::vector<std::string_view> known;
    if (JsonValue const* const types = family.member("types"))
        for (JsonValue const& type : types->items)
            known.push_back(type.text);
    if (std::ranges::find(known, suffix) == known.end())
        faults.add(line, place + " " + inQuotes(suffix) + ", which is none of the family's types" +
                             didYouMean(suffix, known));
}

void checkPort(JsonValue const& port, JsonValue const& family, std::string const& place,
               FileFaults& faults)
{
    checkMembers(port, kPort, place, faults);
    if (JsonValue const* const typeFor = port.member("typeFor"))
        for (std::size_t i = 0; i < typeFor->keys.size(); ++i) {
            JsonValue const& type = typeFor->items[i];
            checkSuffix(typeFor->keys[i], type.line, family, place + ": 'typeFor' names", faults);
            if (!type.is(Kind::text))
                faults.add(type.line,
                           place + ": 'typeFor' wants the name of a type, not " + type.describe());
        }
    if (JsonValue const* const notFor = port.member("notFor"))
        for (JsonValue const& suffix : notFor->items)
            checkSuffix(suffix.text, suffix.line, family, place + ": 'notFor' names", faults);
    if (JsonValue const* const choices = port.member("choices"))
        for (JsonValue const& choice : choices->items)
            checkMembers(choice, kChoice, place + ", choice " + quotedText(choice, "name"), faults);
}

}  // namespace

void checkFamily(JsonValue const& family, std::string const& place, FileFaults& faults)
{
    checkMembers(family, kFamily, place, faults);
    for (auto const& [key, what] :
         {std::pair("inputs", "input"), {"outputs", "output"}, {"workspace", "workspace port"}})
        if (JsonValue const* const ports = family.member(key))
            for (JsonValue const& port : ports->items)
                checkPort(port, family, place + ", " + what + " " + quotedText(port, "name"),
                          faults);
}

void checkOutermost(JsonValue const& root, FileFaults& faults)
{
    checkMembers(root, kOutermost, "", faults);
}

}  // namespace nodus::host
