// What may stand in a catalogue: the members of each of its objects, and of what kind they are.
#pragma once

#include "nodus/host/json.h"

#include <string>

namespace nodus::host {

// Adds a fault for each member of a family, of its ports and of their choices that nobody reads or
// that is of another kind than it should be; place is what the family is called.
void checkFamily(JsonValue const& family, std::string const& place, FileFaults& faults);

// The same for the members around the families.
void checkOutermost(JsonValue const& root, FileFaults& faults);

}  // namespace nodus::host
