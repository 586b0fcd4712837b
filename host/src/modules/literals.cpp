// Literals to values: every number is converted once, straight to its lane's type.
#include "nodus/host/literals.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/shortest.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

namespace nodus::host {

namespace {

using Kind = JsonValue::Kind;

template <typename T> void store(std::byte* to, T value) { std::memcpy(to, &value, sizeof value); }

template <typename T> std::string outside(std::string_view text, ValueType const& type)
{
    return inQuotes(text) + " is outside " + std::string(type.name) + " (" +
           std::to_string(std::numeric_limits<T>::min()) + " to " +
           std::to_string(std::numeric_limits<T>::max()) + ")";
}

template <typename T>
std::string readReal(std::string_view text, ValueType const& type, std::byte* to)
{
    T value{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument)
        return inQuotes(text) + " is not a number";
    if (error == std::errc::result_out_of_range) {
        // Too small is a zero or a subnormal, correctly rounded; too large is a fault.
        std::string const copy(text);
        if constexpr (std::is_same_v<T, float>)
            value = std::strtof(copy.c_str(), nullptr);
        else
            value = std::strtod(copy.c_str(), nullptr);
        if (std::isinf(value))
            return inQuotes(text) + " is beyond every " + std::string(type.name);
    }
    store(to, value);
    return {};
}

template <typename T>
std::string readInteger(std::string_view text, ValueType const& type, std::byte* to)
{
    std::int64_t whole = 0;
    char const* const last = text.data() + text.size();
    auto const [end, error] = std::from_chars(text.data(), last, whole);
    if (end != last || error != std::errc{}) {
        // 1e3 and 7.0 are whole numbers, too.
        double real = 0;
        auto const [realEnd, realError] = std::from_chars(text.data(), last, real);
        if (realEnd != last || realError == std::errc::invalid_argument)
            return inQuotes(text) + " is not a number";
        if (realError == std::errc{} && std::isfinite(real) && real != std::trunc(real))
            return inQuotes(text) + " is not a whole number";
        if (realError != std::errc{} || !(std::fabs(real) < 9e15))
            return outside<T>(text, type);
        whole = static_cast<std::int64_t>(real);
    }
    if (whole < std::numeric_limits<T>::min() || whole > std::numeric_limits<T>::max())
        return outside<T>(text, type);
    store(to, static_cast<T>(whole));
    return {};
}

std::string wants(ValueType const& type, JsonValue const& literal)
{
    return "wants " + std::string(type.name) + " (" + literalShape(type) + "), not " +
           literal.describe();
}

std::string readLanes(JsonValue const& literal, ValueType const& type, std::byte* to)
{
    if (!literal.is(Kind::array))
        return wants(type, literal);
    if (literal.items.size() != type.laneNames.size())
        return wants(type, literal);
    std::string unused;
    for (std::size_t lane = 0; lane < literal.items.size(); ++lane) {
        std::string const fault = readScalar(literal.items[lane], valueType(type.lane),
                                             to + lane * type.laneSize, unused);
        if (!fault.empty())
            return "lane " + std::string(type.laneNames[lane]) + ": " + fault;
    }
    return {};
}

}  // namespace

std::string literalShape(ValueType const& type)
{
    switch (type.id) {
    case TypeId::Bool:
        return "true or false";
    case TypeId::UInt8:
    case TypeId::Int32:
    case TypeId::UInt32:
        return "a whole number";
    case TypeId::Float:
    case TypeId::Double:
        return "a number";
    case TypeId::String:
        return "a text";
    case TypeId::TQS:
        return "an object with t, q and s, each an array of 4 numbers";
    default:
        return "an array of " + std::to_string(type.laneNames.size()) + " numbers";
    }
}

std::string readNumber(std::string_view text, ValueType const& type, std::byte* to)
{
    switch (type.id) {
    case TypeId::UInt8:
        return readInteger<std::uint8_t>(text, type, to);
    case TypeId::Int32:
        return readInteger<std::int32_t>(text, type, to);
    case TypeId::UInt32:
        return readInteger<std::uint32_t>(text, type, to);
    case TypeId::Double:
        return readReal<double>(text, type, to);
    default:
        return readReal<float>(text, type, to);
    }
}

std::string readScalar(JsonValue const& literal, ValueType const& type, std::byte* to,
                       std::string& text)
{
    if (type.id == TypeId::String && literal.is(Kind::text)) {
        text = literal.text;
        return {};
    }
    if (type.id == TypeId::Bool && literal.is(Kind::boolean)) {
        store(to, static_cast<std::uint8_t>(literal.boolean));
        return {};
    }
    if (type.id == TypeId::String || type.id == TypeId::Bool)
        return wants(type, literal);
    if (literal.is(Kind::integer))
        return readNumber(std::to_string(literal.integer), type, to);
    std::string const& word = literal.text;
    if (literal.is(Kind::real) || (literal.is(Kind::text) && isReal(type.id) &&
                                   (word == "nan" || word == "inf" || word == "-inf")))
        return readNumber(word, type, to);
    return wants(type, literal);
}

std::string readValue(JsonValue const& literal, Value& value)
{
    ValueType const& type = *value.type;
    if (type.isScalar())
        return readScalar(literal, type, value.bytes.data(), value.text);
    if (type.id != TypeId::TQS || !literal.is(Kind::object))
        return readLanes(literal, type, value.bytes.data());
    for (std::size_t i = 0; i < literal.items.size(); ++i) {
        auto const piece = findPiece(type, literal.keys[i]);
        if (!piece || piece->type->isScalar())
            return "has no part " + inQuotes(literal.keys[i]) +
                   "; the parts of a TQS are t, q and s";
        std::string const fault =
            readLanes(literal.items[i], *piece->type, value.bytes.data() + piece->offset);
        if (!fault.empty())
            return "part " + literal.keys[i] + ": " + fault;
    }
    return {};
}

std::string valueText(ValueType const& type, std::byte const* bytes, std::string_view text)
{
    auto const number = [&]<typename T>(T value) {
        char digits[kNumberRoom];
        if constexpr (std::is_floating_point_v<T>)
            return std::string(digits, writeShortest(digits, value));
        else
            return std::string(digits, std::to_chars(digits, std::end(digits), value).ptr);
    };
    auto const load = [&]<typename T>(T value, std::size_t offset = 0) {
        std::memcpy(&value, bytes + offset, sizeof value);
        return value;
    };
    switch (type.id) {
    case TypeId::Bool:
        return load(std::uint8_t{}) != 0 ? "true" : "false";
    case TypeId::UInt8:
        return number(unsigned{load(std::uint8_t{})});
    case TypeId::Int32:
        return number(load(std::int32_t{}));
    case TypeId::UInt32:
        return number(load(std::uint32_t{}));
    case TypeId::Float:
        return number(load(float{}));
    case TypeId::Double:
        return number(load(double{}));
    case TypeId::String:
        return std::string(text);
    case TypeId::TQS: {
        std::string parts;
        for (Part const& part : partsOfTqs())
            parts += (parts.empty() ? "" : ", ") + std::string(part.name) + " " +
                     valueText(valueType(part.type), bytes + part.offset, {});
        return parts;
    }
    default: {
        std::string lanes;
        for (std::size_t lane = 0; lane < type.laneNames.size(); ++lane)
            lanes += (lane == 0 ? "(" : ", ") + number(load(float{}, lane * sizeof(float)));
        return lanes + ")";
    }
    }
}

JsonValue literalFromArgument(std::string_view argument, ValueType const& type)
{
    JsonValue literal;
    if (type.id == TypeId::String && !argument.starts_with('"')) {
        literal.kind = Kind::text;
        literal.text = argument;
        return literal;
    }
    if (argument.starts_with('[') || argument.starts_with('{') || argument.starts_with('"')) {
        FileFaults faults({});
        auto parsed = parseJson(argument, faults);
        if (!faults.empty())
            throw Fault(inQuotes(argument) + " is no JSON: " + faults.faults().front().text);
        return std::move(*parsed);
    }
    auto const word = [](std::string_view text) {
        JsonValue made;
        double number = 0;
        auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        bool const isNumber = end == text.data() + text.size() &&
                              error != std::errc::invalid_argument &&
                              text.find_first_of("0123456789") != text.npos;
        made.kind = isNumber ? Kind::real : Kind::text;
        made.text = text;
        if (text == "true" || text == "false") {
            made.kind = Kind::boolean;
            made.boolean = text == "true";
        }
        return made;
    };
    if (type.isScalar() && argument.find(',') == argument.npos)
        return word(argument);
    literal.kind = Kind::array;
    while (true) {
        auto const comma = argument.find(',');
        std::string_view lane = argument.substr(0, comma);
        while (lane.starts_with(' '))
            lane.remove_prefix(1);
        while (lane.ends_with(' '))
            lane.remove_suffix(1);
        literal.items.push_back(word(lane));
        if (comma == argument.npos)
            return literal;
        argument.remove_prefix(comma + 1);
    }
}

}  // namespace nodus::host
