// Between ports and four lanes.
#pragma once

#include "qvr/vec4.h"
#include "values.h"

namespace nodusmath {

template <FourLaned T> [[gnu::always_inline]] inline qvr::_vec4 lanesOf(T const& port) noexcept
{
    return qvr::load(&port.x);
}
[[gnu::always_inline]] inline qvr::_vec4 lanesOf(Float3 const& port) noexcept
{
    return qvr::loadTriple(&port.x);
}

template <typename T> [[gnu::always_inline]] inline T portOf(qvr::_vec4 value) noexcept
{
    T port;
    if constexpr (FourLaned<T>)
        qvr::store(&port.x, value);
    else
        qvr::storeTriple(&port.x, value);
    return port;
}

}  // namespace nodusmath
