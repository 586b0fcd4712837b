// Selecting, clamping and shaping scalars.
//
// Which operand a minimum, maximum or clamp hands on is a promise: it decides where NaN and the
// signs of zeros go. The order of operands below is that of the processor's instructions.
#pragma once

#include "qvr/scalar.h"
#include "values.h"

#include <bit>
#include <type_traits>

namespace nodusmath {

// Equal floats and NaN on either side give b.
template <typename T> T lesserOf(T a, T b) noexcept
{
    if constexpr (std::is_floating_point_v<T>)
        return qvr::minimum(a, b);
    else
        return a > b ? b : a;
}
template <typename T> T greaterOf(T a, T b) noexcept
{
    if constexpr (std::is_floating_point_v<T>)
        return qvr::maximum(a, b);
    else
        return a < b ? b : a;
}

// The upper bound comes last: it wins where the bounds are reversed. Of floats, a NaN value gives
// max, a NaN min counts for nothing, and a NaN max is the result.
template <typename T> T clamped(T value, T min, T max) noexcept
{
    return lesserOf(greaterOf(min, value), max);
}

// To [0, 1]; NaN and -0 give +0.
inline Float saturated(Float value) noexcept
{
    return qvr::opaque(qvr::minimum(qvr::maximum(value, qvr::opaque(0.0f)), 1.0f));
}

// 1 from the edge on, the edge included, else 0; 0 for NaN on either side.
template <typename T> T step(T value, T edge) noexcept { return edge <= value ? T{1} : T{0}; }

// To [0, 1] again, but NaN is handled by type: Float makes it 0, Double keeps it.
inline Float curveParameter(Float t) noexcept { return saturated(t); }
inline Double curveParameter(Double t) noexcept
{
    return qvr::opaque(qvr::minimum(1.0, qvr::maximum(qvr::opaque(0.0), t)));
}

// Hermite's cubic 3t^2 - 2t^3, in this grouping. Falls where edge0 > edge1; 0 for equal edges.
template <typename T> T smoothStep(T value, T edge0, T edge1) noexcept
{
    if (edge0 == edge1) [[unlikely]]
        return 0;
    T const t = curveParameter((value - edge0) / (edge1 - edge0));
    return (t * t) * ((3 - t) - t);
}

// From one range to the other, without clamping; toMin when the first is empty.
template <typename T> T rescaled(T value, T fromMin, T fromMax, T toMin, T toMax) noexcept
{
    T const from = fromMax - fromMin;
    if (from == 0)
        return toMin;
    return toMin + ((value - fromMin) / from) * (toMax - toMin);
}

// The rational curves of Schlick, "Fast Alternatives to Perlin's Bias and Gain Functions"
// (Graphics Gems IV). The amount is strictly between 0 and 1, or the outputs keep what they held.
template <typename T> void fastBiasAndGain(T amount, T value, T& bias, T& gain) noexcept
{
    if (!(T{0} < amount && amount < T{1}))
        return;
    T const c = (1 / amount) - 2;
    bias = value / ((c * (1 - value)) + 1);
    T const k = (1 - (2 * value)) * c;
    gain = value < T{0.5} ? value / (1 + k) : (k - value) / (k - 1);
}

// -1, 0 or 1; +0 for both zeros and NaN.
template <typename T> T signum(T value) noexcept
{
    if constexpr (std::is_floating_point_v<T>)
        return qvr::signum(value);
    else
        return (value > 0) - (value < 0);
}

// The floats nearest to pi / 180 (0x3C8EFA35) and 180 / pi (0x42652EE1). Double is multiplied by
// the same two, widened: pi is 180.00000210110483 degrees.
inline constexpr Float kRadiansPerDegree = 0.01745329238474369f;
inline constexpr Float kDegreesPerRadian = 57.295780181884766f;
static_assert(std::bit_cast<UInt32>(kRadiansPerDegree) == 0x3C8EFA35u);
static_assert(std::bit_cast<UInt32>(kDegreesPerRadian) == 0x42652EE1u);

template <typename T> T toDegrees(T value) noexcept { return value * T{kDegreesPerRadian}; }
template <typename T> T toRadians(T value) noexcept { return value * T{kRadiansPerDegree}; }

}  // namespace nodusmath
