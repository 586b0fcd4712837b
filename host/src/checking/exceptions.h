// Floating-point exceptions that a call raises, and whether its values explain them. A host that
// turns them into signals, to find its own faults, is stopped by one that nobody needs.
#pragma once

#include "processor.h"

#include "nodus/host/catalogue.h"

#include <cstddef>
#include <vector>

namespace nodus::host {

// Whether an overflow, a division by zero or an invalid operation was told although every input is
// a moderate number and every result a finite one. Beyond 2^30, conversions to integers and
// infinities on the way raise what only the kernel's own mathematics could explain; so do quotients
// by what is smaller than 2^-30, which overflow.
bool raisedWithoutNeed(ProcessorState const& after, std::vector<Port> const& inputs,
                       std::byte const* in, std::vector<Port> const& outputs, std::byte const* out,
                       bool mayDivideByZero);

}  // namespace nodus::host
