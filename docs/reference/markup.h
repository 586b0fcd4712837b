// Small help for reading a catalogue's "reference" and writing HTML.
#pragma once

#include "nodus/host/diagnostics.h"
#include "nodus/host/json.h"
#include "nodus/host/result_writer.h"

#include <string>
#include <string_view>
#include <vector>

namespace nodus::reference {

using host::markupText;

// The member of that name; throws Fault when it is missing or of another kind.
host::JsonValue const& wanted(host::JsonValue const& object, std::string_view key,
                              host::JsonValue::Kind kind, std::string const& origin);
// The text of that name, or what stands in for it.
std::string textOr(host::JsonValue const& object, std::string_view key, std::string_view otherwise,
                   std::string const& origin);
double numberOf(host::JsonValue const& value, std::string const& origin);
// Throws Fault when the object has a key that is not among the known ones.
void refuseUnknownKeys(host::JsonValue const& object, std::vector<std::string_view> const& known,
                       std::string const& origin);

}  // namespace nodus::reference
