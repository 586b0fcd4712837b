// Numbers as text.
#pragma once

#include <cstddef>

namespace nodus::host {

// Room for any number, and for what is written behind it.
constexpr std::size_t kNumberRoom = 40;

// Writes the shortest digits that read back as the same number, as std::to_chars does and in
// half its time; returns where they end. There is kNumberRoom: characters behind the end are
// written, too.
char* writeShortest(char* to, float value);
char* writeShortest(char* to, double value);

}  // namespace nodus::host
