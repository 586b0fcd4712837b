// Members of JSON objects that nobody reads are faults: most of them are misspelt.
#pragma once

#include "nodus/host/json.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::host {

// What to say of a member's name that is none of the known ones; empty for one that is.
inline std::string whyUnknown(std::string const& name, std::vector<std::string_view> const& known)
{
    if (std::ranges::find(known, name) != known.end())
        return "";
    std::string const near = didYouMean(name, known);
    return "unknown member " + inQuotes(name) +
           (near.empty() ? "; known: " + alternatives(known, "or", known.size()) : near);
}

// Adds a fault for each member that is none of the known ones; place stands in front of it.
inline void refuseUnknownMembers(JsonValue const& object,
                                 std::vector<std::string_view> const& known,
                                 std::string const& place, FileFaults& faults)
{
    std::string const start = place.empty() ? "" : place + ": ";
    for (std::size_t i = 0; i < object.keys.size(); ++i)
        if (std::string const why = whyUnknown(object.keys[i], known); !why.empty())
            faults.add(object.items[i].line, start + why);
}

}  // namespace nodus::host
