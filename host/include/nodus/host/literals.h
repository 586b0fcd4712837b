// Values as a person writes them, in JSON or on a command line.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/json.h"
#include "nodus/host/value_types.h"

#include <string>
#include <string_view>

namespace nodus::host {

// Each of these returns an empty text, or what is wrong with the literal: "wants Float3: 3
// numbers".

// One lane (a scalar type): a number, a boolean, a text; "nan", "inf" and "-inf" for Float and
// Double. Writes laneSize bytes; the text of a String goes to text.
std::string readScalar(JsonValue const& literal, ValueType const& type, std::byte* to,
                       std::string& text);

// A whole value: a scalar, an array of lanes, an object with parts for a TQS (a part that is not
// given stays as it is in value).
std::string readValue(JsonValue const& literal, Value& value);

// What people write for a port in place of a number: the name of one of its choices ("XYZ"), or a
// number with a unit ("90deg") where the port has one. They become numbers, anything else stays as
// it is. In arrays, too.
std::string understand(JsonValue& literal, Port const& port);

// A whole value for a port from a command line.
std::string readArgument(std::string_view argument, Port const& port, Value& value);

// What a literal of the type looks like: "an array of 3 numbers".
std::string literalShape(ValueType const& type);

// A number from a text, correctly rounded and exactly to the text's end. For Float, Double and the
// integer types; an integer must be whole and in range.
std::string readNumber(std::string_view text, ValueType const& type, std::byte* to);

// A value for people: "3", "(1, 2, 3)", "true"; the three parts of a TQS with their names. A String
// is passed as its text.
std::string valueText(ValueType const& type, std::byte const* bytes, std::string_view text);

// A command line's value: JSON, or lanes with commas between them ("1,2,3"), or for a String port
// the text as it is. Throws Fault when it is broken JSON.
JsonValue literalFromArgument(std::string_view argument, ValueType const& type);

}  // namespace nodus::host
