// Normalize: the value over its length. Two and three lanes of length zero are passed through as
// they are; four lanes of length zero are NaN in every lane.
#include "fourlanes.h"
#include "inner_products.h"
#include "kernels.h"
#include "ports.h"
#include "qvr/products.h"

#include <cmath>

using namespace nodusmath;

namespace {

Float2 normalizePair(Float2 const& value) noexcept
{
    // A length is never negative, so this asks for zero alone; a NaN is none.
    float const length = std::sqrt(sumOfProducts(value, value));
    if (length <= 0)
        return value;
    return {value.x / length, value.y / length};
}

// By the rounded reciprocal: the last bits differ from those of a division.
Float3 normalizeTriple(Float3 const& value) noexcept
{
    float const length = std::sqrt(sumOfProducts(value, value));
    if (length <= 0)
        return value;
    float const scale = 1 / length;
    return {value.x * scale, value.y * scale, value.z * scale};
}

template <FourLaned T> T normalize(T const& value) noexcept
{
    return portOf<T>(qvr::normalizeFast(lanesOf(value)));
}

}  // namespace

void NodusNormalize_Float2_Solve(void const* in, void* out) noexcept
{
    solve<normalizePair>(in, out);
}
void NodusNormalize_Float3_Solve(void const* in, void* out) noexcept
{
    solve<normalizeTriple>(in, out);
}
void NodusNormalize_Float4_Solve(void const* in, void* out) noexcept
{
    solve<normalize<Float4>>(in, out);
}
void NodusNormalize_Quaternion_Solve(void const* in, void* out) noexcept
{
    solve<normalize<Quaternion>>(in, out);
}
