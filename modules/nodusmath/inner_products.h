// The sum of the products of lanes, each type in its own fixed order.
#pragma once

#include "fourlanes.h"
#include "qvr/products.h"

namespace nodusmath {

[[gnu::always_inline]] inline Float sumOfProducts(Float2 const& a, Float2 const& b) noexcept
{
    // The analyzer does not see that storePair writes y, too.
    return a.x * b.x + a.y * b.y;  // NOLINT(clang-analyzer-core.UndefinedBinaryOperatorResult)
}
[[gnu::always_inline]] inline Float sumOfProducts(Float3 const& a, Float3 const& b) noexcept
{
    return (a.x * b.x + a.y * b.y) + a.z * b.z;
}
[[gnu::always_inline]] inline Float sumOfProducts(Float4 const& a, Float4 const& b) noexcept
{
    return qvr::lane0(qvr::dot4(lanesOf(a), lanesOf(b)));
}

}  // namespace nodusmath
