// Div: a / b, with 0 for a zero divisor: +0 for a float one of either sign, whatever a is.
#include "divisors.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

Float divideFloats(Float a, Float b) noexcept { return b == 0.0f ? 0.0f : a / b; }

template <typename T> T divide(T a, T b) noexcept { return b == 0 ? T{0} : static_cast<T>(a / b); }

// Truncated towards zero. The smallest value divided by -1 wraps around to itself.
template <> Int32 divide(Int32 a, Int32 b) noexcept
{
    if (dividesUnsafely(b)) [[unlikely]]
        return static_cast<Int32>(static_cast<UInt32>(a) * static_cast<UInt32>(b));
    return a / b;
}

}  // namespace

void NodusDiv_Float_Solve(void const* in, void* out) noexcept { solve<divideFloats>(in, out); }
void NodusDiv_Int32_Solve(void const* in, void* out) noexcept { solve<divide<Int32>>(in, out); }
void NodusDiv_UInt32_Solve(void const* in, void* out) noexcept { solve<divide<UInt32>>(in, out); }
void NodusDiv_UInt8_Solve(void const* in, void* out) noexcept { solve<divide<UInt8>>(in, out); }
