// What the catalogue says of one family, as HTML: its ports, its types, what its results depend on.
#pragma once

#include "nodus/host/catalogue.h"

#include <string>
#include <vector>

namespace nodus::reference {

// The value types of all ports, each once, in the order of the catalogue's types.
std::vector<std::string> portTypes(host::Family const& family);

// The node types of the family: "Abs_T, T is one of Double, Float", or its only one.
std::string nodeTypes(host::Family const& family);

// Where the page's scripts put fields for the type's inputs and its outputs: as high as they will
// be, so that nothing moves when they come.
std::string livePlace(host::Family const& family, host::NodeType const& type);

// A table of the ports, inputs and outputs, in block order.
std::string portTable(host::Family const& family);

// Which machines agree on the results, in words.
std::string dependence(host::Family const& family);

}  // namespace nodus::reference
