// The families without a file of their own.
#include "divisors.h"
#include "kernels.h"
#include "ports.h"

#include <cmath>

using namespace nodusmath;

namespace {

// Mod: the remainder of the quotient truncated towards zero, with the sign of a; 0 for a zero
// integer divisor, as Div has it, NaN for a zero float one.
Double remainderOf(Double a, Double b) noexcept { return std::fmod(a, b); }
Float remainderOf(Float a, Float b) noexcept { return std::fmod(a, b); }
Int32 remainderOf(Int32 a, Int32 b) noexcept { return dividesUnsafely(b) ? 0 : a % b; }
UInt32 remainderOf(UInt32 a, UInt32 b) noexcept { return b == 0 ? 0 : a % b; }
UInt8 remainderOf(UInt8 a, UInt8 b) noexcept
{
    return b == 0 ? UInt8{0} : static_cast<UInt8>(a % b);
}

template <typename T> T mod(T a, T b) noexcept { return remainderOf(a, b); }

}  // namespace

void NodusMod_Double_Solve(void const* in, void* out) noexcept { solve<mod<Double>>(in, out); }
void NodusMod_Float_Solve(void const* in, void* out) noexcept { solve<mod<Float>>(in, out); }
void NodusMod_Int32_Solve(void const* in, void* out) noexcept { solve<mod<Int32>>(in, out); }
void NodusMod_UInt32_Solve(void const* in, void* out) noexcept { solve<mod<UInt32>>(in, out); }
void NodusMod_UInt8_Solve(void const* in, void* out) noexcept { solve<mod<UInt8>>(in, out); }
