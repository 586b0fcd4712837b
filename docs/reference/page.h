// The page itself: every family of a catalogue, with what nodes.json adds.
#pragma once

#include "nodus/host/catalogue.h"
#include "nodus/host/json.h"

#include <string>

namespace nodus::reference {

// What stands in the places that the template has for it.
struct Content {
    std::string index, nodes, types;
    std::size_t families = 0, kernels = 0;
};

// Throws Fault with a line for everything that is wrong with nodes.json: a family without an entry,
// an entry without a family, an example that does not evaluate.
Content contentOf(host::Catalogue const& catalogue, host::JsonValue const& notes,
                  std::string const& origin);

}  // namespace nodus::reference
