// Rounding to whole numbers, and the conversions between Float and Int32.
//
// Float goes through a 32-bit integer, which spares the call: the results are never -0, and what is
// no 32-bit integer (NaN and the infinities too) is taken for -2147483648. Double goes through the
// C library and has no such limit. The two also differ at halves, see roundOf.
#pragma once

#include "mathlibrary.h"
#include "qvr/scalar.h"
#include "values.h"

namespace nodusmath {

inline Int32 truncated(Float value) noexcept { return qvr::toIntTruncating(value); }
// To the nearest Float, ties to even.
inline Float asFloat(Int32 value) noexcept { return static_cast<Float>(value); }

// Ties to even for Float: 2.5 gives 2.
template <typename T> T roundOf(T value) noexcept;
template <> inline Float roundOf(Float value) noexcept { return qvr::wholeNearest(value); }
// Ties upwards for Double: 2.5 gives 3. The sum is rounded too: the double before 0.5 gives 1.
template <> inline Double roundOf(Double value) noexcept { return library::floor(value + 0.5); }

template <typename T> T floorOf(T value) noexcept;
template <> inline Float floorOf(Float value) noexcept { return qvr::wholeBelow(value); }
template <> inline Double floorOf(Double value) noexcept { return library::floor(value); }

template <typename T> T ceilOf(T value) noexcept;
template <> inline Float ceilOf(Float value) noexcept { return qvr::wholeAbove(value); }
template <> inline Double ceilOf(Double value) noexcept { return library::ceil(value); }

// With the sign of the value, except that a negative integer gives +0. Through a 32-bit integer
// for Double too.
template <typename T> T fractionOf(T value) noexcept { return qvr::withoutWhole(value); }

}  // namespace nodusmath
