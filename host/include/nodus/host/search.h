// Finding node types by words, as a person remembers them.
#pragma once

#include "nodus/host/catalogue.h"

#include <string>
#include <vector>

namespace nodus::host {

// The families that every word leads to, the nearest first: by the beginning of a word of the name,
// of a search word or of a type; from four letters on also by any part of the name, and by the
// beginning of a word of the group, of the description or of a port. Case does not matter.
std::vector<Family const*> findFamilies(Catalogue const& catalogue,
                                        std::vector<std::string> const& words);

// A name in small letters.
std::string lower(std::string text);

}  // namespace nodus::host
