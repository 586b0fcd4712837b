// Texts with places to be filled.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nodus::tools {

// Puts each value wherever its place stands.
inline std::string filled(std::string text,
                          std::vector<std::pair<std::string_view, std::string>> const& values)
{
    for (auto const& [place, value] : values)
        for (auto at = text.find(place); at != text.npos; at = text.find(place, at + value.size()))
            text.replace(at, place.size(), value);
    return text;
}

}  // namespace nodus::tools
