// Sub: a - b, lane by lane. Integers wrap around in their width.
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> T subtract(T const& a, T const& b) noexcept
{
    return lanewise(a, b, [](auto x, auto y) { return x - y; });
}

}  // namespace

void NodusSub_Float_Solve(void const* in, void* out) noexcept { solve<subtract<Float>>(in, out); }
void NodusSub_Float2_Solve(void const* in, void* out) noexcept { solve<subtract<Float2>>(in, out); }
void NodusSub_Float3_Solve(void const* in, void* out) noexcept { solve<subtract<Float3>>(in, out); }
void NodusSub_Float4_Solve(void const* in, void* out) noexcept { solve<subtract<Float4>>(in, out); }
void NodusSub_Int32_Solve(void const* in, void* out) noexcept { solve<subtract<Int32>>(in, out); }
void NodusSub_Matrix4x4_Solve(void const* in, void* out) noexcept
{
    solve<subtract<Matrix4x4>>(in, out);
}
void NodusSub_UInt32_Solve(void const* in, void* out) noexcept { solve<subtract<UInt32>>(in, out); }
void NodusSub_UInt8_Solve(void const* in, void* out) noexcept { solve<subtract<UInt8>>(in, out); }
