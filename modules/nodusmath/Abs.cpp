// Abs: the sign bit of every float lane cleared, NaN included. The magnitude of the smallest Int32
// is not an Int32: it wraps around to itself.
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> T absolute(T const& value) noexcept
{
    return lanewise(value, [](auto x) { return qvr::magnitude(x); });
}
template <> Int32 absolute(Int32 const& value) noexcept
{
    auto const bits = static_cast<UInt32>(value);
    return static_cast<Int32>(value < 0 ? 0u - bits : bits);
}
template <> UInt32 absolute(UInt32 const& value) noexcept { return value; }
template <> UInt8 absolute(UInt8 const& value) noexcept { return value; }

}  // namespace

void NodusAbs_Double_Solve(void const* in, void* out) noexcept { solve<absolute<Double>>(in, out); }
void NodusAbs_Float_Solve(void const* in, void* out) noexcept { solve<absolute<Float>>(in, out); }
void NodusAbs_Float2_Solve(void const* in, void* out) noexcept { solve<absolute<Float2>>(in, out); }
void NodusAbs_Float3_Solve(void const* in, void* out) noexcept { solve<absolute<Float3>>(in, out); }
void NodusAbs_Float4_Solve(void const* in, void* out) noexcept { solve<absolute<Float4>>(in, out); }
void NodusAbs_Int32_Solve(void const* in, void* out) noexcept { solve<absolute<Int32>>(in, out); }
void NodusAbs_UInt8_Solve(void const* in, void* out) noexcept { solve<absolute<UInt8>>(in, out); }
void NodusAbs_UInt32_Solve(void const* in, void* out) noexcept { solve<absolute<UInt32>>(in, out); }
void NodusAbs_Matrix4x4_Solve(void const* in, void* out) noexcept
{
    solve<absolute<Matrix4x4>>(in, out);
}
