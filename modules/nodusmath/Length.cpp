// Length: the square root of the sum of squares, over all lanes. Nothing guards the squares against
// overflow or underflow.
#include "inner_products.h"
#include "kernels.h"
#include "ports.h"

#include <cmath>

using namespace nodusmath;

namespace {

template <typename T> Float length(T const& value) noexcept
{
    return std::sqrt(sumOfProducts(value, value));
}

}  // namespace

void NodusLength_Float2_Solve(void const* in, void* out) noexcept
{
    solve<length<Float2>>(in, out);
}
void NodusLength_Float3_Solve(void const* in, void* out) noexcept
{
    solve<length<Float3>>(in, out);
}
void NodusLength_Float4_Solve(void const* in, void* out) noexcept
{
    solve<length<Float4>>(in, out);
}
