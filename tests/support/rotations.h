// Rotations in double precision, to hold results against, and random ones.
#pragma once

#include "values.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace nodus::test {

using nodusmath::Quaternion;

// Behind the reciprocal-square-root estimate, whose bits differ between processor makers: the
// estimate is within 1.5 * 2^-12, one Newton step leaves 3/2 of its square, 2e-7, and roundings.
inline constexpr double kEstimated = 6e-7;

using Rotation = std::array<double, 4>;

inline Rotation wide(Quaternion const& q) { return {q.x, q.y, q.z, q.w}; }

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

// The largest difference of a lane, the better of q and -q; NaN differs from everything.
inline double difference(Rotation const& a, Rotation const& b)
{
    double same = 0, opposite = 0;
    for (std::size_t lane = 0; lane < 4; ++lane) {
        if (std::isnan(a[lane]) || std::isnan(b[lane]))
            return HUGE_VAL;
        same = std::max(same, std::abs(a[lane] - b[lane]));
        opposite = std::max(opposite, std::abs(a[lane] + b[lane]));
    }
    return std::min(same, opposite);
}

template <typename T> bool allNaN(T const& value)
{
    auto const lanes = std::bit_cast<std::array<float, sizeof(T) / 4>>(value);
    return std::all_of(lanes.begin(), lanes.end(), [](float lane) { return std::isnan(lane); });
}

// The same sequence in every run.
class Random {
public:
    float between(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(m_engine);
    }
    Quaternion quaternion()
    {
        return rounded(unit({between(-1, 1), between(-1, 1), between(-1, 1), between(-1, 1)}));
    }

private:
    std::mt19937 m_engine{20240229};
};

}  // namespace nodus::test
