// The dynamic symbols of a library, read from the file.
#pragma once

#include <string>
#include <vector>

namespace nodus::host {

// The functions that a library exports under a kernel's name: Nodus..._Solve and Nodus..._Init. A
// file without a symbol table that can be read has none.
std::vector<std::string> exportedKernels(std::string const& path);

}  // namespace nodus::host
