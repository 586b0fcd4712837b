// Questions about values: a relation between lanes, asked of every lane or of any.
//
// A relation is a generic function of lanes, in the words of qvr: of floats, doubles and integers
// as they are it makes a bool, of four lanes at once a lane mask. A fold puts it to all lanes of
// its ports and writes the one answer. The comparisons are ordered: a NaN answers no.
#pragma once

#include "qvr/vec4.h"
#include "values.h"

#include <type_traits>

namespace nodusmath {

[[gnu::always_inline]] inline Bool asBool(bool truth) noexcept
{
    return {static_cast<std::uint8_t>(truth)};
}

// The same scalar in every lane that a relation is handed.
template <typename Lanes, typename T> [[gnu::always_inline]] inline Lanes inAllLanes(T scalar)
{
    if constexpr (std::is_same_v<Lanes, qvr::_vec4>)
        return qvr::broadcast(scalar);
    else
        return scalar;
}

// True when the relation holds for every lane. Two and three lanes are asked one by one, up to the
// first that says no; four are asked at once.
template <typename Relation, typename T, typename... Rest>
[[gnu::always_inline]] inline Bool everyLane(Relation relation, T const& first,
                                             Rest const&... rest) noexcept
{
    using namespace qvr;
    if constexpr (std::is_same_v<T, Bool>) {
        return asBool(relation(first.byte, rest.byte...));
    } else if constexpr (std::is_arithmetic_v<T>) {
        return asBool(relation(first, rest...));
    } else if constexpr (std::is_same_v<T, Float2>) {
        return asBool(relation(first.x, rest.x...) && relation(first.y, rest.y...));
    } else if constexpr (std::is_same_v<T, Float3>) {
        return asBool(relation(first.x, rest.x...) && relation(first.y, rest.y...) &&
                      relation(first.z, rest.z...));
    } else if constexpr (std::is_same_v<T, Color>) {
        _vec4 const holds = relation(loadUnaligned(&first.r), loadUnaligned(&rest.r)...);
        return asBool(holdsInAll(holds));
    } else if constexpr (std::is_same_v<T, Matrix4x4>) {
        auto const row = [&](int i) __attribute__((always_inline))
        {
            return relation(load(&first.rows[i].x), load(&rest.rows[i].x)...);
        };
        _vec4 const holds = both(both(row(0), row(1)), both(row(2), row(3)));
        return asBool(holdsInAll(holds));
    } else {
        static_assert(FourLaned<T>);
        return asBool(holdsInAll(relation(load(&first.x), load(&rest.x)...)));
    }
}

// True when the relation holds for at least one lane.
template <typename Relation, typename T, typename... Rest>
[[gnu::always_inline]] inline Bool anyLane(Relation relation, T const& first,
                                           Rest const&... rest) noexcept
{
    using namespace qvr;
    if constexpr (std::is_arithmetic_v<T>) {
        return asBool(relation(first, rest...));
    } else if constexpr (std::is_same_v<T, Float2>) {
        return asBool(relation(first.x, rest.x...) || relation(first.y, rest.y...));
    } else if constexpr (std::is_same_v<T, Float3>) {
        return asBool(relation(first.x, rest.x...) || relation(first.y, rest.y...) ||
                      relation(first.z, rest.z...));
    } else {
        static_assert(FourLaned<T>);
        return asBool(holdsInAny(relation(load(&first.x), load(&rest.x)...)));
    }
}

}  // namespace nodusmath
