// Any: at least one lane is not zero, of either sign. NaN is not zero.
#include "comparisons.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Bool any(T const& value) noexcept
{
    return anyLane([](auto x) { return qvr::notEqual(decltype(x){}, x); }, value);
}

}  // namespace

void NodusAny_Float2_Solve(void const* in, void* out) noexcept { solve<any<Float2>>(in, out); }
void NodusAny_Float3_Solve(void const* in, void* out) noexcept { solve<any<Float3>>(in, out); }
void NodusAny_Float4_Solve(void const* in, void* out) noexcept { solve<any<Float4>>(in, out); }
