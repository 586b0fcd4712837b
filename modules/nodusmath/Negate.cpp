// Negate: the sign bit of every float lane flipped, NaN included; -value wrapped for integers.
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> T negated(T const& value) noexcept
{
    return lanewise(value, [](auto x) { return qvr::negate(x); });
}
template <> Int32 negated(Int32 const& value) noexcept
{
    return static_cast<Int32>(0u - static_cast<UInt32>(value));
}

}  // namespace

void NodusNegate_Double_Solve(void const* in, void* out) noexcept
{
    solve<negated<Double>>(in, out);
}
void NodusNegate_Float_Solve(void const* in, void* out) noexcept { solve<negated<Float>>(in, out); }
void NodusNegate_Float2_Solve(void const* in, void* out) noexcept
{
    solve<negated<Float2>>(in, out);
}
void NodusNegate_Float3_Solve(void const* in, void* out) noexcept
{
    solve<negated<Float3>>(in, out);
}
void NodusNegate_Float4_Solve(void const* in, void* out) noexcept
{
    solve<negated<Float4>>(in, out);
}
void NodusNegate_Translation_Solve(void const* in, void* out) noexcept
{
    solve<negated<Translation>>(in, out);
}
void NodusNegate_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<negated<Quaternion>>(in, out);
}
void NodusNegate_Int32_Solve(void const* in, void* out) noexcept { solve<negated<Int32>>(in, out); }
