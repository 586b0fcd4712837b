// DotProduct: the sum of the products of lanes. All four lanes of a Float4 take part.
#include "inner_products.h"
#include "kernels.h"
#include "ports.h"

using namespace nodusmath;

namespace {

template <typename T> Float dotProduct(T const& a, T const& b) noexcept
{
    return sumOfProducts(a, b);
}

}  // namespace

void NodusDotProduct_Float2_Solve(void const* in, void* out) noexcept
{
    solve<dotProduct<Float2>>(in, out);
}
void NodusDotProduct_Float3_Solve(void const* in, void* out) noexcept
{
    solve<dotProduct<Float3>>(in, out);
}
void NodusDotProduct_Float4_Solve(void const* in, void* out) noexcept
{
    solve<dotProduct<Float4>>(in, out);
}
