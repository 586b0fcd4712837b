// All: no lane is zero, of either sign. NaN is not zero.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool all(T const& value) noexcept
{
    return everyLane([](auto x) { return qvr::notEqual(decltype(x){}, x); }, value);
}

}  // namespace

void NodusAll_Float2_Solve(void const* in, void* out) noexcept { solve<all<Float2>>(in, out); }
void NodusAll_Float3_Solve(void const* in, void* out) noexcept { solve<all<Float3>>(in, out); }
void NodusAll_Float4_Solve(void const* in, void* out) noexcept { solve<all<Float4>>(in, out); }
