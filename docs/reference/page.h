// The page itself: every family of a catalogue, with the examples and pictures of its "reference".
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

// file is the catalogue as JSON. Throws Fault with a line for everything that is wrong with it: a
// family without a "reference", one of a group without words, an example that does not evaluate.
Content contentOf(host::Catalogue const& catalogue, host::JsonValue const& file,
                  std::string const& origin);

}  // namespace nodus::reference
