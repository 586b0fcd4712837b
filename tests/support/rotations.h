// Rotations in double precision, to hold results against, and random ones.
#pragma once

#include "support/kernel_call.h"

#include <algorithm>
#include <random>

namespace nodus::test {

// Behind the reciprocal-square-root estimate, whose bits differ between processor makers: the
// estimate is within 1.5 * 2^-12, one Newton step leaves 3/2 of its square, 2e-7, and roundings.
inline constexpr double kEstimated = 6e-7;

template <std::size_t count> using Lanes = std::array<double, count>;
using Rotation = Lanes<4>;

template <typename T> Lanes<sizeof(T) / 4> wide(T const& value)
{
    Lanes<sizeof(T) / 4> lanes;
    std::ranges::copy(std::bit_cast<std::array<float, sizeof(T) / 4>>(value), lanes.begin());
    return lanes;
}

inline Rotation about(int axis, double angle)
{
    Rotation q{0, 0, 0, std::cos(angle / 2)};
    q[static_cast<std::size_t>(axis)] = std::sin(angle / 2);
    return q;
}

// b, then a.
inline Rotation product(Rotation const& a, Rotation const& b)
{
    return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] + a[1] * b[3] + a[2] * b[0] - a[0] * b[2],
            a[3] * b[2] + a[2] * b[3] + a[0] * b[1] - a[1] * b[0],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

inline Rotation conjugate(Rotation const& q) { return {-q[0], -q[1], -q[2], q[3]}; }
inline Rotation opposite(Rotation const& q) { return {-q[0], -q[1], -q[2], -q[3]}; }

inline Rotation unit(Rotation q)
{
    double const length = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
    for (double& lane : q)
        lane /= length;
    return q;
}

inline Quaternion rounded(Rotation const& q)
{
    return {static_cast<float>(q[0]), static_cast<float>(q[1]), static_cast<float>(q[2]),
            static_cast<float>(q[3])};
}

// The largest difference of a lane; NaN differs from everything.
template <std::size_t count> double distance(Lanes<count> const& a, Lanes<count> const& b)
{
    double largest = 0;
    for (std::size_t lane = 0; lane < count; ++lane) {
        double const one = std::abs(a[lane] - b[lane]);
        largest = std::isnan(one) ? HUGE_VAL : std::max(largest, one);
    }
    return largest;
}
template <typename T> double distance(T const& a, T const& b) { return distance(wide(a), wide(b)); }

// The same for rotations, of which q and -q are one.
inline double difference(Rotation const& a, Rotation const& b)
{
    return std::min(distance(a, b), distance(a, opposite(b)));
}

// The same sequence in every run.
class Random {
public:
    float between(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(m_engine);
    }
    Float4 lanes(float low, float high)
    {
        float const x = between(low, high), y = between(low, high), z = between(low, high);
        return {x, y, z, between(low, high)};
    }
    Quaternion quaternion() { return rounded(unit(wide(lanes(-1, 1)))); }

private:
    std::mt19937 m_engine{20240229};
};

}  // namespace nodus::test
