// What is fuzzed: each takes any bytes, and comes back. A reader may refuse them with faults, in
// lines that are not empty; it may not crash, hang, or say one thing twice in two ways.
#pragma once

#include <string_view>

namespace fuzz {

void graph(std::string_view bytes);
void table(std::string_view bytes);
void catalogue(std::string_view bytes);

}  // namespace fuzz
