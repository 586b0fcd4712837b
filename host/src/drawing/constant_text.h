// What stands beside an input of a drawn node: the part of its value that is no edge.
#pragma once

#include "nodus/host/graph.h"

#include <set>
#include <string>

namespace nodus::host {

// A piece of a block: a port, a part or a lane. The type tells a value from its first lane.
struct Spot {
    std::size_t offset;
    TypeId type;
    auto operator<=>(Spot const&) const = default;
};

// What is not fed. Pieces that are stand there with their names.
std::string constantText(GraphNode const& node, Port const& port, std::set<Spot> const& fed);

}  // namespace nodus::host
