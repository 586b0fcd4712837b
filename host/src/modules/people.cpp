// Values as people write them for a port: names of choices, numbers with units.
#include "nodus/host/literals.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/shortest.h"

#include <array>
#include <cstring>
#include <iterator>
#include <numbers>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

struct Unit {
    std::string_view name;
    double inRadians;
};
constexpr std::array kUnits = {Unit{"rad", 1}, Unit{"deg", std::numbers::pi / 180},
                               Unit{"\u00B0", std::numbers::pi / 180}};

Unit const* findUnit(std::string_view name)
{
    for (Unit const& unit : kUnits)
        if (unit.name == name)
            return &unit;
    return nullptr;
}

std::string understandChoice(JsonValue& literal, std::vector<Choice> const& choices)
{
    std::vector<std::string_view> names;
    for (Choice const& choice : choices) {
        if (choice.name == literal.text) {
            literal = JsonValue(Kind::integer);
            literal.integer = choice.value;
            return {};
        }
        names.push_back(choice.name);
    }
    std::string const near = didYouMean(literal.text, names);
    return inQuotes(literal.text) + " is no choice" +
           (near.empty() ? "; it is " + alternatives(names, "or", names.size()) : near);
}

std::string understandUnit(JsonValue& literal, std::string_view wanted)
{
    std::string_view const text = literal.text;
    std::size_t const digits = text.find_last_of("0123456789.") + 1;
    std::size_t const begin = std::min(text.find_first_not_of(' ', digits), text.size());
    std::string_view const number = text.substr(0, digits), name = text.substr(begin);
    Unit const* const unit = findUnit(name);
    Unit const* const port = findUnit(wanted);
    if (digits == 0 || name.empty() || (unit == nullptr && port == nullptr))
        return {};  // no number with a unit: told as any text
    if (unit == nullptr)
        return inQuotes(name) + " is no unit that is known; rad and deg are";
    if (port == nullptr)
        return inQuotes(text) + ": the input has no unit; write the number alone";
    double value = 0;
    if (std::string wrong =
            readNumber(number, valueType(TypeId::Double), reinterpret_cast<std::byte*>(&value));
        !wrong.empty())
        return wrong;
    std::string written(number);
    if (unit->inRadians != port->inRadians) {
        std::array<char, kNumberRoom> shortest;
        written.assign(shortest.data(),
                       writeShortest(shortest.data(), value * unit->inRadians / port->inRadians));
    }
    literal.kind = Kind::real;
    literal.text = written;
    return {};
}

}  // namespace

std::string understand(JsonValue& literal, Port const& port)
{
    if (literal.is(Kind::array)) {
        for (JsonValue& item : literal.items)
            if (std::string wrong = understand(item, port); !wrong.empty())
                return wrong;
        return {};
    }
    TypeId const lane = port.type->lane;
    if (!literal.is(Kind::text) || lane == TypeId::String || lane == TypeId::Bool)
        return {};
    if (!port.choices.empty())
        return understandChoice(literal, port.choices);
    return isReal(lane) ? understandUnit(literal, port.unit) : std::string();
}

std::string readArgument(std::string_view argument, Port const& port, Value& value)
{
    try {
        JsonValue literal = literalFromArgument(argument, *port.type);
        std::string wrong = understand(literal, port);
        return wrong.empty() ? readValue(literal, value) : wrong;
    } catch (Fault const& fault) {
        return fault.what();
    }
}

}  // namespace nodus::host
