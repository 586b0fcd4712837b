// A JSON schema of graph files, for editors that complete and check them.
#pragma once

#include "nodus/host/catalogue.h"

#include <string>

namespace nodus::host {

// JSON Schema, draft 7, with the node types of the catalogue: what a graph file may hold, inputs by
// their types, units and choices. It knows shapes alone: whether a source's node is there and of
// the input's type, only reading the graph tells.
std::string graphSchema(Catalogue const& catalogue);

}  // namespace nodus::host
