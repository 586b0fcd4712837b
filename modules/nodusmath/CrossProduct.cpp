// CrossProduct: the cross product of x, y and z. The w lane of a Float4 is 0, or NaN where the
// product of the w lanes is not finite.
#include "fourlanes.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/products.h"

using namespace nodusmath;

namespace {

template <typename T> T crossProduct(T const& a, T const& b) noexcept
{
    return portOf<T>(qvr::cross(lanesOf(a), lanesOf(b)));
}

}  // namespace

void NodusCrossProduct_Float3_Solve(void const* in, void* out) noexcept
{
    solve<crossProduct<Float3>>(in, out);
}
void NodusCrossProduct_Float4_Solve(void const* in, void* out) noexcept
{
    solve<crossProduct<Float4>>(in, out);
}
