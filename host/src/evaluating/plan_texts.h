// Text inputs of a node, as both kinds of plan keep them.
#pragma once

#include "nodus/host/plan.h"

#include <algorithm>

namespace nodus::host {

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
