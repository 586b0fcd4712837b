// Measures how far the polynomials and the conversions of angles are from the truth, which is long
// double, and prints it as a Markdown table.
#include "qvr/arctangent.h"
#include "qvr/polynomials.h"
#include "qvr/quaternion.h"
#include "qvr/qvrtransform.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <random>
#include <string>

using namespace qvr;

namespace {

using Long = long double;

void row(std::string const& what, char const* range, Long error)
{
    std::printf("| %s | %s | %.2Le |\n", what.c_str(), range, error);
}

// Over every 61st float of both signs up to the limit, and the limits themselves.
void row(char const* what, char const* range, float limit, _vec4 (*function)(_vec4),
         Long (*truth)(Long))
{
    Long largest = 0;
    auto const last = std::bit_cast<std::uint32_t>(limit);
    for (std::uint32_t pattern = 0; pattern < last + 61; pattern += 61)
        for (float const sign : {1.0f, -1.0f}) {
            float const x = sign * std::bit_cast<float>(std::min(pattern, last));
            largest = std::max(largest, std::abs(lane0(function(broadcast(x))) - truth(x)));
        }
    row(what, range, largest);
}

template <typename Error> Long largest(int count, Error error)
{
    Long largest = 0;
    for (int i = 0; i < count; ++i)
        largest = std::max(largest, error());
    return largest;
}

float between(float low, float high)
{
    static std::mt19937 random(20240229);
    return std::uniform_real_distribution<float>(low, high)(random);
}

Long errorOfArctangent()
{
    float const num = between(-1, 1), den = between(-1, 1);
    return std::abs(lane0(arctangent2(broadcast(num), broadcast(den))) -
                    std::atan2(static_cast<Long>(num), static_cast<Long>(den)));
}

Long errorOfLength()
{
    _vec4 const v = lanes(between(-1, 1), between(-1, 1), between(-1, 1), between(-1, 1));
    _vec4 const u = normalizeFast(v);
    Long squares = 0;
    for (Long const x : {laneOf<0>(u), laneOf<1>(u), laneOf<2>(u), laneOf<3>(u)})
        squares += x * x;
    return std::abs(std::sqrt(squares) - 1);
}

// Of all three angles. Orders 0 to 11: outer angles anywhere, the middle one within 1.4 rad. Twist
// and swing: swings of 0.1 to 2.5 rad of either sign.
Long errorOfRoundTrip(std::int32_t order)
{
    float angles[4] = {between(-3.14f, 3.14f), between(-3.14f, 3.14f), between(-3.14f, 3.14f), 0};
    if (order < 12)
        angles[QvEulerAxis[order][1]] = between(-1.4f, 1.4f);
    else
        for (int const swing : {1, 2})
            angles[swing] = std::copysign(between(0.1f, 2.5f), angles[swing]);
    float back[4];
    CGRotationOrder const rotationOrder{order};
    storeUnaligned(back, rotationOrder.Q2V(rotationOrder.V2Q(loadUnaligned(angles))));
    Long error = 0;
    for (int axis = 0; axis < 3; ++axis)
        error = std::max(error, std::abs(static_cast<Long>(back[axis]) - angles[axis]));
    return error;
}

}  // namespace

int main()
{
    constexpr float kHalfTurn = std::numbers::pi_v<float>;
    std::puts("| function | range | largest absolute error |\n|---|---|---|");
    row("`sinPoly`", "[-pi, pi]", kHalfTurn, sinPoly, std::sin);
    row("`cosPoly`", "[-pi, pi]", kHalfTurn, cosPoly, std::cos);
    row("`cosOfTurns`", "[-1, 1] turns", 1, cosOfTurns,
        [](Long turns) { return std::cos(2 * std::numbers::pi_v<Long> * turns); });
    row("`acosPoly`", "[-1, 1]", 1, acosPoly, std::acos);
    row("`asinPoly`", "[-1, 1]", 1, asinPoly, std::asin);
    row("`arctangent2`", "all directions", largest(20'000'000, errorOfArctangent));
    row("length after `normalizeFast`", "lanes in [-1, 1]", largest(5'000'000, errorOfLength));
    constexpr char const* kOrders[] = {"X, Y, Z", "X, Z, Y", "Y, Z, X",        "Y, X, Z",
                                       "Z, X, Y", "Z, Y, X", "twist and swing"};
    for (std::int32_t order = 0; order <= 12; ++order)
        row("order " + std::to_string(order) + ", " + kOrders[order / 2] + ", there and back",
            order < 12 ? "middle angle in [-1.4, 1.4]" : "swings of 0.1 to 2.5 rad",
            largest(2'000'000, [=] { return errorOfRoundTrip(order); }));
}
