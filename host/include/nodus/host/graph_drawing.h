// A picture of a graph, in the language of Graphviz.
#pragma once

#include "nodus/host/graph.h"

#include <string>
#include <string_view>

namespace nodus::host {

// A box for each node, with its ports, their types and constants; small shapes for the sources on
// the left and for the results on the right; an edge for each value that goes from one to the
// other, in the colour of its type. Lanes and parts have ports of their own where something is fed
// from or into them. The text is UTF-8 for the program dot; title is what the picture is called.
std::string drawGraph(Graph const& graph, std::string_view title);

}  // namespace nodus::host
