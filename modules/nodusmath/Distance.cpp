// Distance: the length of a - b, over all lanes.
#include "inner_products.h"
#include "kernels.h"
#include "lanewise.h"
#include "ports.h"

#include <cmath>

using namespace nodusmath;

namespace {

template <typename T> Float distance(T const& a, T const& b) noexcept
{
    T const between = lanewise(a, b, [](auto x, auto y) { return x - y; });
    return std::sqrt(sumOfProducts(between, between));
}

}  // namespace

void NodusDistance_Float2_Solve(void const* in, void* out) noexcept
{
    solve<distance<Float2>>(in, out);
}
void NodusDistance_Float3_Solve(void const* in, void* out) noexcept
{
    solve<distance<Float3>>(in, out);
}
void NodusDistance_Float4_Solve(void const* in, void* out) noexcept
{
    solve<distance<Float4>>(in, out);
}
