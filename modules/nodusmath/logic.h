// Truth values and bit patterns. A Bool is true when its byte is not 0, whatever else it is; the
// results are 0 or 1.
#pragma once

#include "comparisons.h"
#include "values.h"

namespace nodusmath {

inline bool isTrue(Bool value) noexcept { return value.byte != 0; }

inline Bool logicalAnd(Bool a, Bool b) noexcept { return asBool(isTrue(a) && isTrue(b)); }
inline Bool logicalOr(Bool a, Bool b) noexcept { return asBool(isTrue(a) || isTrue(b)); }
inline Bool logicalXor(Bool a, Bool b) noexcept { return asBool(isTrue(a) != isTrue(b)); }
inline Bool logicalNot(Bool value) noexcept { return asBool(!isTrue(value)); }

template <typename T> T bitwiseAnd(T a, T b) noexcept { return static_cast<T>(a & b); }
template <typename T> T bitwiseOr(T a, T b) noexcept { return static_cast<T>(a | b); }
template <typename T> T bitwiseXor(T a, T b) noexcept { return static_cast<T>(a ^ b); }
template <typename T> T bitwiseNot(T value) noexcept { return static_cast<T>(~value); }

}  // namespace nodusmath
