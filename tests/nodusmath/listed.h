// The names of all kernels, in the order of the list.
#pragma once

#include <string>
#include <vector>

namespace nodus::test {

inline std::vector<std::string> const kListed = {
#define NODUS_KERNEL(name) #name,
#define NODUS_GENERATOR(name) #name,
#include "kernels.def"
#undef NODUS_KERNEL
#undef NODUS_GENERATOR
};

}  // namespace nodus::test
