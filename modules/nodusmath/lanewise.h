// Arithmetic lane by lane, written once for every port type.
//
// An operation is a generic function of lanes. It is handed floats and doubles as they are, four
// lanes of a 16-byte type at once as a qvr::_vec4, two lanes of a Float2 or Float3 likewise, and
// integers of 32 bits as unsigned ones, so that what overflows wraps around; smaller ones have
// room.
#pragma once

#include "qvr/vec4.h"
#include "values.h"

#include <type_traits>

namespace nodusmath {

namespace lanes {

template <typename T> [[gnu::always_inline]] inline auto wrapping(T value) noexcept
{
    if constexpr (std::is_integral_v<T>)
        return static_cast<std::make_unsigned_t<T>>(value);
    else
        return value;
}

template <typename Op, typename T, typename... Rest>
[[gnu::always_inline]] inline T applied(Op op, T const& value, Rest const&... others) noexcept
{
    if constexpr (std::is_arithmetic_v<T>) {
        return static_cast<T>(op(wrapping(value), wrapping(others)...));
    } else if constexpr (std::is_same_v<T, Matrix4x4>) {
        return {{applied(op, value.rows[0], others.rows[0]...),
                 applied(op, value.rows[1], others.rows[1]...),
                 applied(op, value.rows[2], others.rows[2]...),
                 applied(op, value.rows[3], others.rows[3]...)}};
    } else {
        using namespace qvr;
        T result;
        if constexpr (FourLaned<T>) {
            store(&result.x, op(load(&value.x), load(&others.x)...));
        } else {
            storePair(&result.x, op(loadPair(&value.x), loadPair(&others.x)...));
            if constexpr (std::is_same_v<T, Float3>)
                result.z = op(value.z, others.z...);
        }
        return result;
    }
}

}  // namespace lanes

template <typename T, typename Op>
[[gnu::always_inline]] inline T lanewise(T const& value, Op op) noexcept
{
    return lanes::applied(op, value);
}

template <typename T, typename Op>
[[gnu::always_inline]] inline T lanewise(T const& a, T const& b, Op op) noexcept
{
    return lanes::applied(op, a, b);
}

}  // namespace nodusmath
