// JSON files as the host reads them: in file order, numbers exactly as written, repeated keys and
// deep nesting refused.
#pragma once

#include "nodus/host/diagnostics.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nodus::host {

struct JsonValue {
    enum class Kind : std::uint8_t { null, boolean, integer, real, text, array, object };

    JsonValue() = default;
    explicit JsonValue(Kind what) : kind(what) {}

    Kind kind = Kind::null;
    bool boolean = false;
    std::uint32_t line = 0;  // where it begins, a member with its name; 0 when it is of no text
    std::int64_t integer = 0;
    std::string text;               // of a text; of a real, the number as it was written
    std::vector<std::string> keys;  // of an object, one for each item
    std::vector<JsonValue> items;

    bool is(Kind wanted) const { return kind == wanted; }
    bool isNumber() const { return kind == Kind::integer || kind == Kind::real; }

    // The member of that name, or null. Takes time in proportion to the number of members.
    JsonValue const* member(std::string_view key) const;

    // "text", "a number", "an array of 3": what stands there, for messages.
    std::string describe() const;
};

// Reads a text as JSON; line is the number of its first one. Faults: what is wrong at which line
// and column (then there is nothing to return), and every key that one object has twice. Numbers
// are kept as they are written; one that no floating-point type could hold, 1e5000 for one, is a
// fault. What members of the name leftOut hold within themselves is not kept, and read faster.
// Comments, // and /* */, are faults unless hasComments.
std::optional<JsonValue> parseJson(std::string_view text, FileFaults& faults, std::size_t line = 1,
                                   std::string_view leftOut = {}, bool hasComments = false);

// The same for a file, or standard input, of at most one gigabyte. Throws Fault when it cannot be
// read.
std::optional<JsonValue> readJsonFile(std::string const& path, FileFaults& faults,
                                      std::string_view leftOut = {}, bool hasComments = false);

}  // namespace nodus::host
