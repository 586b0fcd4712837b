// Add: a + b, lane by lane. Integers wrap around in their width.
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> T add(T const& a, T const& b) noexcept
{
    return lanewise(a, b, [](auto x, auto y) { return x + y; });
}

}  // namespace

void NodusAdd_Float_Solve(void const* in, void* out) noexcept { solve<add<Float>>(in, out); }
void NodusAdd_Float2_Solve(void const* in, void* out) noexcept { solve<add<Float2>>(in, out); }
void NodusAdd_Float3_Solve(void const* in, void* out) noexcept { solve<add<Float3>>(in, out); }
void NodusAdd_Float4_Solve(void const* in, void* out) noexcept { solve<add<Float4>>(in, out); }
void NodusAdd_Int32_Solve(void const* in, void* out) noexcept { solve<add<Int32>>(in, out); }
void NodusAdd_Matrix4x4_Solve(void const* in, void* out) noexcept
{
    solve<add<Matrix4x4>>(in, out);
}
void NodusAdd_Translation_Solve(void const* in, void* out) noexcept
{
    solve<add<Translation>>(in, out);
}
void NodusAdd_UInt32_Solve(void const* in, void* out) noexcept { solve<add<UInt32>>(in, out); }
void NodusAdd_UInt8_Solve(void const* in, void* out) noexcept { solve<add<UInt8>>(in, out); }
