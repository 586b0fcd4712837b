// Places in the arena and text inputs, as both kinds of plan have them.
#pragma once

#include "nodus/host/plan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace nodus::host {

inline constexpr std::size_t kBlockAlignment = 16;
inline constexpr std::size_t kCacheLine = 64;

inline std::size_t roundUp(std::size_t size, std::size_t alignment)
{
    return (size + alignment - 1) / alignment * alignment;
}

// An offset or a count as plans keep it, with room for rounding up. Throws Fault.
inline std::uint32_t narrow(std::size_t number)
{
    if (number > UINT32_MAX - kCacheLine)
        throw Fault("the graph is too large: its values want more than 4 GiB");
    return static_cast<std::uint32_t>(number);
}

// The text of an input at its place: the graph's constant, or else the empty one.
inline void addText(Plan& plan, GraphNode const& node, Port const& port, Place place)
{
    Plan::Text text{place, {}};
    auto const known =
        std::ranges::find(node.texts, port.offset, [](auto const& t) { return t.first; });
    if (known != node.texts.end()) {
        text.constant = plan.constantTexts.size();
        plan.constantTexts.push_back(known->second);
    }
    plan.texts.push_back(text);
}

}  // namespace nodus::host
