// Pictures of the reference: curves, histograms and shaded fields, drawn from what the kernels
// give.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/json.h"

#include <string>
#include <string_view>

namespace nodus::reference {

// One plot of a family's "reference" as an HTML figure. type is the node type of curves that name
// none. Throws Fault, with origin in front, when the plot is not well described or its graph has a
// fault.
std::string figure(host::Catalogue const& catalogue, host::JsonValue const& plot,
                   std::string_view type, std::string const& origin);

}  // namespace nodus::reference
