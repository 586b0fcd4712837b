// Members of JSON objects that nobody reads are faults: most of them are misspelt.
#pragma once

#include "nodus/host/json.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// Adds a fault for each member that is none of the known ones; place stands in front of it.
inline void refuseUnknownMembers(JsonValue const& object,
                                 std::vector<std::string_view> const& known,
                                 std::string const& place, FileFaults& faults)
{
    for (std::size_t i = 0; i < object.keys.size(); ++i) {
        if (std::ranges::find(known, object.keys[i]) != known.end())
            continue;
        std::string const near = didYouMean(object.keys[i], known);
        faults.add(
            object.items[i].line,
            place + (place.empty() ? "" : ": ") + "unknown member " + inQuotes(object.keys[i]) +
                (near.empty() ? "; known: " + alternatives(known, "or", known.size()) : near));
    }
}

}  // namespace nodus::host
