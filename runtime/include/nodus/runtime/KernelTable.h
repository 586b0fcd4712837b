// The host's view of the registration records: which kernels can be called, by name and in order.
#pragma once

#include "nodus/Export.h"
#include "nodus/StringAbi.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nodus::runtime {

// One registered kernel. The texts and the entry point live as long as its module stays loaded.
struct RegisteredKernel {
    std::string_view name;
    std::string_view signature;
    void const* entry;
};

// A name that was registered again while its first record was still there.
struct DuplicateKernel {
    std::string_view name;
    std::string firstFile;   // the library that holds the entry point in use
    std::string secondFile;  // the library whose entry point is hidden by it
};

// All functions may be called from any thread, also while a module loads or unloads elsewhere.

// The kernel of this name that was registered first, or nothing.
NODUS_API std::optional<RegisteredKernel> findKernel(std::string_view name);

// Every record, in the order of registration, duplicates included.
NODUS_API std::vector<RegisteredKernel> registeredKernels();

// Every record whose name an earlier record has, in the order of registration.
NODUS_API std::vector<DuplicateKernel> duplicateKernels();

}  // namespace nodus::runtime
