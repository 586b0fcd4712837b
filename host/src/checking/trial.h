// Trying kernels, in the process that may crash.
#pragma once

#include "ledger.h"
#include "module_data.h"
#include "subject.h"

#include <malloc.h>

#include <cstddef>

namespace nodus::host {

// One of so many kernels that share the time and the calls there are. What is found stands in the
// ledger, whose kernel it is.
void tryKernel(Ledger& ledger, Subject const& subject, ModuleData& data,
               CheckOptions const& options, std::size_t kernels);

// Of memory, by all of the process.
inline std::size_t allocatedBytes()
{
    auto const memory = ::mallinfo2();
    return memory.uordblks + memory.hblkhd;
}

}  // namespace nodus::host
