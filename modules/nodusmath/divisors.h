// The Int32 divisors that the processor's division must not meet.
#pragma once

#include "values.h"

namespace nodusmath {

// 0, and -1, whose quotient with the smallest value has no Int32: either stops the process. Both
// quotients are the wrapped product with b, both remainders 0.
[[gnu::always_inline]] inline bool dividesUnsafely(Int32 b) noexcept
{
    return static_cast<UInt32>(b) + 1u <= 1u;
}

}  // namespace nodusmath
