// Small help for reading a catalogue's "reference" and writing HTML.
#include "markup.h"

#include "files/members.h"

#include <fmt/format.h>

#include <charconv>

namespace nodus::reference {

using host::JsonValue;

namespace {

std::string_view nameOf(JsonValue::Kind kind)
{
    switch (kind) {
    case JsonValue::Kind::text:
        return "a text";
    case JsonValue::Kind::array:
        return "an array";
    case JsonValue::Kind::object:
        return "an object";
    default:
        return "a number";
    }
}

}  // namespace

JsonValue const& wanted(JsonValue const& object, std::string_view key, JsonValue::Kind kind,
                        std::string const& origin)
{
    JsonValue const* const member = object.member(key);
    if (member == nullptr)
        throw host::Fault(origin + ": '" + std::string(key) + "' is missing");
    if (!member->is(kind))
        throw host::Fault(origin + ": '" + std::string(key) + "' wants " +
                          std::string(nameOf(kind)) + ", not " + member->describe());
    return *member;
}

std::string textOr(JsonValue const& object, std::string_view key, std::string_view otherwise,
                   std::string const& origin)
{
    return object.member(key) == nullptr ? std::string(otherwise)
                                         : wanted(object, key, JsonValue::Kind::text, origin).text;
}

double numberOf(JsonValue const& value, std::string const& origin)
{
    if (value.is(JsonValue::Kind::integer))
        return static_cast<double>(value.integer);
    double number = 0;
    if (!value.is(JsonValue::Kind::real) ||
        std::from_chars(value.text.data(), value.text.data() + value.text.size(), number).ec !=
            std::errc{})
        throw host::Fault(origin + ": wants a number, not " + value.describe());
    return number;
}

void refuseUnknownKeys(JsonValue const& object, std::vector<std::string_view> const& known,
                       std::string const& origin)
{
    for (std::string const& key : object.keys)
        if (std::string const why = host::whyUnknown(key, known); !why.empty())
            throw host::Fault(fmt::format("{}: {}", origin, why));
}

}  // namespace nodus::reference
