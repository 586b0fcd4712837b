// Numbers as text.
#pragma once

namespace nodus::host {

// Writes the shortest digits that read back as the same number, as std::to_chars does and in
// half its time; returns where they end. 32 characters are enough for any.
char* writeShortest(char* to, float value);
char* writeShortest(char* to, double value);

}  // namespace nodus::host
