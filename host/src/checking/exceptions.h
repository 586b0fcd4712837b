// Floating-point exceptions that a call raises, and whether its values explain them. A host that
// turns them into signals, to find its own faults, is stopped by one that nobody needs.
#pragma once

#include "nodus/host/catalogue.h"

#include <cstddef>
#include <vector>

namespace nodus::host {

// Whether, since they were cleared, the calling thread was told of a division by zero or an invalid
// operation although every input is a moderate number and every result a finite one. Beyond 2^30,
// conversions to integers and infinities on the way raise what only the kernel's own mathematics
// could explain.
bool raisedWithoutNeed(std::vector<Port> const& inputs, std::byte const* in,
                       std::vector<Port> const& outputs, std::byte const* out,
                       bool mayDivideByZero);

}  // namespace nodus::host
